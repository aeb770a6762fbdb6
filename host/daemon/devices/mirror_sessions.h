// SPDX-License-Identifier: Apache-2.0
// The mirror sessions of a switch, as they stand in its properties.
#pragma once

#include <functional>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

struct MirrorSession {
    std::string_view id;  // at most 32 characters
    bool disabled = false;
    bool namesPorts = false;        // its destinations are ports or uplinks, by name
    std::string_view destinations;  // entries of kMirrorEntity bytes, the name behind a u32
};

constexpr size_t kMirrorEntity = 52;

// Those of this host's uplinks first, then those of the ports in their order. A list that is damaged has no
// sessions; one session may stand at several places.
void forEachMirrorSession(const Switch &sw, const std::function<void(const MirrorSession &)> &visit);

}  // namespace qvs::kernel
