// SPDX-License-Identifier: Apache-2.0
// A session with the data path of a host.
#include "launcher/frame_session.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fmt/format.h>

#include "datapath/protocol.h"
#include "launcher/error.h"
#include "wire/descriptors.h"
#include "wire/host_files.h"
#include "wire/stream.h"

namespace qvs::launcher {

namespace {

constexpr size_t kLongestMessage = size_t{128} << 10;

std::string joined(std::initializer_list<std::string_view> words) {
    std::string text;
    for (const std::string_view word : words) {
        if (!text.empty()) text += '\0';
        text += word;
    }
    return text;
}

}  // namespace

FrameSession::FrameSession(const std::string &hostSocket, std::initializer_list<std::string_view> request)
    : buffer_(kLongestMessage) {
    connect(std::filesystem::path(hostSocket).parent_path() / datapath::kFramesFile);
    const std::string text = joined(request);
    // A data path that has too many sessions answers without having read the request.
    static_cast<void>(::send(socket_, text.data(), text.size(), MSG_NOSIGNAL));
    readAnswer();
}

FrameSession::~FrameSession() {
    if (socket_ >= 0) close(socket_);
}

void FrameSession::connect(const std::string &path) {
    sockaddr_un address;
    if (!wire::socketAddress(path.c_str(), &address)) throw Error(wire::pathTooLong(path));
    socket_ = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (socket_ < 0 ||
        ::connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        const bool off = errno == ENOENT || errno == ECONNREFUSED;
        throw Error(fmt::format("no data path serves {} ({}){}", path, strerror(errno),
                                off ? "; run the host with --network" : ""));
    }
}

void FrameSession::readAnswer() {
    pollfd wait = {socket_, POLLIN, 0};
    if (poll(&wait, 1, wire::hostTimeout()) == 0) throw Error("the data path does not answer");
    const auto read = [this] {
        return wire::receiveWith(socket_, buffer_.data(), buffer_.size(), files_, 0);
    };
    ssize_t received = read();
    // This comes in front of the answer if the request was not read.
    if (received < 0 && errno == ECONNRESET) received = read();
    if (received <= 0) throw Error("the data path closed the session");
    const std::string answer(buffer_.begin(), buffer_.begin() + received);
    if (answer != "ok") throw Error(answer);
}

void FrameSession::send(std::span<const uint8_t> frame) {
    if (::send(socket_, frame.data(), frame.size(), MSG_NOSIGNAL) >= 0) return;
    throw Error(fmt::format("the data path does not take the frame: {}", strerror(errno)));
}

void FrameSession::finish() {
    shutdown(socket_, SHUT_WR);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(wire::hostTimeout());
    while (receive(deadline)) {
    }
}

std::optional<std::span<const uint8_t>> FrameSession::receive(
    std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd wait = {socket_, POLLIN, 0};
        const int ready = poll(&wait, 1, static_cast<int>(std::clamp<int64_t>(left, 0, 1'000'000)));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return std::nullopt;
        const ssize_t received = recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
        if (received < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (received <= 0) return std::nullopt;
        return std::span<const uint8_t>(buffer_.data(), static_cast<size_t>(received));
    }
}

}  // namespace qvs::launcher
