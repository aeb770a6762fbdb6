// SPDX-License-Identifier: Apache-2.0
// Attachments to the NIC of another emulated host: a wire. Each end has a file; the end whose file has the
// lesser name listens at it, and the other one connects, again and again until it succeeds. A message is a
// frame behind its offload. A message of one byte is the link of the NIC at the other end: without it, the
// wire has no carrier.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <filesystem>

#include <fmt/format.h>

#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/loop.h"

namespace qvs::datapath {

namespace {

constexpr Time kFirstRetry = 50;
constexpr Time kLastRetry = 2000;

// Canonical names, so that different paths of one file are equal.
std::string canonical(const std::string &path) {
    std::error_code ignored;
    const std::filesystem::path whole(path);
    const auto directory = std::filesystem::weakly_canonical(whole.parent_path(), ignored);
    return (ignored ? whole : directory / whole.filename()).string();
}

class HostEndpoint : public Endpoint {
  public:
    HostEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context, EndpointEvents events)
        : loop_(context.loop),
          events_(std::move(events)),
          path_(
              pathOf(attachment.path.empty() ? "wire-" + attachment.name : attachment.path, context, "wire")),
          peer_(pathOf(attachment.peer, context, "wire of the other host")) {
        if (canonical(path_) == canonical(peer_))
            throw AttachmentError(
                fmt::format("{} is both ends of the wire; name a NIC of another host", peer_));
        events_.carrier(false, "");
        proceed();
    }

    ~HostEndpoint() override {
        loop_.cancel(timer_);
        close(wire_);
        if (listener_) unlink(path_.c_str());
        close(listener_);
    }

    bool send(const Frame &frame) override {
        if (!wire_) return true;
        Offload offload = frame.offload;
        iovec parts[2] = {{&offload, sizeof offload},
                          {const_cast<uint8_t *>(frame.bytes.data()), frame.bytes.size()}};
        msghdr message{};
        message.msg_iov = parts;
        message.msg_iovlen = 2;
        return sendmsg(wire_.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0 ||
               (errno != EAGAIN && errno != ENOBUFS);
    }
    bool takesOffloads() const override { return true; }
    void setLink(bool up) override {
        if (up == link_) return;
        link_ = up;
        tellLink();
    }

  private:
    void close(wire::File &file) {
        if (file) loop_.forget(file.get());
        file.reset(-1);
    }

    // Directories can appear and change, so each attempt determines again which end listens.
    void proceed() {
        timer_ = 0;
        try {
            if (canonical(path_) < canonical(peer_)) {
                if (!listener_) listen();
                return;
            }
            close(listener_);
            if (wire::File wire = connectTo(peer_, SOCK_SEQPACKET)) return connected(std::move(wire));
        } catch (const AttachmentError &error) {
            events_.carrier(false, error.what());
        }
        retry();
    }

    void retry() {
        timer_ = loop_.at(loop_.now() + wait_, [this] { proceed(); });
        wait_ = std::min(wait_ * 2, kLastRetry);
    }

    void listen() {
        listener_ = serveAt(path_, SOCK_SEQPACKET);
        loop_.watch(listener_.get(), EPOLLIN, [this](uint32_t) {
            wire::File wire(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
            // The other end has one connection; if it makes another, the old one is dead.
            if (wire) connected(std::move(wire));
        });
    }

    void connected(wire::File wire) {
        close(wire_);
        wire_ = std::move(wire);
        wait_ = kFirstRetry;
        loop_.watch(wire_.get(), EPOLLIN, [this](uint32_t) { receive(); });
        tellLink();
    }

    // If the message does not fit into the socket, the wire reconnects, which sends the link first.
    void tellLink() {
        const uint8_t link = link_ ? 1 : 0;
        if (wire_ && ::send(wire_.get(), &link, sizeof link, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) lost();
    }

    void lost() {
        close(wire_);
        events_.carrier(false, "");
        if (!listener_ && timer_ == 0) retry();
    }

    void receive() {
        for (size_t i = 0; i < kBatch; ++i) {
            Offload offload;
            iovec parts[2] = {{&offload, sizeof offload}, {batchBuffer(0), kLongestFrame}};
            msghdr message{};
            message.msg_iov = parts;
            message.msg_iovlen = 2;
            const ssize_t received = recvmsg(wire_.get(), &message, MSG_DONTWAIT);
            if (received < 0 && (errno == EAGAIN || errno == EINTR)) return;
            if (received <= 0) {
                return lost();
            }
            // The first byte of an offload has the place of the link.
            if (received == 1) events_.carrier(offload.flags != 0, "");
            if (received <= static_cast<ssize_t>(sizeof offload)) continue;
            offload.flags &= 1;
            events_.received({{batchBuffer(0), static_cast<size_t>(received) - sizeof offload}, offload});
        }
    }

    Loop &loop_;
    EndpointEvents events_;
    std::string path_;
    std::string peer_;
    wire::File listener_;
    wire::File wire_;
    bool link_ = true;
    uint64_t timer_ = 0;
    Time wait_ = kFirstRetry;
};

}  // namespace

std::unique_ptr<Endpoint> openHost(const policy::AttachmentT &attachment, const EndpointContext &context,
                                   EndpointEvents events) {
    return std::make_unique<HostEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
