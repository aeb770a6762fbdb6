// SPDX-License-Identifier: Apache-2.0
// The running teaming state of a switch, and statistics about it.
#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetRarpStats{0x1001};
constexpr SwitchCommand kGetServicePortTeamingStats{0x1002};
constexpr SwitchCommand kGetPortLsTeamingPolicyName{0x1024};
constexpr SwitchCommand kGetLsTeamingPolicyTable{0x1025};

// Reads statistics of a switch into a buffer of the caller, which is cleared first.
template <uint32_t Size>
HYP_ReturnStatus readStats(SwitchCommand command, const char *switchName, void *stats) {
    if (stats == nullptr) return HYP_BAD_PARAM;
    return fetchIntoCleared<Size>(stats, [&](Area out) {
        if (switchName == nullptr) return HYP_BAD_PARAM;
        return switchRequest(command, SwitchRequest::named(switchName), out);
    });
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetRARPStats(const char *switchName, void *stats) {
    return readStats<VSHYP_RARP_STATS_SIZE>(kGetRarpStats, switchName, stats);
}

extern "C" HYP_ReturnStatus VSHYP_GetServicePortTeamingStats(const char *switchName, void *stats) {
    return readStats<VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE>(kGetServicePortTeamingStats, switchName, stats);
}

extern "C" HYP_ReturnStatus VSHYP_GetPortLSTeamingPolicyName(uint32_t portId, char *name) {
    if (name == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    request.portId = portId;
    return fetchIntoCleared<VSHYP_LS_TEAMING_NAME_SIZE>(
        name, [&](Area out) { return switchRequest(kGetPortLsTeamingPolicyName, request, out); });
}

// The header of this list is only the count.
extern "C" HYP_ReturnStatus VSHYP_GetLSTeamingPolicyTable(const char *alias, void **table) {
    return fetchListByAlias(kGetLsTeamingPolicyTable, alias,
                            {.entrySize = VSHYP_LS_TEAMING_ENTRY_SIZE, .headerSize = sizeof(uint32_t)},
                            table);
}
