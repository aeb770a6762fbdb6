// SPDX-License-Identifier: Apache-2.0
// The IPFIX statistics of a switch and of a port.
#include "core/identity.h"
#include "core/request.h"
#include "core/text.h"
#include "qvs/ipfixhyp.h"

namespace qvs {
namespace {

enum class IpfixCommand : uint32_t { GetSwitchStats = 4097, GetPortStats = 4098 };

struct IpfixRequest {
    char switchName[128] = {};  // portset name, or identifier if a port is given
    char portId[48] = {};
};
static_assert(sizeof(IpfixRequest) == 176);

HYP_ReturnStatus getStats(IpfixCommand command, const IpfixRequest &input, void *stats) {
    return fetchInto<IPFIXHYP_STATS_SIZE>(stats, [&](Area out) {
        return request<AlignedFrame>("/dev/ipfix", static_cast<uint32_t>(command), Area{&input, sizeof input},
                                     out);
    });
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus IPFIXHYP_GetIpfixStats(const char *alias, void *stats) {
    if (alias == nullptr || stats == nullptr) return HYP_BAD_PARAM;
    PortsetName portset;
    if (const HYP_ReturnStatus status = portset.resolve(alias); status != HYP_OK) return status;
    IpfixRequest input;
    copyText(input.switchName, portset.text);
    return getStats(IpfixCommand::GetSwitchStats, input, stats);
}

extern "C" HYP_ReturnStatus IPFIXHYP_GetIpfixGranularStats(const char *alias, const char *portId,
                                                           void *stats) {
    if (alias == nullptr || portId == nullptr || stats == nullptr) return HYP_BAD_PARAM;
    SwitchId id;
    if (const HYP_ReturnStatus status = id.resolve(alias); status != HYP_OK) return status;
    IpfixRequest input;
    copyText(input.switchName, id.text);
    copyText(input.portId, portId);
    return getStats(IpfixCommand::GetPortStats, input, stats);
}
