// SPDX-License-Identifier: Apache-2.0
// The running mirror sessions of a switch.
#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetPromiscSessionActiveDsts{0x1004};
constexpr SwitchCommand kGetMirrorSessionIds{0x1005};
constexpr SwitchCommand kGetMirrorSessionStats{0x1006};
constexpr SwitchCommand kGetMirrorAgentWorldStats{0x2007};  // only reads, in spite of its number

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetPromiscSessionActiveDsts(const char *alias, void **dsts) {
    return fetchListByAlias(kGetPromiscSessionActiveDsts, alias, {VSHYP_PROMISC_DST_SIZE}, dsts);
}

extern "C" HYP_ReturnStatus VSHYP_GetDVMirrorSessionIDs(const char *alias, void **ids) {
    return fetchListByAlias(kGetMirrorSessionIds, alias, {VSHYP_MIRROR_SESSION_ID_SIZE}, ids);
}

extern "C" HYP_ReturnStatus VSHYP_GetDVMirrorSessionStats(const char *alias, const char *sessionName,
                                                          void *stats) {
    if (alias == nullptr || sessionName == nullptr || stats == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = request.nameByAlias(alias); status != HYP_OK) return status;
    char session[32];
    copyText(session, sessionName);
    request.with(session);
    return fetchInto<VSHYP_MIRROR_STATS_SIZE>(
        stats, [&](Area out) { return switchRequest(kGetMirrorSessionStats, request, out); });
}

extern "C" HYP_ReturnStatus VSHYP_GetDVMirrorAgentWorldStats(void *stats) {
    if (stats == nullptr) return HYP_BAD_PARAM;
    return fetchInto<VSHYP_MIRROR_AGENT_STATS_SIZE>(
        stats, [](Area out) { return switchRequest(kGetMirrorAgentWorldStats, Area{}, out); });
}
