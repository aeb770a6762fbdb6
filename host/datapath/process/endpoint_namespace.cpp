// SPDX-License-Identifier: Apache-2.0
// Attachments to network namespaces.
#include <sys/epoll.h>

#include "datapath/process/endpoints.h"
#include "datapath/process/loop.h"
#include "datapath/process/namespaces.h"
#include "datapath/process/netlink.h"
#include "datapath/process/packet_socket.h"

namespace qvs::datapath {

namespace {

class NamespaceEndpoint : public Endpoint {
  public:
    NamespaceEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                      EndpointEvents events)
        : loop_(context.loop),
          namespaces_(context.namespaces),
          events_(std::move(events)),
          port_(attachment.port) {
        NamespaceRequest request;
        request.port = port_;
        request.address = macOf(attachment);
        request.mtu = attachment.mtu;
        namespaces_.open(attachment.name, request,
                         [this](OpenedNamespace opened) { open(std::move(opened)); });
    }

    ~NamespaceEndpoint() override {
        for (const wire::File *file : {&frames_, &links_}) {
            if (*file) loop_.forget(file->get());
        }
        namespaces_.close(port_);
    }

    bool send(const Frame &frame) override { return !frames_ || sendPacket(frames_.get(), frame); }
    bool takesOffloads() const override { return true; }
    bool settled() const override { return settled_; }

  private:
    void open(OpenedNamespace opened) {
        settled_ = true;
        if (!opened.frames) return events_.carrier(false, opened.problem);
        frames_ = std::move(opened.frames);
        links_ = std::move(opened.links);
        index_ = opened.client.index;
        loop_.watch(frames_.get(), EPOLLIN,
                    [this](uint32_t) { receivePackets(frames_.get(), events_.received); });
        loop_.watch(links_.get(), EPOLLIN, [this](uint32_t) {
            readLinks(links_.get(), [this](const Link &link) { changed(link); });
        });
        events_.adapter(opened.client.address, opened.client.promiscuous);
        events_.carrier(opened.client.up, "");
    }

    void changed(const Link &link) {
        if (link.index != index_) return;
        if (link.gone) return events_.carrier(false, "the client removed its interface; attach it again");
        events_.adapter(link.address, link.promiscuous);
        events_.carrier(link.up, "");
    }

    Loop &loop_;
    Namespaces &namespaces_;
    EndpointEvents events_;
    uint32_t port_;
    int index_ = 0;
    bool settled_ = false;
    wire::File frames_;
    wire::File links_;
};

}  // namespace

std::unique_ptr<Endpoint> openNamespace(const policy::AttachmentT &attachment, const EndpointContext &context,
                                        EndpointEvents events) {
    if (attachment.name.empty()) throw AttachmentError("the attachment names no namespace");
    return std::make_unique<NamespaceEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
