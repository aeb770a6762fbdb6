// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: the multicast filter mode of a switch. The request contains the portset name at 0 (128
// bytes).

#include "daemon/devices/device_request.h"
#include "daemon/devices/multicast_groups.h"

namespace qvs::kernel {

FilterMode filterModeOf(const Switch &sw) {
    // The last version whose default mode is legacy filtering.
    constexpr uint32_t kLastLegacyVersion = 106;
    const std::string_view stored = sw.global.text("com.quillon.vswitch.multicastFilter");
    if (stored == "legacyFiltering") return FilterMode::Legacy;
    if (stored == "snooping") return FilterMode::Snooping;
    return sw.version <= kLastLegacyVersion ? FilterMode::Legacy : FilterMode::Snooping;
}

namespace {

Result getMcastFilterMode(const Call &, const Portset &portset) {
    const FilterMode mode = portset.owner == nullptr ? FilterMode::Legacy : filterModeOf(*portset.owner);
    return {0, Record(sizeof mode).put(0, mode).take()};
}

constexpr Command kCommands[] = {
    {0x1007, SwitchRequest::kSize, "GetMcastFilterMode", on<requestedPortset, getMcastFilterMode>},
};

}  // namespace

constexpr DevicePart kVswitchMulticast = {.commands = kCommands};

}  // namespace qvs::kernel
