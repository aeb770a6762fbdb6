// SPDX-License-Identifier: Apache-2.0
// The end of a pair of interfaces where the data path receives and sends frames, with their offloads.
#include "datapath/process/packet_socket.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "datapath/process/batch.h"

namespace qvs::datapath {

namespace {

constexpr int kBuffer = 4 << 20;

void option(int socket, int name) {
    const int one = 1;
    if (setsockopt(socket, SOL_PACKET, name, &one, sizeof one) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot set up a packet socket");
}

// The ancillary data of a frame, or null.
const tpacket_auxdata *beside(const msghdr &message) {
    for (const cmsghdr *head = CMSG_FIRSTHDR(&message); head != nullptr;
         head = CMSG_NXTHDR(const_cast<msghdr *>(&message), const_cast<cmsghdr *>(head))) {
        if (head->cmsg_level == SOL_PACKET && head->cmsg_type == PACKET_AUXDATA)
            return reinterpret_cast<const tpacket_auxdata *>(CMSG_DATA(head));
    }
    return nullptr;
}

// Puts a tag that the kernel took out of a frame back into it. There is room in front of the frame.
std::span<const uint8_t> withTag(uint8_t *frame, size_t size, const tpacket_auxdata &aux, Offload *offload) {
    constexpr size_t kAddresses = 12;
    uint8_t *const begin = frame - kTagSize;
    memmove(begin, frame, kAddresses);
    const bool known = (aux.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
    const uint16_t tag[2] = {htons(known ? aux.tp_vlan_tpid : uint16_t{ETH_P_8021Q}), htons(aux.tp_vlan_tci)};
    memcpy(begin + kAddresses, tag, sizeof tag);
    if ((offload->flags & 1) != 0)
        offload->checksumStart = static_cast<uint16_t>(offload->checksumStart + kTagSize);
    if (offload->headerLength != 0)
        offload->headerLength = static_cast<uint16_t>(offload->headerLength + kTagSize);
    return {begin, size + kTagSize};
}

}  // namespace

wire::File openPacketSocket(int index) {
    // Protocol 0 receives nothing until the socket is bound.
    wire::File socket(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) throw std::system_error(errno, std::generic_category(), "cannot open a packet socket");
    for (const int name : {PACKET_VNET_HDR, PACKET_AUXDATA, PACKET_IGNORE_OUTGOING})
        option(socket.get(), name);
    for (const int name : {SO_RCVBUF, SO_SNDBUF})
        setsockopt(socket.get(), SOL_SOCKET, name, &kBuffer, sizeof kBuffer);
    for (const int name : {SO_RCVBUFFORCE, SO_SNDBUFFORCE})
        setsockopt(socket.get(), SOL_SOCKET, name, &kBuffer, sizeof kBuffer);
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = index;
    if (bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot bind a packet socket");
    return socket;
}

void receivePackets(int socket, const std::function<void(const Frame &frame)> &received) {
    struct Slot {
        Offload offload;
        iovec parts[2];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(tpacket_auxdata))];
    };
    static std::array<Slot, kBatch> slots;
    static std::array<mmsghdr, kBatch> messages;
    for (size_t i = 0; i < kBatch; ++i) {
        Slot &slot = slots[i];
        slot.parts[0] = {&slot.offload, sizeof slot.offload};
        slot.parts[1] = {batchBuffer(i) + kTagSize, kBatchBuffer - kTagSize};
        msghdr &head = messages[i].msg_hdr;
        head = {};
        head.msg_iov = slot.parts;
        head.msg_iovlen = 2;
        head.msg_control = slot.control;
        head.msg_controllen = sizeof slot.control;
    }
    const int count = recvmmsg(socket, messages.data(), kBatch, MSG_DONTWAIT, nullptr);
    for (int i = 0; i < count; ++i) {
        const mmsghdr &message = messages[static_cast<size_t>(i)];
        Slot &slot = slots[static_cast<size_t>(i)];
        if (message.msg_len <= sizeof slot.offload || (message.msg_hdr.msg_flags & MSG_TRUNC) != 0) continue;
        uint8_t *const data = batchBuffer(static_cast<size_t>(i)) + kTagSize;
        const size_t size = message.msg_len - sizeof slot.offload;
        Frame frame{{data, size}, slot.offload};
        // The other flag says that the checksum is known to be right.
        frame.offload.flags &= 1;
        const tpacket_auxdata *aux = beside(message.msg_hdr);
        if (aux != nullptr && (aux->tp_status & TP_STATUS_VLAN_VALID) != 0 && size >= kHeaderSize)
            frame.bytes = withTag(data, size, *aux, &frame.offload);
        received(frame);
    }
}

bool sendPacket(int socket, const Frame &frame) {
    Offload offload = frame.offload;
    iovec parts[2] = {{&offload, sizeof offload},
                      {const_cast<uint8_t *>(frame.bytes.data()), frame.bytes.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    if (sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) return true;
    // Other errors mean that nobody could receive the frame: the interface is down, or takes no such frame.
    return errno != EAGAIN && errno != ENOBUFS && errno != ENOMEM;
}

}  // namespace qvs::datapath
