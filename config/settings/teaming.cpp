// SPDX-License-Identifier: Apache-2.0
// How traffic is spread over the uplinks: of a switch, of a port, the name of an overriding policy, and the
// uplink that a port transmits through.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_set>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- policies of switches and ports ---

constexpr const char *kBalances[] = {"none",        "source-ip", "source-mac",
                                     "source-port", "explicit",  "port-load"};
constexpr Member flagMember(const char *name, const char *summary) {
    return {.name = name, .summary = summary, .type = Type::Boolean, .fallback = "off"};
}
constexpr Member uplinksMember(const char *name, const char *summary) {
    return {.name = name,
            .summary = summary,
            .type = Type::Text,
            .list = true,
            .least = 1,
            .most = sizeof(VSDVS_UplinkName) - 1,
            .mostItems = VSDVS_TEAMING_MAX_UPLINKS,
            .fallback = ""};
}
constexpr Member kMembers[] = {
    {.name = "balance",
     .summary = "how an uplink is chosen",
     .type = Type::Word,
     .words = kBalances,
     .fallback = "source-port"},
    uplinksMember("active", "uplinks in use, by preference"),
    uplinksMember("standby", "uplinks in reserve, by preference"),
    flagMember("linkState", "an uplink is usable while its link is up"),
    flagMember("beacon", "an uplink is usable while its beacons arrive"),
    flagMember("notify", "notify the physical switch when the uplink changes"),
    flagMember("rolling", "stay on the new uplink when the old one is back"),
    flagMember("bestEffort", "best effort on failure"),
    flagMember("shotgun", "shotgun on failure"),
};

// The members that are bits of one of the two words of flags, which are packed and have no pointers.
enum FlagWord : size_t { Selection, Behaviour };
using FlagWords = std::array<uint32_t, 2>;
struct PolicyFlag {
    const char *name;
    FlagWord word;
    uint32_t bit;
};
constexpr PolicyFlag kFlags[] = {
    {"linkState", Selection, VSDVS_SELECT_LINK_STATE},
    {"beacon", Selection, VSDVS_SELECT_BEACON_STATE},
    {"notify", Behaviour, VSDVS_BEHAVE_NOTIFY_SWITCH},
    {"rolling", Behaviour, VSDVS_BEHAVE_ROLLING_FAILOVER},
    {"bestEffort", Behaviour, VSDVS_BEHAVE_BEST_EFFORT},
    {"shotgun", Behaviour, VSDVS_BEHAVE_SHOTGUN},
};

// Uplinks from `first` on; no more than the record has room for, whatever it counts.
List uplinksOf(const VSDVS_TeamingPolicy &policy, uint32_t first, uint32_t count) {
    List uplinks;
    first = std::min(first, VSDVS_TEAMING_MAX_UPLINKS);
    for (uint32_t i = first; i < first + std::min(count, VSDVS_TEAMING_MAX_UPLINKS - first); i++)
        uplinks.emplace_back(boundedText(policy.uplinks[i], sizeof policy.uplinks[i]));
    return uplinks;
}

Value valueOf(const VSDVS_TeamingPolicy &policy) {
    Value value = Members{{"balance", wordOf(kBalances, policy.loadBalancing)},
                          {"active", uplinksOf(policy, 0, policy.activeCount)},
                          {"standby", uplinksOf(policy, policy.activeCount, policy.standbyCount)}};
    const FlagWords words = {policy.linkSelection, policy.linkBehaviour};
    for (const PolicyFlag &flag : kFlags)
        value.set(flag.name, (words[flag.word] & flag.bit) != 0);
    return value;
}

// Whether each bit of the flags is one of a member.
bool flagsKnown(const VSDVS_TeamingPolicy &policy) {
    FlagWords words = {policy.linkSelection, policy.linkBehaviour};
    for (const PolicyFlag &flag : kFlags)
        words[flag.word] &= ~flag.bit;
    return words == FlagWords{};
}

template <const Setting &setting>
std::optional<Value> decode(const StoredView &stored) {
    const auto policy = recordOf<VSDVS_TeamingPolicy>(stored[0]);
    if (!policy || !flagsKnown(*policy)) return std::nullopt;
    if (uint64_t{policy->activeCount} + policy->standbyCount > VSDVS_TEAMING_MAX_UPLINKS) return std::nullopt;
    return ifTaken(setting, valueOf(*policy));
}

std::string problemOfPolicy(const Value &value) {
    const size_t count = value["active"].list().size() + value["standby"].list().size();
    if (count > VSDVS_TEAMING_MAX_UPLINKS)
        return fmt::format("active and standby: {} uplinks together, at most {} fit", count,
                           VSDVS_TEAMING_MAX_UPLINKS);
    std::unordered_set<std::string_view> seen;
    for (const char *member : {"active", "standby"})
        for (const Value &uplink : value[member].list())
            if (!seen.insert(uplink.text()).second)
                return fmt::format("uplink {} is given twice", inQuotes(uplink.text()));
    return {};
}

// Appends uplinks to a policy and returns how many they are.
uint32_t appendUplinks(VSDVS_TeamingPolicy &policy, uint32_t at, const Value &uplinks) {
    for (const Value &uplink : uplinks.list())
        std::ranges::copy(uplink.text(), policy.uplinks[at++]);
    return static_cast<uint32_t>(uplinks.list().size());
}

Stored encode(const Value &value, const StoredView &now, const Target &) {
    VSDVS_TeamingPolicy policy{};
    if (const auto old = recordOf<VSDVS_TeamingPolicy>(now[0])) policy.word = old->word;
    policy.loadBalancing = numberOf(kBalances, value["balance"]);
    FlagWords words{};
    for (const PolicyFlag &flag : kFlags)
        if (value[flag.name].on()) words[flag.word] |= flag.bit;
    policy.linkSelection = words[Selection];
    policy.linkBehaviour = words[Behaviour];
    policy.activeCount = appendUplinks(policy, 0, value["active"]);
    policy.standbyCount = appendUplinks(policy, policy.activeCount, value["standby"]);
    return {blobOf(policy)};
}

