// SPDX-License-Identifier: Apache-2.0
// qvs teaming, port teaming, port teaming-override, port tx-uplink: how traffic is spread over the uplinks.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_set>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kTeaming{"teaming policy", QVS_KEY_TEAMING, sizeof(VSDVS_TeamingPolicy)};
constexpr Policy kPortTeaming{"teaming policy", QVS_KEY_PORT_TEAMING};
constexpr Policy kOverride{"teaming override", QVS_KEY_PORT_TEAMING_OVERRIDE};
constexpr Policy kTxUplink{"transmit uplink mode", QVS_KEY_PORT_TX_UPLINK};

constexpr Limit kTeamingUplinkLimit{"uplink name", sizeof(VSDVS_UplinkName) - 1};
constexpr Limit kOverrideLimit{"teaming override", VSDVS_TEAMING_OVERRIDE_SIZE - 1};

constexpr const char *kBalances[] = {"none",        "source-ip", "source-mac",
                                     "source-port", "explicit",  "port-load"};
constexpr const char *kModes[] = {"normal", "always"};

// The flags of a policy: bits of one of two words.
enum class FlagWord { Selection, Behaviour };
struct PolicyFlag {
    Option option;
    const char *key;
    const char *label;
    FlagWord word;
    uint32_t bit;
};
constexpr PolicyFlag kFlags[] = {
    {{"--link-state", nullptr, "an uplink is usable while its link is up"},
     "linkState",
     "link state",
     FlagWord::Selection,
     VSDVS_SELECT_LINK_STATE},
    {{"--beacon", nullptr, "an uplink is usable while its beacons arrive"},
     "beacon",
     "beacon",
     FlagWord::Selection,
     VSDVS_SELECT_BEACON_STATE},
    {{"--notify", nullptr, "notify the physical switch when the uplink changes"},
     "notify",
     "notify switch",
     FlagWord::Behaviour,
     VSDVS_BEHAVE_NOTIFY_SWITCH},
    {{"--rolling", nullptr, "stay on the new uplink when the old one is back"},
     "rolling",
     "rolling failover",
     FlagWord::Behaviour,
     VSDVS_BEHAVE_ROLLING_FAILOVER},
    {{"--best-effort", nullptr, "best effort on failure"},
     "bestEffort",
     "best effort",
     FlagWord::Behaviour,
     VSDVS_BEHAVE_BEST_EFFORT},
    {{"--shotgun", nullptr, "shotgun on failure"},
     "shotgun",
     "shotgun",
     FlagWord::Behaviour,
     VSDVS_BEHAVE_SHOTGUN},
};

// --- policies ---

// Appends the uplinks of a list to a policy and says how many they are.
uint32_t appendUplinks(VSDVS_TeamingPolicy &policy, uint32_t at, const std::vector<std::string> &uplinks) {
    for (size_t i = 0; i < uplinks.size(); i++)
        std::memcpy(policy.uplinks[at + i], uplinks[i].data(), uplinks[i].size());
    return static_cast<uint32_t>(uplinks.size());
}

VSDVS_TeamingPolicy givenPolicy(const Arguments &arguments) {
    VSDVS_TeamingPolicy policy{};
    policy.loadBalancing = VSDVS_BALANCE_SOURCE_PORT;
    if (arguments.given("--balance")) policy.loadBalancing = chosen(arguments, "--balance", kBalances);
    for (const PolicyFlag &flag : kFlags) {
        if (!arguments.given(flag.option.name)) continue;
        if (flag.word == FlagWord::Selection) policy.linkSelection |= flag.bit;
        if (flag.word == FlagWord::Behaviour) policy.linkBehaviour |= flag.bit;
    }

    std::vector<std::string> active;
    std::vector<std::string> standby;
    if (arguments.given("--active")) active = splitList(arguments.text("--active"));
    if (arguments.given("--standby")) standby = splitList(arguments.text("--standby"));
    if (active.size() + standby.size() > VSDVS_TEAMING_MAX_UPLINKS) {
        fail(Exit::Usage, "{} uplinks: active and standby together, at most {} fit",
             active.size() + standby.size(), VSDVS_TEAMING_MAX_UPLINKS);
    }
    std::unordered_set<std::string_view> seen;
    for (const auto *uplinks : {&active, &standby}) {
        for (const std::string &uplink : *uplinks) {
            requireFits(kTeamingUplinkLimit, uplink);
            if (!seen.insert(uplink).second) fail(Exit::Usage, "uplink {}: given twice", inQuotes(uplink));
        }
    }
    policy.activeCount = appendUplinks(policy, 0, active);
    policy.standbyCount = appendUplinks(policy, policy.activeCount, standby);
    return policy;
}

