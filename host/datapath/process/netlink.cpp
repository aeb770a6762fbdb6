// SPDX-License-Identifier: Apache-2.0
// The network interfaces of the current network namespace, by netlink.
#include "datapath/process/netlink.h"

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "datapath/packet.h"

namespace qvs::datapath {

namespace {

// Netlink messages are small; a link with all its attributes has about two KiB.
constexpr size_t kBuffer = size_t{32} << 10;

[[noreturn]] void fail(const char *doing, int reason) {
    throw std::system_error(reason, std::generic_category(), doing);
}

wire::File openSocket(int flags, uint32_t groups) {
    wire::File socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | flags, NETLINK_ROUTE));
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    if (!socket || bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        fail("cannot open a netlink socket", errno);
    return socket;
}

void pad(std::string &message) {
    message.resize(NLMSG_ALIGN(message.size()), '\0');
}

void append(std::string &message, const void *data, size_t size) {
    message.append(static_cast<const char *>(data), size);
    pad(message);
}

void attribute(std::string &message, uint16_t type, const void *data, size_t size) {
    const rtattr head{static_cast<unsigned short>(RTA_LENGTH(size)), type};
    append(message, &head, sizeof head);
    append(message, data, size);
}

void attribute(std::string &message, uint16_t type, const std::string &text) {
    attribute(message, type, text.c_str(), text.size() + 1);
}

void attribute(std::string &message, uint16_t type, uint32_t value) {
    attribute(message, type, &value, sizeof value);
}

// Begins an attribute that contains others, and ends it.
size_t begin(std::string &message, uint16_t type) {
    const size_t at = message.size();
    attribute(message, type, nullptr, 0);
    return at;
}

void end(std::string &message, size_t at) {
    const auto length = static_cast<unsigned short>(message.size() - at);
    memcpy(message.data() + at, &length, sizeof length);
}

std::string request(uint16_t type, uint16_t flags) {
    std::string message;
    nlmsghdr head{};
    head.nlmsg_type = type;
    head.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | NLM_F_ACK | flags);
    append(message, &head, sizeof head);
    return message;
}

ifinfomsg subject(int index) {
    ifinfomsg info{};
    info.ifi_family = AF_UNSPEC;
    info.ifi_index = index;
    return info;
}

void addValues(std::string &message, const Link &link) {
    if (link.address != 0) {
        uint8_t bytes[6];
        writeMac(bytes, link.address);
        attribute(message, IFLA_ADDRESS, bytes, sizeof bytes);
    }
    if (link.mtu != 0) attribute(message, IFLA_MTU, link.mtu);
}

std::optional<Link> linkOf(const nlmsghdr *message) {
    const bool gone = message->nlmsg_type == RTM_DELLINK;
    if ((message->nlmsg_type != RTM_NEWLINK && !gone) || message->nlmsg_len < NLMSG_LENGTH(sizeof(ifinfomsg)))
        return std::nullopt;
    const auto *info = static_cast<const ifinfomsg *>(NLMSG_DATA(message));
    Link link;
    link.index = info->ifi_index;
    link.up = (info->ifi_flags & IFF_UP) != 0;
    link.gone = gone;
    auto left = static_cast<int>(IFLA_PAYLOAD(message));
    for (const rtattr *at = IFLA_RTA(info); RTA_OK(at, left); at = RTA_NEXT(at, left)) {
        const auto *data = static_cast<const uint8_t *>(RTA_DATA(at));
        const size_t size = RTA_PAYLOAD(at);
        if (at->rta_type == IFLA_IFNAME) {
            const auto *text = static_cast<const char *>(RTA_DATA(at));
            link.name.assign(text, strnlen(text, size));
        }
        if (at->rta_type == IFLA_ADDRESS && size == 6) link.address = readMac(data);
        if (at->rta_type == IFLA_MTU && size == 4) memcpy(&link.mtu, data, 4);
        if (at->rta_type == IFLA_PROMISCUITY && size == 4) {
            uint32_t users = 0;
            memcpy(&users, data, 4);
            link.promiscuous = users != 0;
        }
        if (at->rta_type == IFLA_LINK && size == 4) memcpy(&link.peer, data, 4);
    }
    return link;
}

}  // namespace

Netlink::Netlink() : socket_(openSocket(0, 0)) {}

