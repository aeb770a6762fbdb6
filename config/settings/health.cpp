// SPDX-License-Identifier: Apache-2.0
// The checks of a switch: of its teaming, and of its VLANs and MTU. Each has a deployment, which says how
// often it runs, and a parameter, stored on their own.
#include <qvs/healthcheck.h>
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <array>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- deployment, the first record of both checks ---

constexpr Member kInterval = {.name = "interval",
                              .summary = "time between two runs; the check runs only with one",
                              .type = Type::Number,
                              .unit = "minutes"};

bool addInterval(Value &value, const std::optional<Bytes> &stored) {
    if (!stored) return true;
    const auto deployment = recordOf<HealthCheck_Deployment>(stored);
    if (!deployment || deployment->enabled != 1) return false;
    value.set(kInterval.name, uint64_t{deployment->intervalMinutes});
    return true;
}

std::optional<Blob> deploymentOf(const Value &value) {
    const Value &interval = value[kInterval.name];
    if (interval.absent()) return std::nullopt;
    return blobOf(HealthCheck_Deployment{1, static_cast<uint32_t>(interval.number())});
}

template <const Setting &setting, auto Read>
void readInterval(const Target &target, Value &value) {
    HealthCheck_Deployment deployment{};
    const HYP_ReturnStatus status =
        call<Read>(target.alias.c_str(), reinterpret_cast<uint8_t *>(&deployment));
    if (wasRead(setting, target, status) && deployment.enabled != 0)
        value.set(kInterval.name, uint64_t{deployment.intervalMinutes});
}

// Deploys the check, or no longer.
template <auto Deploy>
HYP_ReturnStatus storeDeployment(const Target &target, const std::optional<Blob> &record) {
    const Blob off = blobOf(HealthCheck_Deployment{});
    return unlessAbsent(call<Deploy>(target.alias.c_str(), record ? record->data() : off.data()));
}

// libqvs clears a parameter only together with the deployment.
HYP_ReturnStatus clearParameter(const Setting &setting, const Target &target) {
    return unlessAbsent(
        call<VSDVS_ClearGlobProp>(target.alias.c_str(), setting.keys[1], nullptr, uint8_t{1}));
}

// --- the team check ---

constexpr const char *kExpectations[] = {"other", "ip-hash"};
constexpr Member kTeamMembers[] = {
    kInterval,
    {.name = "expected",
     .summary = "teaming that the check expects",
     .type = Type::Word,
     .words = kExpectations},
};

std::optional<Value> decodeTeam(const StoredView &stored) {
    Value value = Members{};
    if (!addInterval(value, stored[0])) return std::nullopt;
    if (stored[1]) {
        const auto ipHash = recordOf<uint8_t>(stored[1]);
        if (!ipHash) return std::nullopt;
        value.set("expected", wordOf(kExpectations, *ipHash));
    }
    return ifTaken(kTeamCheck, std::move(value));
}

Stored encodeTeam(const Value &value, const StoredView &, const Target &) {
    Stored stored = {deploymentOf(value)};
    const Value &expected = value["expected"];
    if (!expected.absent()) stored[1] = Blob{static_cast<uint8_t>(numberOf(kExpectations, expected))};
    return stored;
}

std::optional<Value> readTeam(const Target &target) {
    Value value = Members{};
    readInterval<kTeamCheck, HealthCheck_GetTeamCheckDeploy>(target, value);
    uint8_t ipHash = 0;
    const HYP_ReturnStatus status = call<HealthCheck_GetTeamCheckParam>(target.alias.c_str(), &ipHash);
    if (wasRead(kTeamCheck, target, status, 1) && storedOf(kTeamCheck, target.place)[1])
        value.set("expected", kExpectations[ipHash != 0 ? 1 : 0]);
    return value;
}

