// SPDX-License-Identifier: Apache-2.0
// What the commands about switches share.
#pragma once

#include <qvs/mesh_public.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "config/library/snapshot.h"
#include "tool/command.h"

namespace qvs::cli {

inline constexpr uint32_t kMostMaxPorts = std::numeric_limits<int32_t>::max();

// What is known about a switch from the snapshot.
struct SwitchView {
    explicit SwitchView(DVSSwitch *handle)
        : sw(handle),
          alias(findText({Scope::Global, handle}, QVS_KEY_ALIAS)),
          id(boundedText(DVS_SwitchId(handle), sizeof(SwitchIdString))),
          className(DVS_ClassName(handle)),
          portset(findText({Scope::Host, handle}, QVS_KEY_HOST_PORTSET)),
          version(DVS_Version(handle)),
          maxPorts(DVS_GetMaxPorts(handle)),
          ports(countPorts(handle)),
          uplinks(static_cast<uint32_t>(uplinkPorts(handle).size())),
          opaque(findText({Scope::Global, handle}, QVS_KEY_OPAQUE) == "true") {}

    DVSSwitch *sw;
    std::optional<std::string_view> alias;
    std::string_view id;
    std::string_view className;
    std::optional<std::string_view> portset;
    uint32_t version;
    uint32_t maxPorts;
    uint32_t ports;  // those of the uplinks among them
    uint32_t uplinks;
    bool opaque;
};

void createSwitch(const Arguments &arguments, Output &out);
void destroySwitch(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
