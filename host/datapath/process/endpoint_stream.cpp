// SPDX-License-Identifier: Apache-2.0
// Attachments to Unix stream sockets: each frame behind its length of four bytes, most significant first.
// This is what virtual machines speak.
#include <arpa/inet.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include <fmt/format.h>

#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/log.h"
#include "datapath/process/loop.h"

namespace qvs::datapath {

namespace {

constexpr size_t kLength = 4;
// The limit of the queue for a slow client. Frames beyond it are lost.
constexpr size_t kMostUnsent = size_t{256} << 10;
// The limit of bytes that one turn reads.
constexpr size_t kMostRead = size_t{256} << 10;

class StreamEndpoint : public Endpoint {
  public:
    StreamEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                   EndpointEvents events)
        : loop_(context.loop),
          events_(std::move(events)),
          path_(pathOf(attachment.path, context, "socket")),
          listener_(serveAt(path_, SOCK_STREAM)) {
        loop_.watch(listener_.get(), EPOLLIN, [this](uint32_t) { accept(); });
        events_.carrier(false, "");
    }

    ~StreamEndpoint() override {
        loop_.forget(listener_.get());
        if (client_) loop_.forget(client_.get());
        unlink(path_.c_str());
    }

    bool send(const Frame &frame) override {
        if (!client_) return true;
        if (unsent_.size() > kMostUnsent) return false;
        const uint32_t length = htonl(static_cast<uint32_t>(frame.bytes.size()));
        iovec parts[2] = {{const_cast<uint32_t *>(&length), kLength},
                          {const_cast<uint8_t *>(frame.bytes.data()), frame.bytes.size()}};
        size_t sent = 0;
        if (unsent_.empty()) {
            msghdr message{};
            message.msg_iov = parts;
            message.msg_iovlen = 2;
            const ssize_t result = sendmsg(client_.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
            if (result < 0 && errno == EAGAIN) return false;
            // A client that is gone is noticed when its socket is read.
            if (result < 0) return true;
            sent = static_cast<size_t>(result);
        }
        for (const iovec &part : parts) {
            const auto *bytes = static_cast<const uint8_t *>(part.iov_base);
            const size_t skipped = std::min(sent, part.iov_len);
            unsent_.insert(unsent_.end(), bytes + skipped, bytes + part.iov_len);
            sent -= skipped;
        }
        if (!unsent_.empty()) loop_.change(client_.get(), EPOLLIN | EPOLLOUT);
        return true;
    }

  private:
    void accept() {
        wire::File client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        // A port has one client; another one sees its connection end.
        if (!client || client_) return;
        client_ = std::move(client);
        loop_.watch(client_.get(), EPOLLIN, [this](uint32_t happened) {
            if ((happened & EPOLLOUT) != 0) flush();
            if ((happened & ~uint32_t{EPOLLOUT}) != 0) receive();
        });
        events_.carrier(true, "");
    }

    void drop() {
        loop_.forget(client_.get());
        client_.reset(-1);
        unsent_.clear();
        unread_.clear();
        events_.carrier(false, "");
    }

    void flush() {
        const ssize_t sent =
            ::send(client_.get(), unsent_.data(), unsent_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0) unsent_.erase(unsent_.begin(), unsent_.begin() + sent);
        if (unsent_.empty()) loop_.change(client_.get(), EPOLLIN);
    }

    void receive() {
        const size_t before = unread_.size();
        unread_.resize(before + kMostRead);
        const ssize_t received = recv(client_.get(), unread_.data() + before, kMostRead, MSG_DONTWAIT);
        const int reason = errno;
        unread_.resize(before + static_cast<size_t>(std::max<ssize_t>(received, 0)));
        if (received == 0 || (received < 0 && reason != EAGAIN && reason != EINTR)) return drop();
        size_t at = 0;
        while (unread_.size() - at >= kLength) {
            uint32_t length = 0;
            memcpy(&length, unread_.data() + at, kLength);
            length = ntohl(length);
            if (length > kLongestFrame) {
                warn(
                    "the client at {} sent a frame of {} bytes and is disconnected; it must send each frame "
                    "behind its length of four bytes, most significant first",
                    path_, length);
                return drop();
            }
            if (unread_.size() - at - kLength < length) break;
            events_.received({{unread_.data() + at + kLength, length}, {}});
            at += kLength + length;
        }
        unread_.erase(unread_.begin(), unread_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    Loop &loop_;
    EndpointEvents events_;
    std::string path_;
    wire::File listener_;
    wire::File client_;
    std::vector<uint8_t> unsent_;
    std::vector<uint8_t> unread_;
};

}  // namespace

std::unique_ptr<Endpoint> openStream(const policy::AttachmentT &attachment, const EndpointContext &context,
                                     EndpointEvents events) {
    return std::make_unique<StreamEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
