// SPDX-License-Identifier: Apache-2.0
// The exported functions for properties by key, for a switch given by its alias or by its identifier.
#include <algorithm>
#include <cstring>

#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

// The switch of a generic function: one of the two names is used, the other one is ignored.
struct SwitchRef {
    const char *alias;
    const char *switchId;
    uint8_t useAlias;

    // Returns false if the name in use is null or an identifier that is too long.
    bool valid() const {
        if (useAlias != 0) return alias != nullptr;
        return switchId != nullptr && strnlen(switchId, sizeof(SwitchIdString)) < sizeof(SwitchIdString);
    }

    Place place(const char *portId) const {
        return useAlias != 0 ? Place::ofAlias(alias, portId) : Place::ofSwitchId(switchId, portId);
    }
};

HYP_ReturnStatus get(const SwitchRef &ref, const char *portId, const Property &property,
                     VSDVS_PropBuffer *buffer) {
    if (!ref.valid()) return HYP_BAD_PARAM;
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(ref.place(portId), property, value);
    if (status != HYP_OK) return status;

    if (buffer == nullptr) return HYP_BAD_PARAM;
    if (buffer->length == 0) {
        buffer->length = static_cast<int32_t>(value.length());
        return HYP_OK;
    }
    // The comparison is signed, so that a negative capacity is always too small.
    if (int64_t{buffer->length} < int64_t{value.length()}) return HYP_NO_MEMORY;
    if (buffer->data == nullptr) return HYP_BAD_PARAM;
    const auto capacity = static_cast<uint32_t>(buffer->length);
    auto *out = static_cast<uint8_t *>(buffer->data);
    std::copy_n(value.data(), value.length(), out);
    std::memset(out + value.length(), 0, capacity - value.length());
    return HYP_OK;
}

HYP_ReturnStatus set(const SwitchRef &ref, const char *portId, const Property &property, const void *value,
                     uint32_t length) {
    return ref.valid() ? setProperty(ref.place(portId), property, value, length) : HYP_BAD_PARAM;
}

HYP_ReturnStatus clear(const SwitchRef &ref, const char *portId, const Property &property) {
    return ref.valid() ? clearProperty(ref.place(portId), property) : HYP_BAD_PARAM;
}

constexpr Property port(const char *key) {
    return {key, Scope::Port, DVS_PROP_CONFIG};
}
constexpr Property host(const char *key) {
    return {key, Scope::Host, DVS_PROP_CONFIG};
}
constexpr Property global(const char *key) {
    return {key, Scope::Global, DVS_PROP_CONFIG};
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetPortProp(const char *alias, const char *portId, const char *key,
                                              VSDVS_PropBuffer *buffer, const char *switchId,
                                              uint8_t useAlias) {
    return get({alias, switchId, useAlias}, portId, port(key), buffer);
}

extern "C" HYP_ReturnStatus VSDVS_GetHostProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                              const char *switchId, uint8_t useAlias) {
    return get({alias, switchId, useAlias}, nullptr, host(key), buffer);
}

extern "C" HYP_ReturnStatus VSDVS_GetGlobProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                              const char *switchId, uint8_t useAlias) {
    return get({alias, switchId, useAlias}, nullptr, global(key), buffer);
}

extern "C" HYP_ReturnStatus VSDVS_SetPortProp(const char *alias, const char *portId, const char *key,
                                              const void *value, uint32_t length, const char *switchId,
                                              uint8_t useAlias) {
    return set({alias, switchId, useAlias}, portId, port(key), value, length);
}

extern "C" HYP_ReturnStatus VSDVS_SetHostProp(const char *alias, const char *key, const void *value,
                                              uint32_t length, const char *switchId, uint8_t useAlias) {
    return set({alias, switchId, useAlias}, nullptr, host(key), value, length);
}

extern "C" HYP_ReturnStatus VSDVS_SetRuntimeHostProp(const char *alias, const char *key, const void *value,
                                                     uint32_t length, const char *switchId,
                                                     uint8_t useAlias) {
    return set({alias, switchId, useAlias}, nullptr, {key, Scope::Host, DVS_PROP_RUNTIME}, value, length);
}

extern "C" HYP_ReturnStatus VSDVS_SetGlobProp(const char *alias, const char *key, const void *value,
                                              uint32_t length, const char *switchId, uint8_t useAlias) {
    return set({alias, switchId, useAlias}, nullptr, global(key), value, length);
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortProp(const char *alias, const char *portId, const char *key,
                                                const char *switchId, uint8_t useAlias) {
    return clear({alias, switchId, useAlias}, portId, port(key));
}

extern "C" HYP_ReturnStatus VSDVS_ClearHostProp(const char *alias, const char *key, const char *switchId,
                                                uint8_t useAlias) {
    return clear({alias, switchId, useAlias}, nullptr, host(key));
}

extern "C" HYP_ReturnStatus VSDVS_ClearGlobProp(const char *alias, const char *key, const char *switchId,
                                                uint8_t useAlias) {
    return clear({alias, switchId, useAlias}, nullptr, global(key));
}
