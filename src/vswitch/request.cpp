// SPDX-License-Identifier: Apache-2.0
// Sends requests to /dev/vswitch.
#include "vswitch/request.h"

#include "core/identity.h"

namespace qvs {

HYP_ReturnStatus SwitchRequest::nameByAlias(const char *alias) {
    PortsetName portset;
    const HYP_ReturnStatus status = portset.resolve(alias);
    if (status == HYP_OK) copyText(switchName, portset.text);
    return status;
}

HYP_ReturnStatus SwitchRequest::identifyByAlias(const char *alias) {
    SwitchId id;
    const HYP_ReturnStatus status = id.resolve(alias);
    if (status == HYP_OK) copyText(switchName, id.text);
    return status;
}

HYP_ReturnStatus switchRequest(SwitchCommand command, Area in, Area out) {
    return request<AlignedFrame>("/dev/vswitch", static_cast<uint32_t>(command), in, out);
}

HYP_ReturnStatus fetchSwitchList(SwitchCommand command, const SwitchRequest &request, const ListShape &shape,
                                 void **list) {
    const auto ask = [&](ListPhase, Area out) {
        return switchRequest(command, Area{&request, sizeof request}, out);
    };
    HeapBytes buffer;
    bool counted = false;
    const HYP_ReturnStatus status = fetchList(shape, ask, buffer, counted);
    if (counted) *list = buffer.release();
    return status;
}

HYP_ReturnStatus fetchListByAlias(SwitchCommand command, const char *alias, const ListShape &shape,
                                  void **list) {
    if (alias == nullptr || list == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = request.nameByAlias(alias); status != HYP_OK) return status;
    return fetchSwitchList(command, request, shape, list);
}

}  // namespace qvs
