// SPDX-License-Identifier: Apache-2.0
// What a port may do and receive: its security policy, its extra Ethernet filter, and the sink bit in that
// filter.
#include "dvs/keys.h"
#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kFilter = propertyOf(QVS_KEY_PORT_FILTER);

constexpr uint32_t kAllSecurityBits =
    VSDVS_SECURITY_DENY_PROMISCUOUS | VSDVS_SECURITY_DENY_MAC_CHANGE | VSDVS_SECURITY_DENY_FORGED;

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetPortSecurity(const char *alias, const char *port, uint32_t *mask) {
    uint32_t stored = VSDVS_SECURITY_DENY_PROMISCUOUS;
    const Place place = Place::ofAlias(alias, port);
    const HYP_ReturnStatus status = readOrDefault(place, kPortSecurity, &stored, sizeof stored);
    if (status != HYP_OK) return status;
    if (mask == nullptr) return HYP_BAD_PARAM;
    *mask = stored;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortSecurity(const char *alias, const char *port, const uint32_t *mask) {
    if (mask == nullptr || *mask > kAllSecurityBits) return HYP_BAD_PARAM;
    return setProperty(Place::ofAlias(alias, port), kPortSecurity, mask, sizeof *mask);
}

extern "C" HYP_ReturnStatus VSDVS_GetExtraEthFilter(const char *alias, const char *port, void *filter) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return HYP_FAILURE;  // on purpose not the resolver's status
    return readRecord(place, kFilter, filter, sizeof(VSDVS_ExtraEthFilter));
}

extern "C" HYP_ReturnStatus VSDVS_SetExtraEthFilter(const char *alias, const char *port, const void *filter) {
    return setProperty(Place::ofAlias(alias, port), kFilter, filter, sizeof(VSDVS_ExtraEthFilter));
}

extern "C" HYP_ReturnStatus VSDVS_ClearExtraEthFilter(const char *alias, const char *port) {
    return clearIfPresent(Place::ofAlias(alias, port), kFilter);
}

extern "C" HYP_ReturnStatus VSDVS_IsSinkPortEnabled(const char *alias, const char *port, uint8_t *enabled) {
    VSDVS_ExtraEthFilter filter = {};
    const HYP_ReturnStatus status = VSDVS_GetExtraEthFilter(alias, port, &filter);
    if (status != HYP_OK && status != HYP_NOT_FOUND) return status;
    if (enabled == nullptr) return HYP_BAD_PARAM;
    *enabled = (filter.flags & VSDVS_FILTER_SINK) != 0 ? 1 : 0;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_ConfigureSinkPort(const char *alias, const char *port, uint8_t enable) {
    VSDVS_ExtraEthFilter filter = {};
    const HYP_ReturnStatus status = VSDVS_GetExtraEthFilter(alias, port, &filter);
    if (status != HYP_OK && status != HYP_NOT_FOUND) return status;
    const bool isSink = (filter.flags & VSDVS_FILTER_SINK) != 0;
    // A port without a filter gets one even when it shall be no sink.
    if (status == HYP_OK && isSink == (enable != 0)) return HYP_OK;
    filter.flags = enable != 0 ? filter.flags | VSDVS_FILTER_SINK : filter.flags & ~VSDVS_FILTER_SINK;
    return VSDVS_SetExtraEthFilter(alias, port, &filter);
}
