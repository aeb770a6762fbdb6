// SPDX-License-Identifier: Apache-2.0
// DVSHYP_*: reads and changes the state in the kernel. Each operation is one request.
#include <qvs/mesh_public.h>

#include <cstdlib>
#include <new>

#include "state_library/link.h"

using qvs::mesh::messageOf;
using qvs::mesh::request;
using qvs::mesh::requestBytes;
using qvs::mesh::requestState;
using qvs::wire::Kind;
using qvs::wire::Scope;
using qvs::wire::Writer;

namespace {

// The place of a property. `complete` finds null arguments of the client.
struct Place {
    Scope scope;
    const char *switchId;
    const char *portId;
    const char *key;

    bool complete() const { return switchId != nullptr && portId != nullptr && key != nullptr; }
    Writer message(Kind kind) const {
        Writer message = messageOf(kind);
        message.u8(static_cast<uint8_t>(scope)).text(switchId).text(portId).text(key);
        return message;
    }
};

std::string_view view(const void *data, uint32_t length) {
    return {static_cast<const char *>(data), length};
}

// Tells whether a value is too large for a request. The daemon closes the connection after a larger request.
// Half of its limit leaves room for the identifiers.
bool tooLarge(uint32_t length) {
    return length > qvs::wire::kMaxRequest / 2;
}

// Returns HYP_NO_MEMORY if a message cannot be built. Exceptions must not leave a C interface.
template <typename Operation>
HYP_ReturnStatus guarded(Operation operation) {
    try {
        return operation();
    } catch (const std::bad_alloc &) {
        return HYP_NO_MEMORY;
    }
}

HYP_ReturnStatus get(const Place &place, void **value, uint32_t *length) {
    if (!place.complete() || value == nullptr || length == nullptr) return HYP_BAD_PARAM;
    return guarded([&] {
        Writer message = place.message(Kind::PropGet);
        return requestBytes(message, value, length);
    });
}

HYP_ReturnStatus set(const Place &place, const void *value, uint32_t length, uint32_t propType) {
    if (!place.complete() || (value == nullptr && length != 0)) return HYP_BAD_PARAM;
    if (tooLarge(length)) return HYP_LIMIT_EXCEEDED;
    return guarded([&] {
        Writer message = place.message(Kind::PropSet);
        return request(message.text(view(value, length)).u32(propType));
    });
}

HYP_ReturnStatus clear(const Place &place) {
    if (!place.complete()) return HYP_BAD_PARAM;
    return guarded([&] {
        Writer message = place.message(Kind::PropClear);
        return request(message);
    });
}

HYP_ReturnStatus onSwitch(Kind kind, const char *switchId) {
    if (switchId == nullptr) return HYP_BAD_PARAM;
    return guarded([&] {
        Writer message = messageOf(kind);
        return request(message.text(switchId));
    });
}

}  // namespace

HYP_ReturnStatus DVSHYP_StateGet(void **buffer, uint32_t *length) {
    if (buffer == nullptr || length == nullptr) return HYP_BAD_PARAM;
    return guarded([&] { return requestState(buffer, length); });
}

HYP_ReturnStatus DVSHYP_PortDataGet(const char *switchId, const char *portId, const char *key, void **value,
                                    uint32_t *length) {
    return get({Scope::Port, switchId, portId, key}, value, length);
}

HYP_ReturnStatus DVSHYP_HostPropGet(const char *switchId, const char *key, void **value, uint32_t *length) {
    return get({Scope::Host, switchId, "", key}, value, length);
}

HYP_ReturnStatus DVSHYP_GlobalPropGet(const char *switchId, const char *key, void **value, uint32_t *length) {
    return get({Scope::Global, switchId, "", key}, value, length);
}

HYP_ReturnStatus DVSHYP_PortDataSet(const char *switchId, const char *portId, const char *key,
                                    const void *value, uint32_t length, uint32_t propType) {
    return set({Scope::Port, switchId, portId, key}, value, length, propType);
}

HYP_ReturnStatus DVSHYP_HostPropSet(const char *switchId, const char *key, const void *value, uint32_t length,
                                    uint32_t propType) {
    return set({Scope::Host, switchId, "", key}, value, length, propType);
}

HYP_ReturnStatus DVSHYP_GlobalPropSet(const char *switchId, const char *key, const void *value,
                                      uint32_t length, uint32_t propType) {
    return set({Scope::Global, switchId, "", key}, value, length, propType);
}

HYP_ReturnStatus DVSHYP_PortDataClear(const char *switchId, const char *portId, const char *key) {
    return clear({Scope::Port, switchId, portId, key});
}

HYP_ReturnStatus DVSHYP_HostPropClear(const char *switchId, const char *key) {
    return clear({Scope::Host, switchId, "", key});
}

HYP_ReturnStatus DVSHYP_GlobalPropClear(const char *switchId, const char *key) {
    return clear({Scope::Global, switchId, "", key});
}

HYP_ReturnStatus DVSHYP_SwitchAdd(const char *switchId, const char *className, uint32_t maxPorts,
                                  uint32_t version) {
    if (switchId == nullptr || className == nullptr) return HYP_BAD_PARAM;
    return guarded([&] {
        Writer message = messageOf(Kind::SwitchAdd);
        return request(message.text(switchId).text(className).u32(maxPorts).u32(version));
    });
}

HYP_ReturnStatus DVSHYP_SwitchAssociate(const char *switchId) {
    return onSwitch(Kind::SwitchAssociate, switchId);
}

HYP_ReturnStatus DVSHYP_SwitchDissociate(const char *switchId) {
    return onSwitch(Kind::SwitchDissociate, switchId);
}

HYP_ReturnStatus DVSHYP_SwitchRemove(const char *switchId) {
    return onSwitch(Kind::SwitchRemove, switchId);
}

HYP_ReturnStatus DVSHYP_PortAdd(const char *switchId, const char *portId, const void *properties,
                                uint32_t length) {
    if (switchId == nullptr || portId == nullptr || properties == nullptr) return HYP_BAD_PARAM;
    if (tooLarge(length)) return HYP_LIMIT_EXCEEDED;
    return guarded([&] {
        Writer message = messageOf(Kind::PortAdd);
        return request(message.text(switchId).text(portId).text(view(properties, length)));
    });
}

HYP_ReturnStatus DVSHYP_PortRemove(const char *switchId, const char *portId) {
    if (switchId == nullptr || portId == nullptr) return HYP_BAD_PARAM;
    return guarded([&] {
        Writer message = messageOf(Kind::PortRemove);
        return request(message.text(switchId).text(portId));
    });
}

void DVSHYP_DataFree(void *value) {
    std::free(value);
}
