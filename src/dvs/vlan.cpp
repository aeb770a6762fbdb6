// SPDX-License-Identifier: Apache-2.0
// VLAN settings: the private-VLAN map of a switch, the VLAN policy and priority of a port, and nested
// tagging.
#include <cstring>

#include "core/heap.h"
#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kPrivateVlanMap = propertyOf(QVS_KEY_PRIVATE_VLAN_MAP);
constexpr Property kVlan = propertyOf(QVS_KEY_PORT_VLAN);
constexpr Property kPriority = propertyOf(QVS_KEY_PORT_PRIORITY);
constexpr Property kNestedTag = propertyOf(QVS_KEY_PORT_NESTED_TAG);

constexpr VSDVS_VLANRange kAllVlans = {0, QVS_VLAN_MAX};

constexpr uint64_t vlanRecordSize(uint16_t rangeCount) {
    return sizeof(VSDVS_PortVLAN) + sizeof(VSDVS_VLANRange) * uint64_t{rangeCount};
}

bool isVlanRecord(const MeshValue &value) {
    return value.length() >= sizeof(VSDVS_PortVLAN) &&
           value.length() == vlanRecordSize(value.at<uint16_t>(offsetof(VSDVS_PortVLAN, rangeCount)));
}

// Clears the priority if one is stored. A priority that cannot be read is not cleared.
HYP_ReturnStatus removePriority(const Place &place) {
    MeshValue priority;
    if (getProperty(place, kPriority, priority) != HYP_OK) return HYP_OK;
    return clearIfPresent(place, kPriority);
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetPrivateVLANMap(const char *alias, void **map, uint32_t *count) {
    if (map != nullptr) *map = nullptr;
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(Place::ofAlias(alias), kPrivateVlanMap, value);
    if (status != HYP_OK) return status;
    if (value.length() % sizeof(VSDVS_PrivateVLAN) != 0) return HYP_FAILURE;
    if (map == nullptr || count == nullptr) return HYP_BAD_PARAM;
    // The length is divided as a signed number. A length of 2^31 or more cannot be valid.
    *count = static_cast<uint32_t>(static_cast<int32_t>(value.length()) / int32_t{sizeof(VSDVS_PrivateVLAN)});
    *map = value.release();
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPrivateVLANMap(const char *alias, const void *map, uint32_t count) {
    const Place place = Place::ofAlias(alias);
    if (count == 0) return clearProperty(place, kPrivateVlanMap);
    if (place.status() != HYP_OK) return place.status();
    const uint64_t size = sizeof(VSDVS_PrivateVLAN) * uint64_t{count};
    if (size > UINT32_MAX) return HYP_BAD_PARAM;
    return setProperty(place, kPrivateVlanMap, map, static_cast<uint32_t>(size));
}

extern "C" HYP_ReturnStatus VSDVS_GetPortVLANPolicy(const char *alias, const char *port, void **policy,
                                                    uint32_t *priority) {
    if (policy != nullptr) *policy = nullptr;
    const Place place = Place::ofAlias(alias, port);
    MeshValue record;
    const HYP_ReturnStatus status = getProperty(place, kVlan, record);
    if (status != HYP_OK) return status;
    if (!isVlanRecord(record)) return HYP_FAILURE;
    if (policy == nullptr || priority == nullptr) return HYP_BAD_PARAM;

    *policy = record.release();
    // A priority that is absent, malformed or unreadable reads as 0. The flag in the record is not used.
    *priority = 0;
    static_cast<void>(readRecord(place, kPriority, priority, sizeof *priority));
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortVLANPolicy(const char *alias, const char *port, uint16_t vlan,
                                                    uint32_t priority, uint8_t trunk, uint8_t privateVlan,
                                                    const void *ranges, uint16_t rangeCount) {
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return place.status();
    if (rangeCount == 0 && trunk != 0) {
        ranges = &kAllVlans;
        rangeCount = 1;
    }
    if (ranges == nullptr && rangeCount != 0) return HYP_BAD_PARAM;

    const auto size = static_cast<uint32_t>(vlanRecordSize(rangeCount));
    const HeapBytes bytes = allocateZeroed(size);
    if (bytes == nullptr) return HYP_NO_MEMORY;
    const bool hasPriority = priority != VSDVS_NO_PRIORITY;
    auto &record = *reinterpret_cast<VSDVS_PortVLAN *>(bytes.get());
    record.flags = static_cast<uint16_t>((trunk != 0 ? VSDVS_VLAN_TRUNK : 0u) |
                                         (privateVlan != 0 ? VSDVS_VLAN_PRIVATE : 0u) |
                                         (hasPriority ? VSDVS_VLAN_PRIORITY : 0u));
    record.vlan = vlan;
    record.rangeCount = rangeCount;
    if (rangeCount != 0) {
        std::memcpy(bytes.get() + sizeof record, ranges, size - sizeof record);
    }

    const HYP_ReturnStatus status = setProperty(place, kVlan, bytes.get(), size);
    if (status != HYP_OK) return status;
    return hasPriority ? setProperty(place, kPriority, &priority, sizeof priority) : removePriority(place);
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortVLANPolicy(const char *alias, const char *port) {
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return place.status();
    // The record is not cleared: a port without a policy has an empty record.
    const HeapBytes empty = allocateZeroed(sizeof(VSDVS_PortVLAN));
    if (empty == nullptr) return HYP_NO_MEMORY;
    const HYP_ReturnStatus status = setProperty(place, kVlan, empty.get(), sizeof(VSDVS_PortVLAN));
    return status == HYP_OK ? removePriority(place) : status;
}

extern "C" HYP_ReturnStatus VSDVS_GetPortNestedVLANTagging(const char *alias, const char *port,
                                                           uint8_t *enabled) {
    uint32_t stored = 0;
    const Place place = Place::ofAlias(alias, port);
    const HYP_ReturnStatus status = readOrDefault(place, kNestedTag, &stored, sizeof stored);
    if (status != HYP_OK) return status;
    if (enabled == nullptr) return HYP_BAD_PARAM;
    *enabled = stored != 0 ? 1 : 0;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortNestedVLANTagging(const char *alias, const char *port,
                                                           uint8_t enabled) {
    const uint32_t stored = enabled != 0 ? 1 : 0;
    return setProperty(Place::ofAlias(alias, port), kNestedTag, &stored, sizeof stored);
}
