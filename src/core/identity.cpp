// SPDX-License-Identifier: Apache-2.0
// The snapshot, and the translation between alias, portset name, switch identifier and kernel port number.
#include "core/identity.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "core/mesh_value.h"
#include "core/text.h"
#include "qvs/keys.h"
#include "qvs/records.h"

namespace qvs {
namespace {

using Lookup = HYP_ReturnStatus (*)(const char *, const char *, DVSData **);

// Returns the text of a property in the snapshot, if it contains the property.
std::optional<std::string_view> snapshotText(Lookup lookup, const char *switchId, const char *key) {
    DVSData *data = nullptr;
    if (lookup(switchId, key, &data) != HYP_OK) return std::nullopt;
    const void *value = nullptr;
    const uint32_t length = DVSData_Data(data, &value);
    return value != nullptr ? textOf(value, length) : std::string_view();
}

HYP_ReturnStatus copySwitchId(const DVSSwitch *sw, char *out) {
    if (out == nullptr) return HYP_BAD_PARAM;
    std::memcpy(out, DVS_SwitchId(sw), sizeof(SwitchIdString));
    out[sizeof(SwitchIdString) - 1] = '\0';
    return HYP_OK;
}

struct PortsetAliasSearch {
    bool found = false;
    const char *portsetName = nullptr;
    SwitchAliasName alias = {};
};

// A stored name matches if it is a prefix of the given name. This also holds for an empty stored name.
int PortsetMatchWalker(DVSSwitch *sw, void *context) {
    auto &search = *static_cast<PortsetAliasSearch *>(context);
    if (search.found) return 1;  // A state library may go on walking; the first match counts.

    const char *switchId = DVS_SwitchId(sw);
    const auto stored = snapshotText(DVSState_HostPropLookup, switchId, QVS_KEY_HOST_PORTSET);
    if (!stored || !std::string_view(search.portsetName).starts_with(*stored)) return 0;

    search.found = true;
    if (const auto alias = snapshotText(DVSState_GlobalPropLookup, switchId, QVS_KEY_ALIAS)) {
        copyName(search.alias, *alias);
    } else {
        copyText(search.alias, search.portsetName);
    }
    return 1;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus DVSLoadConfig(void) {
    if (const HYP_ReturnStatus status = DVSState_ConfigReset(); status != HYP_OK) return status;

    void *buffer = nullptr;
    uint32_t length = 0;
    if (const HYP_ReturnStatus status = DVSHYP_StateGet(&buffer, &length); status != HYP_OK) return status;

    const HYP_ReturnStatus status = DVSState_ConfigDeserialize(buffer, length);
    std::free(buffer);
    return status;
}

extern "C" HYP_ReturnStatus DVSAliasToSwitchId(const char *alias, char *switchId) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    const DVSSwitch *sw = DVSState_SwitchFindByAlias(alias);
    if (sw == nullptr) return HYP_NOT_FOUND;
    if (std::strcmp(DVS_ClassName(sw), "vswitch") != 0) return HYP_BAD_PARAM;
    return copySwitchId(sw, switchId);
}

extern "C" HYP_ReturnStatus DVSAliasToSwitchIdAllTypes(const char *alias, char *switchId) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    const DVSSwitch *sw = DVSState_SwitchFindByAlias(alias);
    return sw != nullptr ? copySwitchId(sw, switchId) : HYP_NOT_FOUND;
}

extern "C" HYP_ReturnStatus DVSAliasToPortsetName(const char *alias, char *portsetName) {
    if (alias == nullptr || portsetName == nullptr) return HYP_BAD_PARAM;
    const DVSSwitch *sw = DVSState_SwitchFindByAlias(alias);
    if (sw == nullptr) {
        portsetName[0] = '\0';
        return HYP_NOT_FOUND;
    }
    const char *switchId = DVS_SwitchId(sw);
    auto name = snapshotText(DVSState_HostPropLookup, switchId, QVS_KEY_HOST_PORTSET);
    if (!name) name = snapshotText(DVSState_GlobalPropLookup, switchId, QVS_KEY_ALIAS);
    copyName(portsetName, name ? *name : textOf(switchId, sizeof(SwitchAliasName)));
    return HYP_OK;
}

extern "C" HYP_ReturnStatus DVSPortsetNameToAlias(const char *portsetName, char *alias) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    if (portsetName == nullptr || portsetName[0] == '\0') {
        alias[0] = '\0';
        return HYP_BAD_PARAM;
    }
    PortsetAliasSearch search;
    search.portsetName = portsetName;
    DVSState_SwitchForEach(PortsetMatchWalker, &search);
    // If no switch is found, the result is 128 zero bytes and HYP_OK. Callers test the first byte.
    std::memcpy(alias, search.alias, sizeof search.alias);
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_GetAliasFromPortset(const char *portsetName, char *alias) {
    return DVSPortsetNameToAlias(portsetName, alias);
}

extern "C" uint8_t DVPortExist(const char *switchId, const char *portId) {
    if (switchId == nullptr || portId == nullptr) return 0;
    return DVSState_PortFind(switchId, portId) != nullptr ? 1 : 0;
}

extern "C" HYP_ReturnStatus VSDVS_DvPortIDToPortIDFromDVSID(const char *switchId, const char *portId,
                                                            uint32_t *portNumber) {
    constexpr size_t kPortNumber = offsetof(QVS_PortStatus, portNumber);
    if (switchId == nullptr || portId == nullptr) return HYP_BAD_PARAM;

    MeshValue value;
    const HYP_ReturnStatus status = value.fetch([&](void **data, uint32_t *length) {
        return DVSHYP_PortDataGet(switchId, portId, QVS_KEY_PORT_STATUS, data, length);
    });
    if (status != HYP_OK) return status;
    if (value.length() < kPortNumber + sizeof *portNumber) return HYP_FAILURE;
    if (portNumber == nullptr) return HYP_BAD_PARAM;
    *portNumber = value.at<uint32_t>(kPortNumber);
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_DvPortIDToPortID(const char *alias, const char *portId,
                                                   uint32_t *portNumber) {
    SwitchId id;
    if (const HYP_ReturnStatus status = id.resolve(alias); status != HYP_OK) return status;
    return VSDVS_DvPortIDToPortIDFromDVSID(id.text, portId, portNumber);
}