HYP_ReturnStatus storeTeam(const Target &target, const Stored &records) {
    const SignalsHeld held;
    const HYP_ReturnStatus status = storeDeployment<HealthCheck_DeployTeamCheck>(target, records[0]);
    if (status != HYP_OK) return status;
    if (!records[1]) return clearParameter(kTeamCheck, target);
    return call<HealthCheck_SetTeamCheckParam>(target.alias.c_str(), records[1]->front());
}

// --- the check of VLANs and MTU ---

constexpr Member kVlanMtuMembers[] = {
    kInterval,
    {.name = "parameter",
     .summary = "parameter of the check, which is opaque",
     .type = Type::Bytes,
     .least = HEALTHCHECK_VLAN_MTU_PARAM_SIZE,
     .most = HEALTHCHECK_VLAN_MTU_PARAM_SIZE},
};

std::optional<Value> decodeVlanMtu(const StoredView &stored) {
    Value value = Members{};
    if (!addInterval(value, stored[0])) return std::nullopt;
    if (stored[1]) value.set("parameter", Blob(stored[1]->begin(), stored[1]->end()));
    return ifTaken(kVlanMtuCheck, std::move(value));
}

Stored encodeVlanMtu(const Value &value, const StoredView &, const Target &) {
    Stored stored = {deploymentOf(value)};
    const Value &parameter = value["parameter"];
    if (!parameter.absent()) stored[1] = parameter.bytes();
    return stored;
}

std::optional<Value> readVlanMtu(const Target &target) {
    Value value = Members{};
    readInterval<kVlanMtuCheck, HealthCheck_GetVLANMTUCheckDeploy>(target, value);
    Blob block(HEALTHCHECK_VLAN_MTU_PARAM_SIZE);
    const HYP_ReturnStatus status =
        call<HealthCheck_GetVLANMTUCheckParam>(target.alias.c_str(), block.data());
    if (wasRead(kVlanMtuCheck, target, status, 1) && storedOf(kVlanMtuCheck, target.place)[1])
        value.set("parameter", std::move(block));
    return value;
}

HYP_ReturnStatus storeVlanMtu(const Target &target, const Stored &records) {
    const SignalsHeld held;
    const HYP_ReturnStatus status = storeDeployment<HealthCheck_DeployVLANMTUCheck>(target, records[0]);
    if (status != HYP_OK) return status;
    if (!records[1]) return clearParameter(kVlanMtuCheck, target);
    return call<HealthCheck_SetVLANMTUCheckParam>(target.alias.c_str(), records[1]->data());
}

}  // namespace

const Setting kTeamCheck = {
    .name = "teamCheck",
    .noun = "health team",
    .what = "team check",
    .summary = "the check of the teaming of a switch",
    .scope = Scope::Global,
    .keys = {QVS_KEY_TEAM_CHECK_DEPLOYMENT, QVS_KEY_TEAM_CHECK_PARAMETER},
    .members = kTeamMembers,
    .example = "--interval 5 --expected ip-hash",
    .details =
        "Without an interval the check does not run. When no teaming was ever stored, the check "
        "expects other.",
    .decode = decodeTeam,
    .encode = encodeTeam,
    .read = readTeam,
    .store = storeTeam,
    .clear = clearSwitch<HealthCheck_ClearTeamCheck>,
};

const Setting kVlanMtuCheck = {
    .name = "vlanMtuCheck",
    .noun = "health vlan-mtu",
    .what = "VLAN and MTU check",
    .summary = "the check of the VLANs and the MTU of a switch",
    .scope = Scope::Global,
    .keys = {QVS_KEY_VLAN_MTU_CHECK_DEPLOYMENT, QVS_KEY_VLAN_MTU_CHECK_PARAMETER},
    .members = kVlanMtuMembers,
    .example = "--interval 5",
    .details = "Without an interval the check does not run. The parameter is opaque and has 512 bytes.",
    .decode = decodeVlanMtu,
    .encode = encodeVlanMtu,
    .read = readVlanMtu,
    .store = storeVlanMtu,
    .clear = clearSwitch<HealthCheck_ClearVLANMTUCheck>,
};

}  // namespace qvs::config
