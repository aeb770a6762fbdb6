// SPDX-License-Identifier: Apache-2.0
// Attachments to tap interfaces of this machine, where one may open them.
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "datapath/process/batch.h"
#include "datapath/process/endpoints.h"
#include "datapath/process/loop.h"

namespace qvs::datapath {

namespace {

constexpr char kDevice[] = "/dev/net/tun";

ifreq requestFor(const std::string &name) {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
}

class TapEndpoint : public Endpoint {
  public:
    TapEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context, EndpointEvents events)
        : loop_(context.loop),
          events_(std::move(events)),
          file_(open(kDevice, O_RDWR | O_CLOEXEC | O_NONBLOCK)) {
        if (!file_) refuse("open", kDevice);
        if (attachment.name.empty() || attachment.name.size() >= IFNAMSIZ)
            throw AttachmentError(fmt::format("the name of a tap has 1 to {} bytes", IFNAMSIZ - 1));
        ifreq request = requestFor(attachment.name);
        request.ifr_flags = IFF_TAP | IFF_NO_PI | IFF_VNET_HDR;
        if (ioctl(file_.get(), TUNSETIFF, &request) != 0) refuse("make the tap", attachment.name);
        int size = sizeof(Offload);
        ioctl(file_.get(), TUNSETVNETHDRSZ, &size);
        if (!attachment.noOffloads)
            ioctl(file_.get(), TUNSETOFFLOAD, TUN_F_CSUM | TUN_F_TSO4 | TUN_F_TSO6 | TUN_F_TSO_ECN);
        setUp(attachment);
        loop_.watch(file_.get(), EPOLLIN, [this](uint32_t) { receive(); });
        events_.carrier(true, "");
    }

    ~TapEndpoint() override { loop_.forget(file_.get()); }

    bool send(const Frame &frame) override {
        Offload offload = frame.offload;
        const iovec parts[2] = {{&offload, sizeof offload},
                                {const_cast<uint8_t *>(frame.bytes.data()), frame.bytes.size()}};
        return writev(file_.get(), parts, 2) >= 0 || (errno != EAGAIN && errno != ENOBUFS);
    }
    bool takesOffloads() const override { return true; }

  private:
    [[noreturn]] static void refuse(const char *doing, const std::string &what) {
        throw AttachmentError(
            fmt::format("cannot {} {}: {}; run the host as root, or have root make the interface "
                        "with \"ip tuntap add NAME mode tap user USER\" and allow the user to "
                        "open {}",
                        doing, what, strerror(errno), kDevice));
    }

    // A user who may only use an interface that root created cannot change it. Root has set it up then.
    static void setUp(const policy::AttachmentT &attachment) {
        const wire::File socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        ifreq request = requestFor(attachment.name);
        if (const MacAddress mac = macOf(attachment); mac != 0) {
            request.ifr_hwaddr.sa_family = ARPHRD_ETHER;
            writeMac(reinterpret_cast<uint8_t *>(request.ifr_hwaddr.sa_data), mac);
            ioctl(socket.get(), SIOCSIFHWADDR, &request);
        }
        request = requestFor(attachment.name);
        request.ifr_mtu = static_cast<int>(attachment.mtu);
        ioctl(socket.get(), SIOCSIFMTU, &request);
        request = requestFor(attachment.name);
        if (ioctl(socket.get(), SIOCGIFFLAGS, &request) != 0) return;
        request.ifr_flags |= IFF_UP;
        ioctl(socket.get(), SIOCSIFFLAGS, &request);
    }

    void receive() {
        for (size_t i = 0; i < kBatch; ++i) {
            Offload offload;
            const iovec parts[2] = {{&offload, sizeof offload}, {batchBuffer(0), kLongestFrame}};
            const ssize_t received = readv(file_.get(), parts, 2);
            if (received <= static_cast<ssize_t>(sizeof offload)) return;
            offload.flags &= 1;
            events_.received({{batchBuffer(0), static_cast<size_t>(received) - sizeof offload}, offload});
        }
    }

    Loop &loop_;
    EndpointEvents events_;
    wire::File file_;
};

}  // namespace

std::unique_ptr<Endpoint> openTap(const policy::AttachmentT &attachment, const EndpointContext &context,
                                  EndpointEvents events) {
    return std::make_unique<TapEndpoint>(attachment, context, std::move(events));
}

}  // namespace qvs::datapath
