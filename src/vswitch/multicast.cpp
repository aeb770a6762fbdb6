// The running multicast state of a switch.
#include "qvs/vshyp.h"
#include "vswitch/request.h"

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetMcastFilterMode(const char *switchName, uint32_t *mode) {
    if (switchName == nullptr || mode == nullptr) return HYP_BAD_PARAM;
    uint32_t answer = 0;
    const HYP_ReturnStatus status = switchRequest(SwitchCommand::GetMcastFilterMode,
                                                  SwitchRequest::named(switchName), &answer, sizeof answer);
    if (status == HYP_OK) *mode = answer;
    return status;
}
