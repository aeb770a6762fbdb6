// SPDX-License-Identifier: Apache-2.0
// Fields of Ethernet frames and of the IP packets in them.
#include "datapath/packet.h"

#include <algorithm>

namespace qvs::datapath {
namespace {

constexpr size_t kIpv4Header = 20;
constexpr size_t kIpv6Header = 40;

bool readIpv4(Bytes frame, size_t offset, IpHeader &header) {
    if (frame.size() < offset + kIpv4Header) return false;
    const uint8_t *at = frame.data() + offset;
    const size_t length = size_t{at[0] & 0xfu} * 4;
    const size_t total = read16(at + 2);
    if (at[0] >> 4 != 4 || length < kIpv4Header || total < length || frame.size() < offset + total)
        return false;
    header = {frame.subspan(offset + 12, 4), frame.subspan(offset + 16, 4), at[9], offset + length,
              offset + total};
    return true;
}

bool readIpv6(Bytes frame, size_t offset, IpHeader &header) {
    if (frame.size() < offset + kIpv6Header) return false;
    const uint8_t *at = frame.data() + offset;
    const size_t end = offset + kIpv6Header + read16(at + 4);
    if (at[0] >> 4 != 6 || frame.size() < end) return false;
    header = {frame.subspan(offset + 8, 16), frame.subspan(offset + 24, 16), at[6], offset + kIpv6Header,
              end};
    if (header.protocol != 0) return true;
    if (end < header.payload + 8) return false;
    const uint8_t *options = frame.data() + header.payload;
    header.protocol = options[0];
    header.payload += (options[1] + size_t{1}) * 8;
    return header.payload <= end;
}

}  // namespace

bool readIp(Bytes frame, size_t offset, uint16_t type, IpHeader &header) {
    if (type == kIpv4Type) return readIpv4(frame, offset, header);
    return type == kIpv6Type && readIpv6(frame, offset, header);
}

Offload shifted(Offload offload, int by) {
    const auto move = [by](uint16_t &offset) { offset = static_cast<uint16_t>(offset + by); };
    if (offload.headerLength != 0) move(offload.headerLength);
    if ((offload.flags & 1) != 0) move(offload.checksumStart);
    return offload;
}

uint64_t addToSum(uint64_t sum, Bytes bytes) {
    size_t at = 0;
    for (; at + 1 < bytes.size(); at += 2)
        sum += read16(bytes.data() + at);
    return at < bytes.size() ? sum + (static_cast<uint64_t>(bytes[at]) << 8) : sum;
}

uint16_t foldSum(uint64_t sum) {
    while (sum >> 16 != 0)
        sum = (sum & 0xffff) + (sum >> 16);
    return static_cast<uint16_t>(~sum & 0xffff);
}

}  // namespace qvs::datapath
