// SPDX-License-Identifier: Apache-2.0
// The mirror sessions in the properties of a switch.
#pragma once

#include <functional>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

struct MirrorSession {
    std::string_view id;  // at most 32 characters
    bool disabled = false;
    bool namesPorts = false;        // its destinations are names of ports or uplinks
    std::string_view destinations;  // entries of kMirrorEntity bytes: a u32 and the name
};

constexpr size_t kMirrorEntity = 52;

// Visits the sessions of the uplinks, and then those of the ports in their order. A damaged list has no
// sessions. A session can appear in several lists.
void forEachMirrorSession(const Switch &sw, const std::function<void(const MirrorSession &)> &visit);

}  // namespace qvs::kernel
