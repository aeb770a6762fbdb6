// SPDX-License-Identifier: Apache-2.0
// An Ethernet frame with the work that its sender left to the network: a checksum, or the split into
// segments.
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

// Work that is left to do, in the form in which Linux hands it over with a frame (the header of virtio
// network devices). All zero: the frame is complete. It travels with the frame to an attachment that can do
// it, or is done before the frame leaves.
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

// Does the work that a frame left: fills in the checksum, and cuts it into segments whose packets are no
// longer than `mtu`. Each complete frame goes to `sink`. Returns false if the offload does not fit the frame;
// nothing is sent then.
[[nodiscard]] bool complete(const Frame &frame, size_t mtu,
                            const std::function<void(std::span<const uint8_t>)> &sink);

// The length of the longest packet, behind the Ethernet header and its tags, as which a frame leaves;
// kBadOffload if the offload does not fit the frame.
constexpr size_t kBadOffload = SIZE_MAX;
[[nodiscard]] size_t longestPacket(const Frame &frame, size_t etherHeader);

inline bool isGroup(MacAddress address) {
    return (address >> 40 & 1) != 0;
}

}  // namespace qvs::datapath
