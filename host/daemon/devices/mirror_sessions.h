// SPDX-License-Identifier: Apache-2.0
// The mirror sessions in the properties of a switch.
#pragma once

#include <functional>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

struct MirrorSession {
    // Types of sessions. Destinations of the first two and of RemoteDestination are names of ports or
    // uplinks.
    enum Type : uint32_t {
        MixedDestination = 0,
        PortDestination = 1,
        RemoteSource = 2,
        RemoteDestination = 3,
        EncapsulatedSource = 4,
        LogicalSpan = 5
    };
    // Flags.
    static constexpr uint32_t kNoOutput = 1;
    static constexpr uint32_t kNoInput = 2;
    static constexpr uint32_t kOriginalVlan = 4;
    static constexpr uint32_t kEncapsulate = 8;
    static constexpr uint32_t kDisabled = 0x20;
    // Bits of the masks: all clients, all uplinks.
    static constexpr uint16_t kAllClients = 1;
    static constexpr uint16_t kAllUplinks = 2;

    std::string_view id;  // at most 32 characters
    uint32_t type = MixedDestination;
    int32_t snapLength = -1;
    uint32_t flags = 0;
    uint16_t encapVlan = 0;
    uint32_t sampling = 0;
    bool disabled = false;
    bool namesPorts = false;  // its destinations are names of ports or uplinks
    // Masks of sources, which sessions of the older form have.
    uint16_t wildIn = 0;
    uint16_t wildOut = 0;
    // Entries of kMirrorEntity bytes: a u32 and a value of 48 bytes.
    std::string_view destinations;
    std::string_view sourcesIn;
    std::string_view sourcesOut;
};

constexpr size_t kMirrorEntity = 52;
constexpr size_t kMirrorValueAt = 4;

// Visits the sessions of the uplinks, and then those of the ports in their order. A damaged list has no
// sessions. A session can appear in several lists.
void forEachMirrorSession(const Switch &sw, const std::function<void(const MirrorSession &)> &visit);

// Returns the identifiers of the sessions without repetitions, in the stored order.
std::vector<std::string_view> mirrorSessionIds(const Switch &sw);

// Returns the port that has this identifier or is bound to the NIC of this name, or null.
const Port *findByName(const Model &model, const Switch &sw, std::string_view name);

}  // namespace qvs::kernel
