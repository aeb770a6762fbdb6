// SPDX-License-Identifier: Apache-2.0
// The memory in which the data path counts and the kernel reads. It is an array of slots. The kernel gives
// each port, switch, mirror session and joined group a slot, and names it in the configuration. Slot 0
// belongs to no object.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace qvs::datapath {

constexpr size_t kSlotValues = 40;
constexpr uint32_t kSlots = 1u << 17;  // the memory is reserved, and used as slots are

// Counters only grow. A slot that is given to another object is zeroed by the kernel before.
struct Slot {
    std::atomic<uint64_t> values[kSlotValues];
};
static_assert(sizeof(Slot) == kSlotValues * sizeof(uint64_t));
static_assert(std::atomic<uint64_t>::is_always_lock_free);

// Why a frame was dropped. The count of each reason is a value of the port that sent the frame, or of the
// port that did not receive it.
enum class Drop : uint8_t {
    Blocked,         // the port is blocked or has no link
    Malformed,       // shorter than a header, or tags that end early
    TooLong,         // longer than the MTU of the switch or of the uplink
    Vlan,            // a tag that the port does not carry
    PrivateVlan,     // the private VLAN of sender and receiver are separate
    ForgedSource,    // a source address other than that of the adapter
    ChangedAddress,  // the adapter changed its address, which is denied
    LearningLimit,   // the sender is above the limit of learnt addresses
    NoUplink,        // no uplink has a link, or the policy drops all frames
    Reflected,       // a frame of this switch that came back by another uplink
    MirrorInput,     // sent by a mirror destination that may not send
    Busy,            // the receiver does not read
    Count,
};

// The names of the reasons in docs/datapath.md.
constexpr const char *kDropNames[] = {"Blocked",     "Malformed",    "TooLong",        "Vlan",
                                      "PrivateVlan", "ForgedSource", "ChangedAddress", "LearningLimit",
                                      "NoUplink",    "Reflected",    "MirrorInput",    "Busy"};
static_assert(std::size(kDropNames) == static_cast<size_t>(Drop::Count));

// The values of a port.
enum PortValue : uint32_t {
    // The sixteen counters of a port, in the order of its statistics. "In" is what the port sends into the
    // switch.
    kPacketsInUnicast,
    kBytesInUnicast,
    kPacketsInMulticast,
    kBytesInMulticast,
    kPacketsInBroadcast,
    kBytesInBroadcast,
    kPacketsOutUnicast,
    kBytesOutUnicast,
    kPacketsOutMulticast,
    kBytesOutMulticast,
    kPacketsOutBroadcast,
    kBytesOutBroadcast,
    kPacketsInDropped,
    kPacketsOutDropped,
    kPacketsInException,
    kPacketsOutException,
    kUplinkNow,    // number of the uplink by which frames of this port leave; 0: none
    kUplinkMoves,  // how often that changed
    kLearnt,       // addresses learnt
    kMoved,        // addresses that moved to this port
    kExpired,      // addresses that expired
    kDropped,      // the first of Drop::Count values
    kFlooded = kDropped + static_cast<uint32_t>(Drop::Count),  // frames for unknown destinations, received
    kPortValues,
};
static_assert(kPortValues <= kSlotValues);

// The values of a switch.
enum SwitchValue : uint32_t {
    kReverseArpSent,
    kReverseArpFailed,
    kFailovers,
    kFailbacks,
    kSnoopedReports,
    kSnoopedLeaves,
    kSnoopedQueries,
    kLookups,  // of destinations of unicast frames in the table of learnt addresses
    kMisses,
    kSwitchValues,
};

// The values of a mirror session.
enum SessionValue : uint32_t {
    kMirroredPackets,
    kMirroredBytes,
    kMirrorDropped,  // no destination, no uplink, or an offload that does not fit
    kMirrorTruncated,
    kMirrorTakenIn,  // frames that sources sent, before sampling
    kMirrorTakenInBytes,
    kMirrorTakenOut,  // frames that sources received
    kMirrorTakenOutBytes,
    kMirrorBusy,     // the destination does not read
    kMirrorNoLink,   // the destination is blocked or has no link
    kMirrorSkipped,  // by sampling
    kMirrorNoUplink,
    kSessionValues,
};

// The values of a group that a port has joined.
enum GroupValue : uint32_t {
    kGroupPackets,
    kGroupBytes,
    kGroupFiltered,
    kGroupValues,
};

// The values of the flow export of a port, in the order of its statistics.
enum ExportValue : uint32_t {
    kFlowsBegun,
    kFlowsIdle,    // ended after the idle timeout
    kFlowsActive,  // ended after the active timeout
    kFlowsForced,  // ended because the policy changed
    kFlowsNow,     // in the table: the one value that also falls
    kFramesSeen,
    kBytesSeen,
    kFramesSampled,
    kBytesSampled,
    kFramesWithoutFlow,
    kRecordsSent,
    kTemplatesSent,
    kMessagesSent,
    kMessageBytesSent,
    kNoPacket,        // sampled frames that contain no IP packet
    kTableFull,       // sampled frames for which the table had no room
    kRecordsNotSent,  // records that a collector did not get
    kExportValues = kNoPacket + 9,
};
static_assert(kExportValues <= kSlotValues);

}  // namespace qvs::datapath
