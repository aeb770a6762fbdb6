// SPDX-License-Identifier: Apache-2.0
// Completes the offloads of a frame: computes checksums, and splits the frame into segments.
#include <algorithm>

#include "datapath/packet.h"

namespace qvs::datapath {
namespace {

constexpr uint8_t kNeedsChecksum = 1;
constexpr uint8_t kTcp4 = 1;
constexpr uint8_t kTcp6 = 4;
constexpr uint8_t kCongestion = 0x80;
constexpr uint8_t kTcp = 6;
constexpr size_t kTcpHeader = 20;
constexpr size_t kTcpChecksum = 16;
constexpr size_t kUdpChecksum = 6;

// The parts of a frame that is to be split.
struct Segments {
    size_t packet = 0;   // where the IP header begins
    size_t tcp = 0;      // where the TCP header begins
    size_t payload = 0;  // where the payload begins
    size_t end = 0;
    IpHeader ip;
};

bool isSplit(const Offload &offload) {
    return offload.segments != 0;
}

bool hasChecksum(const Frame &frame, size_t etherHeader) {
    const Offload &offload = frame.offload;
    return offload.checksumStart >= etherHeader &&
           static_cast<size_t>(offload.checksumStart) + offload.checksumOffset + 2 <= frame.bytes.size();
}

bool readSegments(const Frame &frame, size_t etherHeader, Segments &parts) {
    const Offload &offload = frame.offload;
    const auto kind = static_cast<uint8_t>(offload.segments & ~kCongestion);
    if ((kind != kTcp4 && kind != kTcp6) || offload.segmentSize == 0) return false;
    if ((offload.flags & kNeedsChecksum) == 0 || offload.checksumOffset != kTcpChecksum) return false;
    const uint16_t type = read16(frame.bytes.data() + etherHeader - 2);
    if (type != (kind == kTcp4 ? kIpv4Type : kIpv6Type)) return false;
    parts.packet = etherHeader;
    parts.tcp = offload.checksumStart;
    if (!readIp(frame.bytes, etherHeader, type, parts.ip) || parts.ip.protocol != kTcp) return false;
    if (parts.ip.payload != parts.tcp || parts.tcp + kTcpHeader > parts.ip.end) return false;
    const size_t header = static_cast<size_t>(frame.bytes[parts.tcp + 12] >> 4) * 4;
    parts.payload = parts.tcp + header;
    parts.end = parts.ip.end;
    return header >= kTcpHeader && parts.payload < parts.end;
}

size_t etherHeaderOf(Bytes bytes) {
    size_t header = kHeaderSize;
    while (header + kTagSize <= bytes.size() && read16(bytes.data() + header - 2) == kTagType)
        header += kTagSize;
    return header;
}

void fillIp(uint8_t *packet, bool isVersion4, size_t length, size_t number) {
    constexpr size_t kIpv6Header = 40;
    if (!isVersion4) {
        write16(packet + 4, static_cast<uint32_t>(length - kIpv6Header));
        return;
    }
    write16(packet + 2, static_cast<uint32_t>(length));
    write16(packet + 4, static_cast<uint32_t>(read16(packet + 4) + number));
    write16(packet + 10, 0);
    write16(packet + 10, foldSum(addToSum(0, {packet, size_t{packet[0] & 0xfu} * 4})));
}

void fillTcp(std::vector<uint8_t> &bytes, const Segments &parts) {
    uint8_t *tcp = bytes.data() + parts.tcp;
    const size_t length = bytes.size() - parts.tcp;
    write16(tcp + kTcpChecksum, 0);
    const uint64_t addresses = addToSum(addToSum(0, parts.ip.source), parts.ip.destination);
    write16(tcp + kTcpChecksum, foldSum(addToSum(addresses + kTcp + length, {tcp, length})));
}

void split(const Frame &frame, const Segments &parts, size_t mtu,
           const std::function<void(std::span<const uint8_t>)> &sink) {
    constexpr uint8_t kFinishAndPush = 0x01 | 0x08;
    constexpr uint8_t kWindowReduced = 0x80;
    const size_t headers = parts.payload - parts.packet;
    const size_t room = mtu > headers ? mtu - headers : 1;
    const size_t size = std::min<size_t>(frame.offload.segmentSize, room);
    std::vector<uint8_t> segment;
    size_t number = 0;
    for (size_t at = parts.payload; at < parts.end; at += size, ++number) {
        const auto begin = frame.bytes.begin();
        const size_t stop = std::min(at + size, parts.end);
        segment.assign(begin, begin + static_cast<ptrdiff_t>(parts.payload));
        segment.insert(segment.end(), begin + static_cast<ptrdiff_t>(at),
                       begin + static_cast<ptrdiff_t>(stop));
        uint8_t *tcp = segment.data() + parts.tcp;
        write32(tcp + 4, static_cast<uint32_t>(read32(tcp + 4) + (at - parts.payload)));
        if (stop < parts.end) tcp[13] = static_cast<uint8_t>(tcp[13] & ~kFinishAndPush);
        if (number > 0) tcp[13] = static_cast<uint8_t>(tcp[13] & ~kWindowReduced);
        fillIp(segment.data() + parts.packet, parts.ip.source.size() == 4, segment.size() - parts.packet,
               number);
        fillTcp(segment, parts);
        sink(segment);
    }
}

}  // namespace

size_t longestPacket(const Frame &frame, size_t etherHeader) {
    if (isSplit(frame.offload)) {
        Segments parts;
        if (!readSegments(frame, etherHeader, parts)) return kBadOffload;
        const size_t size = std::min<size_t>(frame.offload.segmentSize, parts.end - parts.payload);
        return parts.payload - parts.packet + size;
    }
    if ((frame.offload.flags & kNeedsChecksum) != 0 && !hasChecksum(frame, etherHeader)) return kBadOffload;
    return frame.bytes.size() - etherHeader;
}

bool complete(const Frame &frame, size_t mtu, const std::function<void(std::span<const uint8_t>)> &sink) {
    const Offload &offload = frame.offload;
    const size_t etherHeader = etherHeaderOf(frame.bytes);
    if (frame.bytes.size() < etherHeader || longestPacket(frame, etherHeader) == kBadOffload) return false;
    if (isSplit(offload)) {
        Segments parts;
        if (!readSegments(frame, etherHeader, parts)) return false;
        split(frame, parts, mtu, sink);
    } else if ((offload.flags & kNeedsChecksum) == 0) {
        sink(frame.bytes);
    } else {
        // The field holds the sum of the pseudo header.
        std::vector<uint8_t> bytes(frame.bytes.begin(), frame.bytes.end());
        const uint16_t sum = foldSum(addToSum(0, frame.bytes.subspan(offload.checksumStart)));
        const bool meansNone = sum == 0 && offload.checksumOffset == kUdpChecksum;
        write16(bytes.data() + offload.checksumStart + offload.checksumOffset, meansNone ? 0xffff : sum);
        sink(bytes);
    }
    return true;
}

}  // namespace qvs::datapath
