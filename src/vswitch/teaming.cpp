// Teaming as the kernel runs it, and the statistics around it.
#include <cstring>

#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

// Statistics of a switch into the caller's buffer, which is cleared first.
HYP_ReturnStatus readStats(SwitchCommand command, const char *switchName, void *stats, uint32_t size) {
    if (stats == nullptr) return HYP_BAD_PARAM;
    std::memset(stats, 0, size);
    if (switchName == nullptr) return HYP_BAD_PARAM;
    return switchRequest(command, SwitchRequest::named(switchName), stats, size);
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetRARPStats(const char *switchName, void *stats) {
    return readStats(SwitchCommand::GetRarpStats, switchName, stats, VSHYP_RARP_STATS_SIZE);
}

extern "C" HYP_ReturnStatus VSHYP_GetServicePortTeamingStats(const char *switchName, void *stats) {
    return readStats(SwitchCommand::GetServicePortTeamingStats, switchName, stats,
                     VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE);
}

extern "C" HYP_ReturnStatus VSHYP_GetPortLSTeamingPolicyName(uint32_t portId, char *name) {
    if (name == nullptr) return HYP_BAD_PARAM;
    std::memset(name, 0, VSHYP_LS_TEAMING_NAME_SIZE);
    SwitchRequest request;
    request.portId = portId;
    const HYP_ReturnStatus status =
        switchRequest(SwitchCommand::GetPortLsTeamingPolicyName, request, name, VSHYP_LS_TEAMING_NAME_SIZE);
    // A failing kernel may have written something; the name is empty all the same.
    if (status != HYP_OK) std::memset(name, 0, VSHYP_LS_TEAMING_NAME_SIZE);
    return status;
}

// The one list whose header is the count alone.
extern "C" HYP_ReturnStatus VSHYP_GetLSTeamingPolicyTable(const char *alias, void **table) {
    return fetchListByAlias(SwitchCommand::GetLsTeamingPolicyTable, alias,
                            {.entrySize = VSHYP_LS_TEAMING_ENTRY_SIZE, .headerSize = sizeof(uint32_t)},
                            table);
}
