// SPDX-License-Identifier: Apache-2.0
// Attachments to Unix datagram sockets: each datagram is a frame.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>

#include <fmt/format.h>

#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/loop.h"
#include "wire/stream.h"

namespace qvs::datapath {

namespace {

class DatagramEndpoint : public Endpoint {
  public:
    DatagramEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                     EndpointEvents events)
        : loop_(context.loop), events_(std::move(events)), path_(pathOf(attachment.path, context, "socket")) {
        const std::string peer = pathOf(attachment.peer, context, "socket of the peer");
        if (!wire::socketAddress(peer.c_str(), &peer_)) throw AttachmentError(tooLong(peer));
        socket_ = serveAt(path_, SOCK_DGRAM);
        loop_.watch(socket_.get(), EPOLLIN, [this](uint32_t) { receive(); });
        events_.carrier(true, "");
    }

    ~DatagramEndpoint() override {
        loop_.forget(socket_.get());
        unlink(path_.c_str());
    }

    bool send(const Frame &frame) override {
        const ssize_t sent =
            sendto(socket_.get(), frame.bytes.data(), frame.bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                   reinterpret_cast<const sockaddr *>(&peer_), sizeof peer_);
        // Without a peer, no receiver can be too slow.
        return sent >= 0 || (errno != EAGAIN && errno != ENOBUFS);
    }

  private:
    void receive() {
        for (size_t i = 0; i < kBatch; ++i) {
            const ssize_t received = recv(socket_.get(), batchBuffer(0), kLongestFrame, MSG_DONTWAIT);
            if (received < 0) return;
            events_.received({{batchBuffer(0), static_cast<size_t>(received)}, {}});
        }
    }

    Loop &loop_;
    EndpointEvents events_;
    std::string path_;
    sockaddr_un peer_{};
    wire::File socket_;
};

}  // namespace

std::unique_ptr<Endpoint> openDatagram(const policy::AttachmentT &attachment, const EndpointContext &context,
                                       EndpointEvents events) {
    return std::make_unique<DatagramEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