// Uplinks from first on; no more than the record has room for, whatever it counts.
Words uplinksOf(const VSDVS_TeamingPolicy &policy, uint32_t first, uint32_t count) {
    Words words;
    uint32_t room = VSDVS_TEAMING_MAX_UPLINKS - first;
    for (uint32_t i = 0; i < std::min(count, room); i++)
        words.words.push_back(boundedText(policy.uplinks[first + i], sizeof policy.uplinks[0]));
    return words;
}

void showPolicy(Output &out, const PolicyPlace &place, const VSDVS_TeamingPolicy &policy) {
    uint64_t uplinks = uint64_t{policy.activeCount} + policy.standbyCount;
    if (uplinks > VSDVS_TEAMING_MAX_UPLINKS) {
        complain("warning: the record counts {} uplinks and holds {}", uplinks, VSDVS_TEAMING_MAX_UPLINKS);
    }
    uint32_t firstStandby = std::min(policy.activeCount, VSDVS_TEAMING_MAX_UPLINKS);
    Record record(out);
    place.describe(record);
    record.field("balance", "balance", std::string_view(nameOf(kBalances, policy.loadBalancing)));
    record.field("active", "active", uplinksOf(policy, 0, policy.activeCount));
    record.field("standby", "standby", uplinksOf(policy, firstStandby, policy.standbyCount));
    for (const PolicyFlag &flag : kFlags) {
        uint32_t word = flag.word == FlagWord::Selection ? policy.linkSelection : policy.linkBehaviour;
        record.field(flag.key, flag.label, Flag{(word & flag.bit) != 0});
    }
    record.finish();
}

void get(const Arguments &arguments, Output &out) {
    PolicyPlace place(kTeaming, arguments);
    VSDVS_TeamingPolicy policy{};
    if (arguments.given("--by-id")) {
        place.requireRead(call<VSDVS_GetTeamingPolicyFromDVSID>(place.name(), &policy));
    } else {
        place.requireRead(call<VSDVS_GetTeamingPolicy>(place.name(), &policy));
    }
    showPolicy(out, place, policy);
}

// The word of a stored policy that nobody here knows is kept.
void keepWord(VSDVS_TeamingPolicy &policy, const PolicyPlace &place) {
    std::optional<Property> stored = place.stored();
    if (!stored || stored->value.size() != sizeof policy) return;
    uint32_t word = 0;
    std::memcpy(&word, &stored->value[offsetof(VSDVS_TeamingPolicy, word)], sizeof word);
    policy.word = word;
}

void set(const Arguments &arguments, Output &out) {
    VSDVS_TeamingPolicy policy = givenPolicy(arguments);
    PolicyPlace place(kTeaming, arguments);
    keepWord(policy, place);
    storePolicy(out, place, place.holds(bytesOf(policy)),
                [&] { return call<VSDVS_SetTeamingPolicy>(place.name(), &policy); });
}

void getPort(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPortTeaming, arguments);
    VSDVS_TeamingPolicy policy{};
    place.requireRead(call<VSDVS_GetPortTeamingPolicy>(place.name(), place.port(), &policy));
    showPolicy(out, place, policy);
}

void setPort(const Arguments &arguments, Output &out) {
    VSDVS_TeamingPolicy policy = givenPolicy(arguments);
    PolicyPlace place(kPortTeaming, arguments);
    keepWord(policy, place);
    storePolicy(out, place, place.holds(bytesOf(policy)),
                [&] { return call<VSDVS_SetPortTeamingPolicy>(place.name(), place.port(), &policy); });
}

// --- the name that overrides a port's policy ---

void getOverride(const Arguments &arguments, Output &out) {
    PolicyPlace place(kOverride, arguments);
    char name[VSDVS_TEAMING_OVERRIDE_SIZE];
    place.requireRead(call<VSDVS_GetPortTeamingOverride>(place.name(), place.port(), name));
    printValue(out, place, "override", std::string_view(name));
}

void setOverride(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("NAME");
    requireFits(kOverrideLimit, name);
    PolicyPlace place(kOverride, arguments);
    storePolicy(out, place, place.holdsText(name),
                [&] { return call<VSDVS_SetPortTeamingOverride>(place.name(), place.port(), name.c_str()); });
}

// --- the uplink of a port that transmits ---

