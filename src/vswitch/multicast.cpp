// SPDX-License-Identifier: Apache-2.0
// The running multicast state of a switch.
#include <cstring>

#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetMcastFilterMode{0x1007};
constexpr SwitchCommand kGetMcastFilters{0x1008};
constexpr SwitchCommand kGetSwitchMcastFilters{0x1009};
constexpr SwitchCommand kGetMcastFilterStats{0x100a};

// Returns the size of an address of this type (MAC, IPv4 or IPv6), or 0 if the type is unknown.
uint32_t addressSize(int32_t filterType) {
    switch (filterType) {
        case VSHYP_MCAST_MAC:
            return 6;
        case VSHYP_MCAST_IPV4:
            return 4;
        case VSHYP_MCAST_IPV6:
            return 16;
        default:
            return 0;
    }
}

struct FilterFields {
    uint32_t port;
    uint32_t type;
    uint8_t group[16];
};
static_assert(offsetof(FilterFields, type) == 4 && offsetof(FilterFields, group) == 8);

SwitchRequest forFilter(const char *switchName, const FilterFields &fields) {
    return SwitchRequest::named(switchName).with(fields);
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetMcastFilterMode(const char *switchName, uint32_t *mode) {
    if (switchName == nullptr || mode == nullptr) return HYP_BAD_PARAM;
    const SwitchRequest request = SwitchRequest::named(switchName);
    return fetchInto<sizeof *mode>(
        mode, [&](Area out) { return switchRequest(kGetMcastFilterMode, request, out); });
}

// The type is checked only after the request for the count.
extern "C" HYP_ReturnStatus VSHYP_GetMcastFilters(const char *switchName, uint32_t filterPort,
                                                  int32_t filterType, void **filters) {
    if (switchName == nullptr || filters == nullptr) return HYP_BAD_PARAM;
    return fetchSwitchList(kGetMcastFilters,
                           forFilter(switchName, {filterPort, static_cast<uint32_t>(filterType), {}}),
                           {addressSize(filterType)}, filters);
}

extern "C" HYP_ReturnStatus VSHYP_GetSwitchMcastFilters(const char *switchName, uint32_t value,
                                                        void **filters) {
    if (switchName == nullptr || filters == nullptr) return HYP_BAD_PARAM;
    return fetchSwitchList(kGetSwitchMcastFilters, forFilter(switchName, {0, value, {}}),
                           {VSHYP_SWITCH_MCAST_FILTER_SIZE}, filters);
}

extern "C" HYP_ReturnStatus VSHYP_GetMcastFilterStats(const char *switchName, uint32_t filterPort,
                                                      int32_t filterType, const void *group, void **stats) {
    if (switchName == nullptr || group == nullptr || stats == nullptr) return HYP_BAD_PARAM;
    if (filterType != VSHYP_MCAST_IPV4 && filterType != VSHYP_MCAST_IPV6) return HYP_BAD_PARAM;
    const uint32_t size = addressSize(filterType);
    FilterFields fields = {filterPort, static_cast<uint32_t>(filterType), {}};
    std::memcpy(fields.group, group, size);
    constexpr uint32_t kHeaderSize = 28;
    constexpr uint32_t kCountOffset = 20;
    return fetchSwitchList(kGetMcastFilterStats, forFilter(switchName, fields),
                           {.entrySize = size, .headerSize = kHeaderSize, .countOffset = kCountOffset},
                           stats);
}