void Netlink::call(std::string &message, const char *doing,
                   const std::function<void(const nlmsghdr *)> &answer) {
    nlmsghdr head;
    memcpy(&head, message.data(), sizeof head);
    head.nlmsg_len = static_cast<uint32_t>(message.size());
    head.nlmsg_seq = ++sequence_;
    memcpy(message.data(), &head, sizeof head);
    if (send(socket_.get(), message.data(), message.size(), 0) < 0) fail(doing, errno);
    alignas(nlmsghdr) char buffer[kBuffer];
    for (;;) {
        const ssize_t received = recv(socket_.get(), buffer, sizeof buffer, 0);
        if (received < 0 && errno == EINTR) continue;
        if (received <= 0) fail(doing, errno);
        auto left = static_cast<uint32_t>(received);
        for (const auto *at = reinterpret_cast<const nlmsghdr *>(buffer); NLMSG_OK(at, left);
             at = NLMSG_NEXT(at, left)) {
            if (at->nlmsg_seq != sequence_) continue;
            if (at->nlmsg_type != NLMSG_ERROR) {
                answer(at);
                continue;
            }
            const auto *error = static_cast<const nlmsgerr *>(NLMSG_DATA(at));
            if (error->error != 0) fail(doing, -error->error);
            return;
        }
    }
}

std::optional<Link> Netlink::find(const std::string &name) {
    std::string message = request(RTM_GETLINK, 0);
    const ifinfomsg info = subject(0);
    append(message, &info, sizeof info);
    attribute(message, IFLA_IFNAME, name);
    std::optional<Link> found;
    try {
        call(message, "cannot look for a network interface",
             [&found](const nlmsghdr *answer) { found = linkOf(answer); });
    } catch (const std::system_error &error) {
        if (error.code().value() != ENODEV) throw;
    }
    return found;
}

void Netlink::remove(int index) {
    std::string message = request(RTM_DELLINK, 0);
    const ifinfomsg info = subject(index);
    append(message, &info, sizeof info);
    call(message, "cannot remove a network interface", [](const nlmsghdr *) {});
}

void Netlink::makePair(const Link &here, const Link &there, int otherNamespace) {
    std::string message = request(RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL);
    const ifinfomsg info = subject(0);
    append(message, &info, sizeof info);
    attribute(message, IFLA_IFNAME, here.name);
    addValues(message, here);
    const size_t linkInfo = begin(message, IFLA_LINKINFO);
    attribute(message, IFLA_INFO_KIND, "veth");
    const size_t data = begin(message, IFLA_INFO_DATA);
    const size_t peer = begin(message, VETH_INFO_PEER);
    append(message, &info, sizeof info);
    attribute(message, IFLA_IFNAME, there.name);
    addValues(message, there);
    attribute(message, IFLA_NET_NS_FD, static_cast<uint32_t>(otherNamespace));
    end(message, peer);
    end(message, data);
    end(message, linkInfo);
    call(message, "cannot make a pair of network interfaces", [](const nlmsghdr *) {});
}

void Netlink::change(const Link &link) {
    std::string message = request(RTM_NEWLINK, 0);
    ifinfomsg info = subject(link.index);
    info.ifi_flags = link.up ? IFF_UP : 0;
    info.ifi_change = IFF_UP;
    append(message, &info, sizeof info);
    addValues(message, link);
    call(message, "cannot change a network interface", [](const nlmsghdr *) {});
}

wire::File watchLinks() {
    return openSocket(SOCK_NONBLOCK, RTMGRP_LINK);
}

void readLinks(int socket, const std::function<void(const Link &link)> &changed) {
    alignas(nlmsghdr) char buffer[kBuffer];
    // Bounded, so that a client that changes its interface without a pause delays nobody.
    for (int turn = 0; turn < 16; ++turn) {
        const ssize_t received = recv(socket, buffer, sizeof buffer, 0);
        if (received <= 0) return;
        auto left = static_cast<uint32_t>(received);
        for (const auto *at = reinterpret_cast<const nlmsghdr *>(buffer); NLMSG_OK(at, left);
             at = NLMSG_NEXT(at, left)) {
            if (const auto link = linkOf(at)) changed(*link);
        }
    }
}

}  // namespace qvs::datapath
