// SPDX-License-Identifier: Apache-2.0
// The messages between the emulated kernel and its data path, on a stream socket that the data path inherits.
// A message has the head of wire/protocol.h and fields as wire/message.h writes them. The first bytes of a
// message can carry one descriptor.
#pragma once

#include <cstdint>

namespace qvs::datapath {

enum class Kind : uint32_t {
    // Kernel to data path, first of all: {text directory}, with the descriptor of the shared memory.
    Start = 100,
    // Kernel to data path, before the first configuration: {text name}, with the descriptor that an earlier
    // data path asked to keep.
    Kept = 101,
    // Kernel to data path: {bytes configuration} (policy.fbs). Answered by InForce, in order.
    Configure = 102,

    // Data path to kernel: {u64 generation}. The next frame obeys the configuration.
    InForce = 110,
    // Data path to kernel: {text name}, with a descriptor to keep beyond the end of the data path. Without a
    // descriptor, the name is forgotten.
    Keep = 111,
    // Data path to kernel: {u32 port, u8 up, text problem}. The carrier of an attachment changed, or the
    // attachment cannot be opened for this reason.
    Carrier = 112,
    // Data path to kernel: {u32 count, count * {u32 switch, u8 change, u64 address, u32 vlan, u32 port}}. The
    // change is 1 for an address that was learnt or moved to the port, and 0 for one that is gone.
    Learnt = 113,
    // Data path to kernel: {u32 count, count * {u32 port, u8 joined, bytes group}}. Groups found by snooping.
    Joined = 114,
    // Data path to kernel: {u32 count, count * {u32 port, u8 topic, bytes state}}. What control protocols
    // found at
    // a port. No bytes: nothing is known.
    Told = 115,
};

// What control protocols tell of.
enum class Topic : uint8_t {
    Check,      // 512 bytes with a bit for each VLAN that is carried, u16 MTU
    Neighbour,  // the parts of an LLDP message
};

// Clients that exchange frames connect to this file of the state directory, with SOCK_SEQPACKET. The first
// message is a request: "attach SWITCH PORT", "watch SWITCH PORT [in|out]" or "enter NAME", with words
// separated by single NULs. An empty SWITCH stands for the only one that has the port. The answer is "ok", or
// the reason why not. Afterwards each message is a frame. The answer to "enter" carries the descriptors of
// the user namespace, if there is one, and of the network namespace instead.
constexpr char kFramesFile[] = "frames";

}  // namespace qvs::datapath
