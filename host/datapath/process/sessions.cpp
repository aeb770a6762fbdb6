// SPDX-License-Identifier: Apache-2.0
// Clients that exchange frames with the data path.
#include "datapath/process/sessions.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/log.h"
#include "datapath/protocol.h"
#include "wire/descriptors.h"

namespace qvs::datapath {

namespace {

constexpr size_t kLongestRequest = 4096;
// Connections that are accepted in one turn of the loop.
constexpr int kMostAccepted = 64;

std::vector<std::string> wordsOf(std::string_view request) {
    std::vector<std::string> words(1);
    for (const char each : request) {
        if (each == '\0')
            words.emplace_back();
        else
            words.back() += each;
    }
    return words;
}

std::string list(const std::vector<std::string> &names) {
    std::string text;
    for (const std::string &name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace

class Session : public Guest {
  public:
    Session(Sessions &all, wire::File socket) : all_(all), socket_(std::move(socket)) {
        all_.loop_.watch(socket_.get(), EPOLLIN, [this](uint32_t) { receive(); });
    }

    ~Session() override {
        if (port_ != 0) all_.dataPath_.leave(port_, *this);
        all_.loop_.forget(socket_.get());
    }

    bool deliver(std::span<const uint8_t> frame) override {
        const ssize_t sent = send(socket_.get(), frame.data(), frame.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        return sent >= 0 || (errno != EAGAIN && errno != ENOBUFS);
    }

    void portRemoved() override {
        port_ = 0;
        end();
    }

  private:
    void end() {
        if (ended_) return;
        ended_ = true;
        all_.loop_.later([&all = all_, number = socket_.get()] { all.end(number); });
    }

    void receive() {
        if (ended_) return;
        for (size_t i = 0; i < kBatch; ++i) {
            const ssize_t received = recv(socket_.get(), batchBuffer(0), kLongestFrame, MSG_DONTWAIT);
            if (received < 0 && (errno == EAGAIN || errno == EINTR)) return;
            // The frames of a client that ended are still read, even if it left frames unread.
            if (received < 0 && errno == ECONNRESET) continue;
            if (received <= 0) return end();
            const auto size = static_cast<size_t>(received);
            if (!asked_) return begin({reinterpret_cast<const char *>(batchBuffer(0)), size});
            if (port_ != 0 && role_ == Role::Client)
                all_.dataPath_.receive(port_, {{batchBuffer(0), size}, {}});
        }
    }

    void answer(const std::string &text, std::span<const int> files = {}) {
        if (wire::sendWith(socket_.get(), text.data(), text.size(), files, MSG_DONTWAIT) < 0) end();
    }

    // Carries out the request, which is the first message.
    void begin(std::string_view request) {
        asked_ = true;
        try {
            const std::vector<std::string> words = wordsOf(request.substr(0, kLongestRequest));
            if (words[0] == "enter" && words.size() == 2) return enter(words[1]);
            if (words[0] == "attach" && words.size() == 3) return join(words, Role::Client);
            if (words[0] == "watch" && words.size() == 4 && words[3] == "in")
                return join(words, Role::WatchIn);
            if (words[0] == "watch" && words.size() == 4 && words[3] == "out")
                return join(words, Role::WatchOut);
            if (words[0] == "watch" && words.size() == 3) {
                join(words, Role::WatchIn);
                return all_.dataPath_.join(port_, *this, Role::WatchOut);
            }
            throw AttachmentError("the request is none of attach, watch and enter");
        } catch (const AttachmentError &error) {
            answer(error.what());
            end();
        }
    }

    void join(const std::vector<std::string> &words, Role role) {
        port_ = all_.dataPath_.findPort(words[1], words[2]);
        role_ = role;
        // The answer must be in front of the first frame.
        answer("ok");
        all_.dataPath_.join(port_, *this, role);
    }

    void enter(const std::string &client) {
        const std::vector<int> files = all_.namespaces_.descriptors(client);
        if (!files.empty()) return answer("ok", files);
        const std::vector<std::string> names = all_.namespaces_.names();
        if (names.empty())
            throw AttachmentError(
                "no client of this host is attached to a network namespace; attach one first");
        throw AttachmentError(
            fmt::format("no client has the network namespace {}; there are: {}", client, list(names)));
    }

    Sessions &all_;
    wire::File socket_;
    bool asked_ = false;
    bool ended_ = false;
    uint32_t port_ = 0;
    Role role_ = Role::WatchOut;
};

Sessions::Sessions(Loop &loop, DataPath &dataPath, Namespaces &namespaces)
    : loop_(loop),
      dataPath_(dataPath),
      namespaces_(namespaces),
      reserve_(open("/dev/null", O_RDONLY | O_CLOEXEC)) {}

Sessions::~Sessions() {
    sessions_.clear();
    if (listener_) loop_.forget(listener_.get());
}

void Sessions::listen(const std::string &directory) {
    const std::string path = directory + '/' + kFramesFile;
    listener_ = serveAt(path, SOCK_SEQPACKET);
    loop_.watch(listener_.get(), EPOLLIN, [this](uint32_t) { accept(); });
}

void Sessions::accept() {
    for (int i = 0; i < kMostAccepted; ++i) {
        wire::File socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket && (errno == EMFILE || errno == ENFILE)) return refuseOne();
        if (!socket) return;
        ucred peer{};
        socklen_t size = sizeof peer;
        const bool known = getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
        if (!known || (peer.uid != geteuid() && peer.uid != 0)) continue;
        const int number = socket.get();
        sessions_[number] = std::make_unique<Session>(*this, std::move(socket));
    }
}

// A client that is not accepted would wake the loop again and again.
void Sessions::refuseOne() {
    constexpr std::string_view kText = "the data path has no more descriptors; end some sessions";
    reserve_.reset(-1);
    wire::File socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket) wire::sendWith(socket.get(), kText.data(), kText.size(), {}, MSG_DONTWAIT);
    socket.reset(-1);
    reserve_.reset(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

void Sessions::end(int session) {
    sessions_.erase(session);
}

}  // namespace qvs::datapath
