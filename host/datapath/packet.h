// SPDX-License-Identifier: Apache-2.0
// Fields of Ethernet frames and of the IP packets in them. Callers check the length first.
#pragma once

#include <cstring>

#include "datapath/frame.h"

namespace qvs::datapath {

using Bytes = std::span<const uint8_t>;

constexpr size_t kAddresses = 12;  // destination and source, in front of tag or type
constexpr uint16_t kTagType = 0x8100;
// For local experiments. Frames that switches send to each other have this type, and a mark behind it.
constexpr uint16_t kLocalType = 0x88b6;
constexpr uint16_t kIpv4Type = 0x0800;
constexpr uint16_t kArpType = 0x0806;
constexpr uint16_t kReverseArpType = 0x8035;
constexpr uint16_t kIpv6Type = 0x86dd;
constexpr uint16_t kVlanMask = 0x0fff;
constexpr uint16_t kPriorityMask = 0xf000;

inline uint16_t read16(const uint8_t *at) {
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

inline uint32_t read32(const uint8_t *at) {
    return static_cast<uint32_t>(read16(at)) << 16 | read16(at + 2);
}

inline MacAddress readMac(const uint8_t *at) {
    return static_cast<MacAddress>(read16(at)) << 32 | read32(at + 2);
}

inline void write16(uint8_t *at, uint32_t value) {
    at[0] = static_cast<uint8_t>(value >> 8);
    at[1] = static_cast<uint8_t>(value);
}

inline void write32(uint8_t *at, uint32_t value) {
    write16(at, value >> 16);
    write16(at + 2, value);
}

inline void writeMac(uint8_t *at, MacAddress value) {
    write16(at, static_cast<uint32_t>(value >> 32));
    write32(at + 2, static_cast<uint32_t>(value));
}

// The header of an IP packet in a frame.
struct IpHeader {
    Bytes source;
    Bytes destination;
    uint8_t protocol = 0;
    size_t payload = 0;  // where in the frame the packet's payload begins
    size_t end = 0;      // where in the frame the packet ends
};

// Reads the header that begins at `offset`. Options of the hop-by-hop header of IPv6 are skipped. Returns
// false if the type is another, or the packet does not fit into the frame.
[[nodiscard]] bool readIp(Bytes frame, size_t offset, uint16_t type, IpHeader &header);

// The offload of a frame in whose head bytes were inserted, or removed if `by` is negative.
[[nodiscard]] Offload shifted(Offload offload, int by);

// The sum that checksums of the Internet protocols are made of, over some more bytes.
[[nodiscard]] uint64_t addToSum(uint64_t sum, Bytes bytes);
[[nodiscard]] uint16_t foldSum(uint64_t sum);

}  // namespace qvs::datapath