void getTxUplink(const Arguments &arguments, Output &out) {
    PolicyPlace place(kTxUplink, arguments);
    uint8_t always = 0;
    require(call<VSDVS_GetTxUplinkAlways>(place.name(), place.port(), &always), place.named());
    printValue(out, place, "mode", std::string_view(kModes[always]));
}

void setTxUplink(const Arguments &arguments, Output &out) {
    uint32_t always = chosen(arguments, "MODE", kModes);
    PolicyPlace place(kTxUplink, arguments);
    storePolicy(out, place, place.holdsText(kModes[always]), [&] {
        return call<VSDVS_SetTxUplinkAlways>(place.name(), place.port(), static_cast<uint8_t>(always));
    });
}

constexpr Option kActive{"--active", "NAMES", "uplinks in use, by preference, with commas between"};
constexpr Option kStandby{"--standby", "NAMES", "uplinks in reserve, likewise"};
constexpr Option kBalance{"--balance", "NAME",
                          "none, source-ip, source-mac, source-port, explicit or port-load (source-port)"};
constexpr const char *kSetDetails =
    "The whole policy is replaced: what is not given is off. Active and standby uplinks together are at most "
    "32, their names at most 80 bytes long.";

const Command kRows[] = {
    {.words = "teaming get",
     .summary = "show the teaming policy of a switch",
     .arguments = {kSwitchArgument},
     .options = {kById},
     .example = "qvs teaming get sw1",
     .run = reads(get, touches<kTeaming>)},
    {.words = "teaming set",
     .summary = "store the teaming policy of a switch",
     .arguments = {kSwitchArgument},
     .options = {kActive, kStandby, kBalance, kFlags[0].option, kFlags[1].option, kFlags[2].option,
                 kFlags[3].option, kFlags[4].option, kFlags[5].option},
     .details = kSetDetails,
     .example = "qvs teaming set sw1 --active uplink0,uplink1 --link-state --notify",
     .run = writes(set, touches<kTeaming>)},
    {.words = "teaming clear",
     .summary = "remove the teaming policy of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs teaming clear sw1",
     .run = writes(clearBy<kTeaming, VSDVS_ClearTeamingPolicy>, touches<kTeaming>)},
    {.words = "port teaming get",
     .summary = "show the teaming policy of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port teaming get sw1 port0",
     .run = reads(getPort, touches<kPortTeaming>)},
    {.words = "port teaming set",
     .summary = "store the teaming policy of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {kActive, kStandby, kBalance, kFlags[0].option, kFlags[1].option, kFlags[2].option,
                 kFlags[3].option, kFlags[4].option, kFlags[5].option},
     .details = kSetDetails,
     .example = "qvs port teaming set sw1 port0 --active uplink1 --standby uplink0 --balance explicit",
     .run = writes(setPort, touches<kPortTeaming>)},
    {.words = "port teaming clear",
     .summary = "remove the teaming policy of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port teaming clear sw1 port0",
     .run = writes(clearBy<kPortTeaming, VSDVS_ClearPortTeamingPolicy>, touches<kPortTeaming>)},
    {.words = "port teaming-override get",
     .summary = "print the name of the policy that overrides a port's own",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port teaming-override get sw1 port0",
     .run = reads(getOverride, touches<kOverride>)},
    {.words = "port teaming-override set",
     .summary = "store the name of the policy that overrides a port's own",
     .arguments = {kSwitchArgument, kPortArgument, {"NAME", "name of the policy, at most 80 bytes"}},
     .example = "qvs port teaming-override set sw1 port0 storage",
     .run = writes(setOverride, touches<kOverride>)},
    {.words = "port teaming-override clear",
     .summary = "remove the name of the policy that overrides a port's own",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port teaming-override clear sw1 port0",
     .run = writes(clearBy<kOverride, VSDVS_ClearPortTeamingOverride>, touches<kOverride>)},
    {.words = "port tx-uplink get",
     .summary = "print whether a port always transmits through its uplink",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port tx-uplink get sw1 port0",
     .run = reads(getTxUplink, touches<kTxUplink>)},
    {.words = "port tx-uplink set",
     .summary = "store whether a port always transmits through its uplink",
     .arguments = {kSwitchArgument, kPortArgument, {"MODE", "always or normal"}},
     .example = "qvs port tx-uplink set sw1 port0 always",
     .run = writes(setTxUplink, touches<kTxUplink>)},
};

}  // namespace

const std::span<const Command> kTeamingCommands = kRows;

}  // namespace qvs::cli
