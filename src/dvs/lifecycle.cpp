// SPDX-License-Identifier: Apache-2.0
// Creates and destroys switches, adds and removes ports.
#include <cstdio>
#include <cstring>

#include "core/identity.h"
#include "dvs/keys.h"
#include "dvs/new_port.h"
#include "dvs/property.h"
#include "dvs/shell.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr uint32_t kFirstConnectId = 1;

constexpr Property kAlias = propertyOf(QVS_KEY_ALIAS);
constexpr Property kOpaque = propertyOf(QVS_KEY_OPAQUE);
constexpr Property kPortset = propertyOf(QVS_KEY_HOST_PORTSET);
constexpr Property kExternalId = propertyOf(QVS_KEY_PORT_EXTERNAL_ID);

// The argument after the portset name must be a number and a newline inside quotes. The node of the kernel
// requires this form.
bool formatCreate(ShellCommand &command, const char *portsetName, uint32_t maxPorts) {
    return command.format("/bin/treesh -e set /net/create %s \"%d\n\" %s 2>/dev/null", portsetName,
                          static_cast<int>(maxPorts), "vswitch");
}

bool formatDestroy(ShellCommand &command, const char *portsetName) {
    return isPlainNodeName(portsetName) &&
           command.format("/bin/treesh -e set /net/portsets/%s/destroy destroy 2> /dev/null", portsetName);
}

// Formats the first 15 characters of the alias as 16 hexadecimal bytes in two halves: "73 77 31 00 00 00 00
// 00-00 ...".
void generateSwitchId(const char *alias, SwitchId &id) {
    constexpr char kDigits[] = "0123456789abcdef";
    char bytes[16] = {};
    std::memcpy(bytes, alias, strnlen(alias, sizeof bytes - 1));
    char *out = id.text;
    for (size_t i = 0; i < sizeof bytes; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (i != 0) *out++ = i == sizeof bytes / 2 ? '-' : ' ';
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 0xf];
    }
    *out = '\0';
}

struct NewSwitch {
    const char *alias;
    const char *switchId;
    const char *portsetName;
    uint32_t version;
    bool opaque;
    uint32_t maxPorts;
    uint32_t numUplinks;
    uint32_t numPorts;
};

// Lookups truncate longer names, so that a switch with such a name could not be addressed.
bool hasFittingNames(const NewSwitch &sw) {
    return strnlen(sw.switchId, sizeof(SwitchIdString)) < sizeof(SwitchIdString) &&
           strnlen(sw.portsetName, sizeof(SwitchAliasName)) < sizeof(SwitchAliasName);
}

HYP_ReturnStatus storeSwitchProperties(const NewSwitch &sw) {
    const Place place = Place::ofSwitchId(sw.switchId);
    HYP_ReturnStatus status = setText(place, kAlias, sw.alias);
    if (status == HYP_OK) status = setProperty(place, kVersion, &sw.version, sizeof sw.version);
    if (status == HYP_OK) status = setText(place, kOpaque, sw.opaque ? "true" : "false");
    if (status == HYP_OK) status = setText(place, kPortset, sw.portsetName);
    return status;
}

HYP_ReturnStatus addFirstPorts(const NewSwitch &sw) {
    if (sw.numUplinks != 0) {
        const HYP_ReturnStatus status = SetNumSwitchUplinkPortsByUUID(sw.switchId, sw.numUplinks);
        if (status != HYP_OK) return status;
    }
    for (uint32_t i = 0; i < sw.numPorts; ++i) {
        char name[32];
        snprintf(name, sizeof name, "port%u", i);
        const Place port = Place::ofSwitchId(sw.switchId, name);
        const HYP_ReturnStatus status = addPort(port, kFirstConnectId, PortKind::Ordinary);
        if (status != HYP_OK) return status;
    }
    return HYP_OK;
}

