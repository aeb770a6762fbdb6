// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: the multicast filter mode of a switch. The request contains the portset name at 0 (128
// bytes).

#include "daemon/devices/device_request.h"

namespace qvs::kernel {

namespace {

enum FilterMode : uint32_t { Legacy = 0, Snooping = 1 };

// The last version whose default mode is legacy filtering.
constexpr uint32_t kLastLegacyVersion = 106;

FilterMode filterModeOf(const Switch &sw) {
    const std::string_view stored = sw.global.text("com.quillon.vswitch.multicastFilter");
    if (stored == "legacyFiltering") return Legacy;
    if (stored == "snooping") return Snooping;
    return sw.version <= kLastLegacyVersion ? Legacy : Snooping;
}

Result getMcastFilterMode(const Call &, const Portset &portset) {
    const uint32_t mode = portset.owner == nullptr ? Legacy : filterModeOf(*portset.owner);
    return {0, Record(sizeof mode).put(0, mode).take()};
}

constexpr Command kCommands[] = {
    {0x1007, SwitchRequest::kSize, "GetMcastFilterMode", on<requestedPortset, getMcastFilterMode>},
};

}  // namespace

constexpr DevicePart kVswitchMulticast = {.commands = kCommands};

}  // namespace qvs::kernel
