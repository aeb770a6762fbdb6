// SPDX-License-Identifier: Apache-2.0
// qvs health: the checks of teaming, VLANs and MTU, and what the kernel has found on a port.
#include <qvs/qvs.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kTeamDeploy{"team check", QVS_KEY_TEAM_CHECK_DEPLOYMENT, sizeof(HealthCheck_Deployment)};
constexpr Policy kTeamParam{"team check parameter", QVS_KEY_TEAM_CHECK_PARAMETER, sizeof(uint8_t)};
constexpr Policy kVlanMtuDeploy{"VLAN and MTU check", QVS_KEY_VLAN_MTU_CHECK_DEPLOYMENT,
                                sizeof(HealthCheck_Deployment)};
constexpr Policy kVlanMtuParam{"VLAN and MTU check parameter", QVS_KEY_VLAN_MTU_CHECK_PARAMETER,
                               HEALTHCHECK_VLAN_MTU_PARAM_SIZE};
constexpr Policy kVlanResult{"check result", QVS_KEY_PORT_VLAN_CHECK_RESULT};
constexpr Policy kMtuResult{"check result", QVS_KEY_PORT_MTU_CHECK_RESULT};

constexpr const char *kExpectations[] = {"other", "ip-hash"};

using ResultBuffer = std::unique_ptr<void, Releaser<HealthCheck_FreeMemory>>;

// --- deployment ---

template <auto Read>
void describeDeployment(Record &record, const PolicyPlace &place) {
    HealthCheck_Deployment deployment{};
    place.requireRead(call<Read>(place.name(), reinterpret_cast<uint8_t *>(&deployment)));
    place.describe(record);
    record.field("enabled", "enabled", Flag{deployment.enabled != 0});
    record.field("interval", "interval minutes", uint32_t{deployment.intervalMinutes});
}

template <const Policy &policy, auto Store>
void deploy(const Arguments &arguments, Output &out) {
    bool off = oneGiven(arguments, {"--interval", "--off"}) == "--off";
    HealthCheck_Deployment deployment{static_cast<uint8_t>(off ? 0 : 1), arguments.number("--interval", 0)};
    PolicyPlace place(policy, arguments);
    auto deployed = [&] { return call<Store>(place.name(), bytesOf(deployment).data()); };
    // A check that is off is not stored.
    if (off) return clearPolicy(out, place, deployed);
    storePolicy(out, place, place.holds(bytesOf(deployment)), deployed);
}

// Removes deployment and parameter.
template <const Policy &deployment, const Policy &param, auto Clear>
void clearCheck(const Arguments &arguments, Output &out) {
    PolicyPlace place(deployment, arguments);
    bool there = place.stored() || PolicyPlace(param, arguments).stored();
    if (there) require(call<Clear>(place.name()), place.named());
    place.report(out, there);
}

// --- the team check ---

void getTeam(const Arguments &arguments, Output &out) {
    PolicyPlace place(kTeamDeploy, arguments);
    uint8_t ipHash = 0;
    PolicyPlace(kTeamParam, arguments)
        .requireRead(call<HealthCheck_GetTeamCheckParam>(place.name(), &ipHash));
    Record record(out);
    describeDeployment<HealthCheck_GetTeamCheckDeploy>(record, place);
    record.field("expected", "expected teaming", std::string_view(kExpectations[ipHash != 0 ? 1 : 0]));
    record.finish();
}

void setTeamParam(const Arguments &arguments, Output &out) {
    auto ipHash = static_cast<uint8_t>(chosen(arguments, "TEAMING", kExpectations));
    PolicyPlace place(kTeamParam, arguments);
    storePolicy(out, place, place.holds({&ipHash, 1}),
                [&] { return call<HealthCheck_SetTeamCheckParam>(place.name(), ipHash); });
}

// --- the check of VLANs and MTU ---

void getVlanMtu(const Arguments &arguments, Output &out) {
    PolicyPlace place(kVlanMtuDeploy, arguments);
    std::array<uint8_t, HEALTHCHECK_VLAN_MTU_PARAM_SIZE> block{};
    PolicyPlace param(kVlanMtuParam, arguments);
    param.requireRead(call<HealthCheck_GetVLANMTUCheckParam>(place.name(), block.data()));
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), block);
    std::optional<Bytes> shown;
    if (param.stored()) shown.emplace(block);
    Record record(out);
    describeDeployment<HealthCheck_GetVLANMTUCheckDeploy>(record, place);
    record.block("param", "parameter", shown);
    record.finish();
}

void setVlanMtuParam(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> block = readFile(arguments.text("--file"), HEALTHCHECK_VLAN_MTU_PARAM_SIZE);
    if (block.size() != HEALTHCHECK_VLAN_MTU_PARAM_SIZE) {
        fail(Exit::Usage, "file {}: {} bytes, but the parameter has {}", inQuotes(arguments.text("--file")),
             block.size(), HEALTHCHECK_VLAN_MTU_PARAM_SIZE);
    }
    PolicyPlace place(kVlanMtuParam, arguments);
    storePolicy(out, place, place.holds(block),
                [&] { return call<HealthCheck_SetVLANMTUCheckParam>(place.name(), block.data()); });
}

// --- results ---

// The ranges of a result, both kinds; nothing without a result.
struct Result {
    std::optional<std::vector<std::string>> first;
    std::optional<std::vector<std::string>> second;
};

