// SPDX-License-Identifier: Apache-2.0
// IPFIX flow sampling of a port.
#include "qvs/ipfixdvs.h"

#include <cstring>

#include "dvs/property.h"

namespace qvs {
namespace {

constexpr Property kPortIpfix = propertyOf(QVS_KEY_PORT_IPFIX);
constexpr size_t kObsIdLengthOffset = offsetof(IPFIXDVS_Port, virtualObsIDLength);

// A switch of another class does not support sampling. Only these two functions report this with a status of
// its own.
HYP_ReturnStatus resolvePort(const char *alias, const char *port, Place &place) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    if (place = Place::ofAlias(alias, port); place.status() == HYP_BAD_PARAM) return HYP_NOT_SUPPORTED;
    if (place.status() != HYP_OK) return place.status();
    if (port == nullptr) return HYP_BAD_PARAM;
    return DVPortExist(place.switchId(), port) != 0 ? HYP_OK : HYP_NOT_FOUND;
}

HYP_ReturnStatus clearSampling(const Place &place) {
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, kPortIpfix, value);
    if (status == HYP_NOT_FOUND) return HYP_OK;
    value.reset();
    return status == HYP_OK ? clearProperty(place, kPortIpfix) : status;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus IPFIXDVS_GetIpfixGranular(const char *alias, const char *port, void **record) {
    Place place = Place::ofSwitchId(nullptr);
    if (const HYP_ReturnStatus status = resolvePort(alias, port, place); status != HYP_OK) return status;
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, kPortIpfix, value);
    if (status == HYP_NOT_FOUND) {
        if (record == nullptr) return HYP_BAD_PARAM;
        *record = nullptr;
        return HYP_OK;
    }
    if (status != HYP_OK) return status;
    if (value.length() < sizeof(IPFIXDVS_Port) ||
        value.length() != sizeof(IPFIXDVS_Port) + value.at<uint16_t>(kObsIdLengthOffset)) {
        return HYP_FAILURE;
    }
    if (record == nullptr) return HYP_BAD_PARAM;
    *record = value.release();
    return HYP_OK;
}

extern "C" HYP_ReturnStatus IPFIXDVS_SetIpfixGranular(const char *alias, const char *port,
                                                      const void *record) {
    Place place = Place::ofSwitchId(nullptr);
    if (const HYP_ReturnStatus status = resolvePort(alias, port, place); status != HYP_OK) return status;
    if (record == nullptr) return clearSampling(place);
    uint16_t obsIdLength = 0;
    std::memcpy(&obsIdLength, static_cast<const uint8_t *>(record) + kObsIdLengthOffset, sizeof obsIdLength);
    return setProperty(place, kPortIpfix, record, static_cast<uint32_t>(sizeof(IPFIXDVS_Port) + obsIdLength));
}
