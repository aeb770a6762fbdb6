// SPDX-License-Identifier: Apache-2.0
// An Ethernet frame with its offload: a checksum that is not computed yet, or segments that are not split
// yet.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace qvs::datapath {

using MacAddress = uint64_t;  // six bytes, the first one in bits 40 to 47

constexpr size_t kHeaderSize = 14;
constexpr size_t kTagSize = 4;
constexpr MacAddress kBroadcast = 0xffffffffffff;

// The offload of a frame in the format of Linux (the header of virtio network devices). All zeros: the frame
// is complete. The offload stays with the frame if the receiving attachment can carry it out. Otherwise it is
// carried out before the frame is sent.
struct Offload {
    uint8_t flags = 0;     // 1: the checksum is to be filled in
    uint8_t segments = 0;  // 1: TCP over IPv4, 4: TCP over IPv6, plus 0x80 with congestion notification
    uint16_t headerLength = 0;
    uint16_t segmentSize = 0;  // payload of each segment
    uint16_t checksumStart = 0;
    uint16_t checksumOffset = 0;  // from checksumStart
};
static_assert(sizeof(Offload) == 10);

// A frame and its offload. The bytes belong to the caller; frames that change are copied.
struct Frame {
    std::span<const uint8_t> bytes;
    Offload offload{};
};

// Carries out the offload of a frame: computes the checksum, and splits the frame into segments whose packets
// are no longer than `mtu`. Passes each complete frame to `sink`. Returns false, and passes nothing, if the
// offload does not fit the frame.
[[nodiscard]] bool complete(const Frame &frame, size_t mtu,
                            const std::function<void(std::span<const uint8_t>)> &sink);

// Returns the length of the longest packet of the completed frame, without the Ethernet header and tags, or
// kBadOffload if the offload does not fit the frame.
constexpr size_t kBadOffload = SIZE_MAX;
[[nodiscard]] size_t longestPacket(const Frame &frame, size_t etherHeader);

inline bool isGroup(MacAddress address) {
    return (address >> 40 & 1) != 0;
}

}  // namespace qvs::datapath