// Each of the next three functions undoes its own steps if a later step fails. The status is that of the
// first failure.
HYP_ReturnStatus associateAndFill(const NewSwitch &sw) {
    if (const HYP_ReturnStatus status = DVSHYP_SwitchAssociate(sw.switchId); status != HYP_OK) return status;
    const HYP_ReturnStatus status = addFirstPorts(sw);
    if (status != HYP_OK) static_cast<void>(DVSHYP_SwitchDissociate(sw.switchId));
    return status;
}

HYP_ReturnStatus addSwitch(const NewSwitch &sw) {
    HYP_ReturnStatus status = DVSHYP_SwitchAdd(sw.switchId, "vswitch", sw.maxPorts, sw.version);
    if (status != HYP_OK) return status;
    status = storeSwitchProperties(sw);
    if (status == HYP_OK) status = associateAndFill(sw);
    if (status != HYP_OK) static_cast<void>(DVSHYP_SwitchRemove(sw.switchId));
    return status;
}

HYP_ReturnStatus createSwitch(const NewSwitch &sw) {
    if (!hasFittingNames(sw)) return HYP_BAD_PARAM;
    // Both command lines are formatted before anything runs, so that no portset is created that cannot be
    // destroyed.
    ShellCommand create;
    ShellCommand destroy;
    if (!formatDestroy(destroy, sw.portsetName) || !formatCreate(create, sw.portsetName, sw.maxPorts)) {
        return HYP_BAD_PARAM;
    }
    if (!create.run()) return HYP_FAILURE;
    const HYP_ReturnStatus status = addSwitch(sw);
    if (status != HYP_OK) static_cast<void>(destroy.run());
    return status;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_CreateVSwitch(const char *alias, const char *switchId,
                                                const char *portsetName, uint32_t version, uint8_t opaque,
                                                uint32_t maxPorts, uint32_t numUplinks, uint32_t numPorts) {
    if (alias == nullptr) return HYP_BAD_PARAM;
    SwitchId generated;
    if (switchId == nullptr) generateSwitchId(alias, generated);
    return createSwitch({
        .alias = alias,
        .switchId = switchId != nullptr ? switchId : generated.text,
        .portsetName = portsetName != nullptr ? portsetName : alias,
        .version = version,
        .opaque = opaque != 0,
        .maxPorts = maxPorts != 0 ? maxPorts : QVS_MAX_PORTS_DEFAULT,
        .numUplinks = numUplinks,
        .numPorts = numPorts,
    });
}

extern "C" HYP_ReturnStatus VSDVS_DestroyVSwitch(const char *alias) {
    PortsetName portset;
    if (const HYP_ReturnStatus status = portset.resolve(alias); status != HYP_OK) return status;
    SwitchId id;
    if (const HYP_ReturnStatus status = id.resolve(alias); status != HYP_OK) return status;
    ShellCommand destroy;
    if (!formatDestroy(destroy, portset.text)) return HYP_BAD_PARAM;

    if (const HYP_ReturnStatus status = DVSHYP_SwitchDissociate(id.text); status != HYP_OK) return status;
    if (const HYP_ReturnStatus status = DVSHYP_SwitchRemove(id.text); status != HYP_OK) return status;
    return destroy.run() ? HYP_OK : HYP_FAILURE;
}

extern "C" HYP_ReturnStatus VSDVS_AddDVPort(const char *alias, const char *portId, uint32_t connectId) {
    const Place place = Place::ofAlias(alias, portId);
    return addPort(place, connectId, PortKind::Ordinary);
}

extern "C" HYP_ReturnStatus VSDVS_AddOpaqueDVPort(const char *alias, const char *portId,
                                                  const char *externalId) {
    const Place place = Place::ofAlias(alias, portId);
    if (place.status() == HYP_OK && externalId == nullptr) return HYP_BAD_PARAM;
    HYP_ReturnStatus status = addPort(place, kFirstConnectId, PortKind::Ordinary);
    if (status != HYP_OK) return status;
    status = setText(place, kExternalId, externalId);
    if (status != HYP_OK) static_cast<void>(removePort(place));
    return status;
}

extern "C" HYP_ReturnStatus VSDVS_RemoveDVPort(const char *alias, const char *portId) {
    return removePort(Place::ofAlias(alias, portId));
}