Value shownPolicy(const VSDVS_TeamingPolicy &policy) {
    const uint64_t uplinks = uint64_t{policy.activeCount} + policy.standbyCount;
    if (uplinks > VSDVS_TEAMING_MAX_UPLINKS)
        warn("the record counts {} uplinks and holds {}", uplinks, VSDVS_TEAMING_MAX_UPLINKS);
    return valueOf(policy);
}

std::optional<Value> read(const Target &target) {
    VSDVS_TeamingPolicy policy{};
    const char *name = target.alias.c_str();
    const HYP_ReturnStatus status = target.byId ? call<VSDVS_GetTeamingPolicyFromDVSID>(name, &policy)
                                                : call<VSDVS_GetTeamingPolicy>(name, &policy);
    if (!wasRead(kTeaming, target, status)) return std::nullopt;
    return shownPolicy(policy);
}

std::optional<Value> readPort(const Target &target) {
    VSDVS_TeamingPolicy policy{};
    if (!wasRead(kPortTeaming, target,
                 call<VSDVS_GetPortTeamingPolicy>(target.alias.c_str(), target.port.c_str(), &policy)))
        return std::nullopt;
    return shownPolicy(policy);
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return call<VSDVS_SetTeamingPolicy>(target.alias.c_str(), records[0]->data());
}

HYP_ReturnStatus storePort(const Target &target, const Stored &records) {
    return call<VSDVS_SetPortTeamingPolicy>(target.alias.c_str(), target.port.c_str(), records[0]->data());
}

// --- the name that overrides a port's policy ---

constexpr Member kOverride[] = {{.name = "",
                                 .summary = "name of the policy",
                                 .type = Type::Text,
                                 .least = 1,
                                 .most = VSDVS_TEAMING_OVERRIDE_SIZE - 1}};

std::optional<Value> readOverride(const Target &target) {
    char name[VSDVS_TEAMING_OVERRIDE_SIZE] = {};
    if (!wasRead(kTeamingOverride, target,
                 call<VSDVS_GetPortTeamingOverride>(target.alias.c_str(), target.port.c_str(), name)))
        return std::nullopt;
    return Value(std::string_view(name));
}

// --- the uplink of a port that transmits ---

constexpr const char *kModes[] = {"normal", "always"};
constexpr Member kTxMode[] = {{.name = "",
                               .summary = "whether the port always transmits through its uplink",
                               .type = Type::Word,
                               .words = kModes}};

std::optional<Value> readTxUplink(const Target &target) {
    uint8_t always = 0;
    if (!wasRead(kTxUplink, target,
                 call<VSDVS_GetTxUplinkAlways>(target.alias.c_str(), target.port.c_str(), &always)))
        return std::nullopt;
    return Value(kModes[always != 0 ? 1 : 0]);
}

HYP_ReturnStatus storeTxUplink(const Target &target, const Stored &records) {
    const uint32_t always = numberOf(kModes, *textOf(viewOf(records)[0]));
    return call<VSDVS_SetTxUplinkAlways>(target.alias.c_str(), target.port.c_str(),
                                         static_cast<uint8_t>(always));
}

constexpr const char *kDetails =
    "Active and standby uplinks together are at most 32, and each is named once.";

}  // namespace

const Setting kTeaming = {
    .name = "teaming",
    .noun = "teaming",
    .what = "teaming policy",
    .summary = "how a switch spreads traffic over its uplinks",
    .scope = Scope::Global,
    .keys = {QVS_KEY_TEAMING},
    .members = kMembers,
    .example = "--active uplink0,uplink1 --link-state on --notify on",
    .details = kDetails,
    .problem = problemOfPolicy,
    .decode = decode<kTeaming>,
    .encode = encode,
    .read = read,
    .store = store,
    .clear = clearSwitch<VSDVS_ClearTeamingPolicy>,
    .readsById = true,
};

const Setting kPortTeaming = {
    .name = "teaming",
    .noun = "port teaming",
    .what = "teaming policy",
    .summary = "how a port spreads traffic over the uplinks",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_TEAMING},
    .members = kMembers,
    .example = "--active uplink1 --standby uplink0 --balance explicit",
    .details = kDetails,
    .problem = problemOfPolicy,
    .decode = decode<kPortTeaming>,
    .encode = encode,
    .read = readPort,
    .store = storePort,
    .clear = clearPort<VSDVS_ClearPortTeamingPolicy>,
};

const Setting kTeamingOverride = {
    .name = "teamingOverride",
    .noun = "port teaming-override",
    .what = "teaming override",
    .summary = "the name of the policy that overrides a port's own",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_TEAMING_OVERRIDE},
    .members = kOverride,
    .example = "storage",
    .content = "override",
    .decode = decodeText<kTeamingOverride>,
    .encode = encodeText,
    .read = readOverride,
    .store = storeText<VSDVS_SetPortTeamingOverride>,
    .clear = clearPort<VSDVS_ClearPortTeamingOverride>,
};

const Setting kTxUplink = {
    .name = "txUplink",
    .noun = "port tx-uplink",
    .what = "transmit uplink mode",
    .summary = "whether a port always transmits through its uplink",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_TX_UPLINK},
    .members = kTxMode,
    .example = "always",
    .content = "mode",
    .decode = decodeText<kTxUplink>,
    .encode = encodeText,
    .read = readTxUplink,
    .store = storeTxUplink,
    .clear = clearKey<kTxUplink>,
};

}  // namespace qvs::config
