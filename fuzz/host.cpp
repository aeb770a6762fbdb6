// SPDX-License-Identifier: Apache-2.0
// Sends any messages to the emulated kernel, or has it apply any text as a lab. What it serves afterwards is
// a whole snapshot.
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include <asio/io_context.hpp>

#include "daemon/front/connection.h"
#include "daemon/front/control.h"
#include "daemon/front/lab.h"
#include "input.h"
#include "qvs/mesh_public.h"
#include "wire/json.h"

namespace {

using namespace qvs::kernel;
using qvs::fuzz::Bytes;
using qvs::fuzz::require;
using qvs::wire::Kind;

// The requests of a client; the last two follow no rule.
constexpr Kind kKinds[] = {
    Kind::Ping,         Kind::StateGet,  Kind::PropGet,         Kind::PropSet,
    Kind::PropClear,    Kind::SwitchAdd, Kind::SwitchAssociate, Kind::SwitchDissociate,
    Kind::SwitchRemove, Kind::PortAdd,   Kind::PortRemove,      Kind::DeviceOpen,
    Kind::DeviceIoctl,  Kind::Copied,    Kind::Shell,           Kind::Control,
    Kind::TraceFollow,  Kind::Lease,     Kind::Reply,           static_cast<Kind>(999)};

std::string directory() {
    static const std::string path = [] {
        char name[] = "/tmp/qvs-fuzz.XXXXXX";
        require(mkdtemp(name) != nullptr);
        return std::string(name);
    }();
    return path;
}

int listener() {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (directory() + "/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    require(bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0);
    require(listen(socket, 1) == 0);
    return socket;
}

// One for all runs, in a directory of its own that goes away with it.
struct Host {
    asio::io_context io;
    Kernel kernel{directory() + "/hypercore.db"};
    Server server{io, kernel, listener(), {directory(), false, {}}};

    ~Host() { std::filesystem::remove_all(directory()); }
    void run() {
        io.restart();
        io.poll();
    }
};

Host &host() {
    static Host instance;
    return instance;
}

void sendMessages(Bytes &input) {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    Channel::Socket socket(host().io, asio::local::stream_protocol(), ends[0]);
    std::make_shared<Connection>(std::move(socket), host().server)->start();
    while (!input.empty()) {
        const Kind kind = kKinds[input.u8() % std::size(kKinds)];
        const std::string_view payload = input.take(static_cast<size_t>(input.u8() | input.u8() << 8));
        std::string message(8, '\0');
        message[0] = static_cast<char>(payload.size());
        message[1] = static_cast<char>(payload.size() >> 8);
        message[4] = static_cast<char>(static_cast<uint32_t>(kind));
        message[5] = static_cast<char>(static_cast<uint32_t>(kind) >> 8);
        message += payload;
        if (send(ends[1], message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) break;
        host().run();
        char answers[1 << 16];
        while (recv(ends[1], answers, sizeof answers, MSG_DONTWAIT) > 0)
            host().run();
    }
    close(ends[1]);
    host().run();
}

void applyText(std::string_view text) {
    try {
        applyLab(parseLab(qvs::wire::parseJson(std::string(text))), host().kernel.model, host().kernel.store);
    } catch (const std::exception &error) {
        require(*error.what() != '\0');
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    // A text that begins with "{" is a lab. Requests that end the process or name files are left out.
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    if (text.find("kill") != text.npos || text.find("trace.f") != text.npos) return 0;
    runControl(R"({"op":"reset"})", host().server);
    if (text.starts_with('{')) {
        applyText(text);
    } else {
        Bytes input(data, size);
        sendMessages(input);
    }
    host().kernel.faults.clear();
    const auto blob = host().kernel.snapshot.get();
    require(DVSState_ConfigDeserialize(blob.bytes.data(), static_cast<uint32_t>(blob.bytes.size())) ==
            HYP_OK);
    return 0;
}
