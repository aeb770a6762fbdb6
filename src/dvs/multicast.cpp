// SPDX-License-Identifier: Apache-2.0
// Multicast: the filter mode of a switch, the instruction type of its receive filter, and the legacy address
// lists.
#include <cstring>
#include <string_view>

#include "core/heap.h"
#include "dvs/keys.h"
#include "dvs/property.h"
#include "qvs/vsdvs.h"
#include "qvs/vshyp.h"

namespace qvs {
namespace {

constexpr Property kFilterMode = propertyOf(QVS_KEY_MULTICAST_FILTER);
constexpr Property kRcfType = propertyOf(QVS_KEY_RCF_TYPE);
constexpr Property kAddresses = propertyOf(QVS_KEY_MULTICAST_ADDRESSES);
constexpr Property kPortAddresses = propertyOf(QVS_KEY_PORT_MULTICAST_OVERRIDE);

// The texts of a setting. The index is its number.
using Names = const char *const[2];
constexpr Names kModes = {"legacyFiltering", "snooping"};
constexpr Names kTypes = {"cbpf", "ebpf"};

constexpr uint32_t kLastSettableVersion = 106;

constexpr uint32_t listSize(uint32_t count) {
    return static_cast<uint32_t>(sizeof(VSDVS_McastList) + sizeof(VSDVS_MACAddress) * count);
}

bool numberOf(const Names &names, std::string_view text, uint32_t &number) {
    for (uint32_t i = 0; i < std::size(names); ++i) {
        if (text == names[i]) {
            number = i;
            return true;
        }
    }
    return false;
}

// All three list functions return HYP_BAD_PARAM for a switch or port that does not exist.
Place known(const Place &place) {
    return place.status() == HYP_OK ? place : Place::ofSwitchId(nullptr);
}

HYP_ReturnStatus getAddresses(const Place &place, const Property &property, void **list) {
    if (list != nullptr) *list = nullptr;
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, property, value);
    if (status != HYP_OK) return status;
    if (value.length() < sizeof(VSDVS_McastList)) return HYP_FAILURE;
    if (value.length() != listSize(value.at<VSDVS_McastList>().count)) return HYP_FAILURE;
    if (list == nullptr) return HYP_BAD_PARAM;
    *list = value.release();
    return HYP_OK;
}

HYP_ReturnStatus setAddresses(const Place &place, const Property &property, uint32_t count,
                              const void *addresses) {
    if (place.status() != HYP_OK) return place.status();
    if (addresses == nullptr && count != 0) return HYP_BAD_PARAM;
    const uint32_t size = listSize(count);
    const HeapBytes list = allocateZeroed(size);
    if (list == nullptr) return HYP_NO_MEMORY;
    list[offsetof(VSDVS_McastList, count)] = static_cast<uint8_t>(count);
    if (count != 0)
        std::memcpy(list.get() + sizeof(VSDVS_McastList), addresses, size - sizeof(VSDVS_McastList));
    return setProperty(place, property, list.get(), size);
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetMcastFilterMode(const char *alias, uint32_t *mode) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, kFilterMode, value);
    if (status == HYP_OK) {
        uint32_t stored = 0;
        if (!numberOf(kModes, value.text(), stored)) return HYP_FAILURE;
        if (mode == nullptr) return HYP_BAD_PARAM;
        *mode = stored;
        return HYP_OK;
    }
    if (status != HYP_NOT_FOUND) return status;

    // When nothing is stored, the kernel returns the mode of the running switch.
    PortsetName portset;
    if (const HYP_ReturnStatus resolved = portset.resolve(alias); resolved != HYP_OK) return resolved;
    return VSHYP_GetMcastFilterMode(portset.text, mode);
}

extern "C" HYP_ReturnStatus VSDVS_SetMcastFilterMode(const char *alias, uint32_t mode) {
    if (mode >= std::size(kModes)) return HYP_BAD_PARAM;
    const Place place = Place::ofAlias(alias);
    MeshValue version;
    const HYP_ReturnStatus status = getProperty(place, kVersion, version);
    if (status != HYP_OK) return status;
    if (version.length() < sizeof(uint32_t)) return HYP_FAILURE;
    // The mode of newer switches cannot be set with this function.
    if (version.at<uint32_t>(0) > kLastSettableVersion) return HYP_NOT_SUPPORTED;
    return setText(place, kFilterMode, kModes[mode]);
}

extern "C" HYP_ReturnStatus VSDVS_GetRCFType(const char *alias, uint32_t *type) {
    if (type != nullptr) *type = 0;
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (type == nullptr) return HYP_BAD_PARAM;
    // A type that cannot be read or is unknown reads as 0.
    MeshValue value;
    if (getProperty(place, kRcfType, value) == HYP_OK)
        static_cast<void>(numberOf(kTypes, value.text(), *type));
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetRCFType(const char *alias, uint32_t type) {
    if (type >= std::size(kTypes)) return HYP_BAD_PARAM;
    return setText(Place::ofAlias(alias), kRcfType, kTypes[type]);
}

extern "C" HYP_ReturnStatus VSDVS_GetMcastUserLegacyEntries(const char *alias, void **list) {
    return getAddresses(known(Place::ofAlias(alias)), kAddresses, list);
}

extern "C" HYP_ReturnStatus VSDVS_SetMcastUserLegacyEntries(const char *alias, uint32_t count,
                                                            const void *addresses) {
    if (count > VSDVS_MCAST_MAX_ADDRESSES) return HYP_LIMIT_EXCEEDED;
    return setAddresses(known(Place::ofAlias(alias)), kAddresses, count, addresses);
}

extern "C" HYP_ReturnStatus VSDVS_ClearMcastUserLegacyEntries(const char *alias) {
    return clearProperty(known(Place::ofAlias(alias)), kAddresses);
}

extern "C" HYP_ReturnStatus VSDVS_GetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                                void **list) {
    return getAddresses(known(Place::ofExistingPort(alias, port)), kPortAddresses, list);
}

extern "C" HYP_ReturnStatus VSDVS_SetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                                uint32_t count, const void *addresses) {
    if (count > VSDVS_MCAST_MAX_ADDRESSES) return HYP_LIMIT_EXCEEDED;
    return setAddresses(known(Place::ofExistingPort(alias, port)), kPortAddresses, count, addresses);
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortMcastUserLegacyEntries(const char *alias, const char *port) {
    return clearProperty(known(Place::ofExistingPort(alias, port)), kPortAddresses);
}