std::vector<std::string> rangesOf(const uint8_t *ranges, uint32_t count) {
    std::vector<std::string> texts;
    for (uint32_t i = 0; i < count; i++) {
        uint16_t ends[2];
        std::memcpy(ends, ranges + i * sizeof ends, sizeof ends);
        texts.push_back(ends[0] == ends[1] ? fmt::to_string(ends[0])
                                           : fmt::format("{}-{}", ends[0], ends[1]));
    }
    return texts;
}

template <auto Read>
Result readResult(const PolicyPlace &place) {
    void *raw = nullptr;
    HYP_ReturnStatus status = call<Read>(place.name(), place.port(), &raw);
    if (status == HYP_NOT_FOUND) return {};
    place.requireRead(status);
    ResultBuffer buffer(raw);
    HealthCheck_Result head;
    std::memcpy(&head, raw, sizeof head);
    const uint8_t *ranges = static_cast<const uint8_t *>(raw) + sizeof head;
    return {rangesOf(ranges, head.firstCount),
            rangesOf(ranges + head.firstCount * sizeof(uint32_t), head.secondCount)};
}

std::optional<Words> rangeWords(const std::optional<std::vector<std::string>> &texts) {
    if (!texts) return std::nullopt;
    return Words{{texts->begin(), texts->end()}};
}

void result(const Arguments &arguments, Output &out) {
    PolicyPlace place(kVlanResult, arguments);
    Result vlan = readResult<HealthCheck_GetVLANCheckResult>(place);
    Result mtu = readResult<HealthCheck_GetMTUCheckResult>(place);
    if (!vlan.first && !mtu.first) place.failAbsent();
    Record record(out);
    place.describe(record);
    record.field("trunkedVlans", "VLANs trunked", rangeWords(vlan.first));
    record.field("untrunkedVlans", "VLANs not trunked", rangeWords(vlan.second));
    record.field("allowedMtus", "MTUs allowed", rangeWords(mtu.first));
    record.field("disallowedMtus", "MTUs not allowed", rangeWords(mtu.second));
    record.finish();
}

constexpr Option kInterval{
    "--interval", "MINUTES", "deploy the check, with this many minutes between two runs",
    Kind::Word,   false,     Need::Choice};
constexpr Option kOff{"--off",    nullptr, "no longer deploy the check; its parameter stays",
                      Kind::Word, false,   Need::Choice};

const Command kRows[] = {
    {.words = "health team get",
     .summary = "show the check of the teaming of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs health team get sw1",
     .run = reads(getTeam, touches<kTeamDeploy, kTeamParam>)},
    {.words = "health team deploy",
     .summary = "deploy the check of the teaming of a switch, or no longer",
     .arguments = {kSwitchArgument},
     .options = {kInterval, kOff},
     .example = "qvs health team deploy sw1 --interval 5",
     .run = writes(deploy<kTeamDeploy, HealthCheck_DeployTeamCheck>, touches<kTeamDeploy>)},
    {.words = "health team param",
     .summary = "store the teaming that the check expects",
     .arguments = {kSwitchArgument, {"TEAMING", "ip-hash or other"}},
     .example = "qvs health team param sw1 ip-hash",
     .run = writes(setTeamParam, touches<kTeamParam>)},
    {.words = "health team clear",
     .summary = "remove the check of the teaming of a switch and its parameter",
     .arguments = {kSwitchArgument},
     .example = "qvs health team clear sw1",
     .run = writes(clearCheck<kTeamDeploy, kTeamParam, HealthCheck_ClearTeamCheck>,
                   touches<kTeamDeploy, kTeamParam>)},
    {.words = "health vlan-mtu get",
     .summary = "show the check of VLANs and MTU of a switch",
     .arguments = {kSwitchArgument},
     .options = {kRaw},
     .details =
         "The parameter is opaque, 512 bytes, and is shown as it is; --raw writes it alone, zeros when "
         "never stored.",
     .example = "qvs health vlan-mtu get sw1",
     .run = reads(getVlanMtu, touches<kVlanMtuDeploy, kVlanMtuParam>)},
    {.words = "health vlan-mtu deploy",
     .summary = "deploy the check of VLANs and MTU of a switch, or no longer",
     .arguments = {kSwitchArgument},
     .options = {kInterval, kOff},
     .example = "qvs health vlan-mtu deploy sw1 --interval 5",
     .run = writes(deploy<kVlanMtuDeploy, HealthCheck_DeployVLANMTUCheck>, touches<kVlanMtuDeploy>)},
    {.words = "health vlan-mtu param",
     .summary = "store the parameter of the check of VLANs and MTU",
     .arguments = {kSwitchArgument},
     .options = {{"--file", "FILE", "the 512 bytes of the parameter (- for standard input)", Kind::File,
                  false, Need::Always}},
     .example = "qvs health vlan-mtu param sw1 --file param.bin",
     .run = writes(setVlanMtuParam, touches<kVlanMtuParam>)},
    {.words = "health vlan-mtu clear",
     .summary = "remove the check of VLANs and MTU of a switch and its parameter",
     .arguments = {kSwitchArgument},
     .example = "qvs health vlan-mtu clear sw1",
     .run = writes(clearCheck<kVlanMtuDeploy, kVlanMtuParam, HealthCheck_ClearVLANMTUCheck>,
                   touches<kVlanMtuDeploy, kVlanMtuParam>)},
    {.words = "health result",
     .summary = "show the VLANs and MTUs that the check has found on a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs health result sw1 port0",
     .run = reads(result, touches<kVlanResult, kMtuResult>)},
};

}  // namespace

const std::span<const Command> kHealthCommands = kRows;

}  // namespace qvs::cli
