// SPDX-License-Identifier: Apache-2.0
// qvs mac-learning, port mac-learning, learn-static, overlay-cache, static-mac-allow: how MAC addresses are
// learned.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kLearning{"MAC learning", QVS_KEY_MAC_LEARNING, sizeof(VSDVS_MACLearning)};
constexpr Policy kPortLearning{"MAC learning", QVS_KEY_PORT_MAC_MANAGEMENT, sizeof(VSDVS_PortMACManagement)};
constexpr Policy kPortSecurity{"security", QVS_KEY_PORT_SECURITY};
constexpr Policy kLearnStatic{"learning of static addresses", QVS_KEY_LEARN_STATIC};
constexpr Policy kOverlayCache{"caching for the overlay", QVS_KEY_OVERLAY_CACHE};
constexpr Policy kStaticMacAllow{"acceptance of static addresses", QVS_KEY_STATIC_MAC_ALLOW};

constexpr const char *kLimitPolicies[] = {"allow", "deny"};

// Whether all of the options are given; at least one must be.
template <size_t Count>
bool allGiven(const Arguments &arguments, const char *const (&options)[Count]) {
    auto given = [&](const char *option) { return arguments.given(option); };
    if (std::none_of(options, options + Count, given))
        fail(Exit::Usage, "at least one of {} is needed", fmt::join(options, ", "));
    return std::all_of(options, options + Count, given);
}

// --- of a switch ---

uint32_t agingOf(const VSDVS_MACLearning &record) {
    const uint8_t *bytes = record.agingTime;
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8u | uint32_t{bytes[2]} << 16u;
}

VSDVS_MACLearning readLearning(const PolicyPlace &place) {
    VSDVS_MACLearning record{};
    place.requireRead(call<VSDVS_GetMACLearning>(place.name(), &record));
    return record;
}

void get(const Arguments &arguments, Output &out) {
    PolicyPlace place(kLearning, arguments);
    VSDVS_MACLearning learning = readLearning(place);
    Record record(out);
    place.describe(record);
    record.field("aging", "aging seconds", agingOf(learning));
    record.field("limit", "limit", uint32_t{learning.macLimit});
    record.field("stored", "stored", Flag{place.stored().has_value()});
    record.finish();
}

void set(const Arguments &arguments, Output &out) {
    bool all = allGiven(arguments, {"--aging", "--limit"});
    uint32_t aging = arguments.number("--aging", 0, 0, QVS_MAC_AGING_MAX);
    uint32_t limit = arguments.number("--limit", 0);
    PolicyPlace place(kLearning, arguments);
    VSDVS_MACLearning record{};
    // The byte that nobody knows is kept wherever there is one.
    if (!all || !place.malformed()) record = readLearning(place);
    if (arguments.given("--aging")) std::memcpy(record.agingTime, &aging, sizeof record.agingTime);
    if (agingOf(record) > QVS_MAC_AGING_MAX) {
        fail(Exit::Usage,
             "{}: the stored aging of {} seconds cannot be stored again, at most {} fit; give --aging",
             place.named(), agingOf(record), QVS_MAC_AGING_MAX);
    }
    if (arguments.given("--limit")) record.macLimit = limit;
    storePolicy(out, place, place.holds(bytesOf(record)),
                [&] { return call<VSDVS_SetMACLearning>(place.name(), &record); });
}

// --- of a port ---

VSDVS_PortMACLearning readPortLearning(const PolicyPlace &place) {
    VSDVS_PortMACLearning value{};
    place.requireRead(call<VSDVS_GetPortMACLearning>(place.name(), place.port(), &value));
    return value;
}

void getPort(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPortLearning, arguments);
    VSDVS_PortMACLearning learning = readPortLearning(place);
    Record record(out);
    place.describe(record);
    record.field("learning", "learning", Flag{learning.learning != 0, "on", "off"});
    record.field("flooding", "flooding", Flag{learning.flooding != 0, "on", "off"});
    record.field("limit", "limit", uint32_t{learning.macLimit});
    record.field("limitPolicy", "limit policy",
                 std::string_view(kLimitPolicies[learning.macLimitPolicy != 0 ? 1 : 0]));
    record.field("stored", "stored", Flag{place.stored().has_value()});
    record.finish();
}

// The record that the library stores has the port's security as it is now in it.
bool holdsPortLearning(const PolicyPlace &place, const VSDVS_PortMACLearning &value) {
    std::optional<uint32_t> security = findNumber(place.place(), kPortSecurity.key);
    VSDVS_PortMACManagement record{};
    record.macChange = security && (*security & VSDVS_SECURITY_DENY_MAC_CHANGE) == 0 ? 1 : 0;
    record.learning = value;
    return place.holds(bytesOf(record));
}

void setPort(const Arguments &arguments, Output &out) {
    bool all = allGiven(arguments, {"--learning", "--flooding", "--limit", "--limit-policy"});
    auto given = [&](const char *option, Names names, uint32_t absent) {
        return arguments.given(option) ? chosen(arguments, option, names) : absent;
    };
    PolicyPlace place(kPortLearning, arguments);
    VSDVS_PortMACLearning value{};
    if (!all) value = readPortLearning(place);
    value.learning = static_cast<uint8_t>(given("--learning", kOffOn, value.learning));
    value.flooding = static_cast<uint8_t>(given("--flooding", kOffOn, value.flooding));
    value.macLimit = arguments.number("--limit", value.macLimit);
    value.macLimitPolicy = given("--limit-policy", kLimitPolicies, value.macLimitPolicy);
    storePolicy(out, place, holdsPortLearning(place, value),
                [&] { return call<VSDVS_SetPortMACLearning>(place.name(), place.port(), &value); });
}

// The library has no clear for this one but the one of all properties.
void clearPort(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPortLearning, arguments);
    clearPolicy(out, place, [&] {
        return call<VSDVS_ClearPortProp>(place.name(), place.port(), kPortLearning.key, nullptr, uint8_t{1});
    });
}

// --- the three switches of a host ---

template <const Policy &policy, auto Read>
void getSwitch(const Arguments &arguments, Output &out) {
    PolicyPlace place(policy, arguments);
    uint8_t enabled = 0;
    require(call<Read>(place.name(), &enabled), place.named());
    printValue(out, place, "enabled", Flag{enabled != 0, "on", "off"});
}

// The library has no getter for this one.
void getOverlayCache(const Arguments &arguments, Output &out) {
    PolicyPlace place(kOverlayCache, arguments);
    std::optional<Property> stored = place.stored();
    printValue(out, place, "enabled", Flag{stored && stored->text() == "true", "on", "off"});
}

template <const Policy &policy, auto Store>
void setSwitch(const Arguments &arguments, Output &out) {
    uint32_t on = chosen(arguments, "STATE", kOffOn);
    PolicyPlace place(policy, arguments);
    storePolicy(out, place, place.holdsText(on != 0 ? "true" : "false"),
                [&] { return call<Store>(place.name(), static_cast<uint8_t>(on)); });
}

constexpr Argument kState{"STATE", "on or off"};

const Command kRows[] = {
    {.words = "mac-learning get",
     .summary = "show how long a switch keeps learned addresses on this host, and how many",
     .arguments = {kSwitchArgument},
     .details = "Never stored, it is 600 seconds and 65536 addresses.",
     .example = "qvs mac-learning get sw1",
     .run = reads(get, touches<kLearning>)},
    {.words = "mac-learning set",
     .summary = "store how long a switch keeps learned addresses on this host, and how many",
     .arguments = {kSwitchArgument},
     .options = {{"--aging", "SECONDS", "seconds after which an address is forgotten, at most 1000000"},
                 {"--limit", "N", "number of addresses, 32 bits"}},
     .details = "What is not given stays as it is.",
     .example = "qvs mac-learning set sw1 --aging 300 --limit 1024",
     .run = writes(set, touches<kLearning>)},
    {.words = "mac-learning clear",
     .summary = "go back to the default for learned addresses",
     .arguments = {kSwitchArgument},
     .example = "qvs mac-learning clear sw1",
     .run = writes(clearBy<kLearning, VSDVS_ClearMACLearning>, touches<kLearning>)},
    {.words = "port mac-learning get",
     .summary = "show how a port learns addresses",
     .arguments = {kSwitchArgument, kPortArgument},
     .details = "Never stored, it is off and off, 4096 addresses, allow.",
     .example = "qvs port mac-learning get sw1 port0",
     .run = reads(getPort, touches<kPortLearning>)},
    {.words = "port mac-learning set",
     .summary = "store how a port learns addresses",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{"--learning", "STATE", "on or off: learn the addresses behind the port"},
                 {"--flooding", "STATE", "on or off: let in frames for addresses nobody has learned"},
                 {"--limit", "N", "number of addresses, 32 bits"},
                 {"--limit-policy", "POLICY", "allow or deny frames from addresses beyond the limit"}},
     .details = "What is not given stays as it is. The record also notes whether the port's security allows "
                "another MAC address.",
     .example = "qvs port mac-learning set sw1 port0 --learning on --limit 128 --limit-policy deny",
     .run = writes(setPort, touches<kPortLearning, kPortSecurity>)},
    {.words = "port mac-learning clear",
     .summary = "go back to the default for how a port learns addresses",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port mac-learning clear sw1 port0",
     .run = writes(clearPort, touches<kPortLearning>)},
    {.words = "learn-static get",
     .summary = "print whether static addresses are learned on this host",
     .arguments = {kSwitchArgument},
     .details = "Never stored, it is off.",
     .example = "qvs learn-static get sw1",
     .run = reads(getSwitch<kLearnStatic, VSDVS_GetLearnStatic>, touches<kLearnStatic>)},
    {.words = "learn-static set",
     .summary = "store whether static addresses are learned on this host",
     .arguments = {kSwitchArgument, kState},
     .example = "qvs learn-static set sw1 on",
     .run = writes(setSwitch<kLearnStatic, VSDVS_SetLearnStatic>, touches<kLearnStatic>)},
    {.words = "learn-static clear",
     .summary = "no longer store whether static addresses are learned on this host",
     .arguments = {kSwitchArgument},
     .example = "qvs learn-static clear sw1",
     .run = writes(clearBy<kLearnStatic, VSDVS_ClearLearnStatic>, touches<kLearnStatic>)},
    {.words = "overlay-cache get",
     .summary = "print whether addresses are cached for the overlay on this host",
     .arguments = {kSwitchArgument},
     .details = "Never stored, it is off.",
     .example = "qvs overlay-cache get sw1",
     .run = reads(getOverlayCache, touches<kOverlayCache>)},
    {.words = "overlay-cache set",
     .summary = "store whether addresses are cached for the overlay on this host",
     .arguments = {kSwitchArgument, kState},
     .example = "qvs overlay-cache set sw1 on",
     .run = writes(setSwitch<kOverlayCache, VSDVS_SetCaching>, touches<kOverlayCache>)},
    {.words = "overlay-cache clear",
     .summary = "no longer store whether addresses are cached for the overlay on this host",
     .arguments = {kSwitchArgument},
     .example = "qvs overlay-cache clear sw1",
     .run = writes(clearBy<kOverlayCache, VSDVS_ClearCaching>, touches<kOverlayCache>)},
    {.words = "static-mac-allow get",
     .summary = "print whether static addresses are accepted on this host",
     .arguments = {kSwitchArgument},
     .details = "Never stored, it is off.",
     .example = "qvs static-mac-allow get sw1",
     .run = reads(getSwitch<kStaticMacAllow, VSDVS_GetStaticMACAllow>, touches<kStaticMacAllow>)},
    {.words = "static-mac-allow set",
     .summary = "store whether static addresses are accepted on this host",
     .arguments = {kSwitchArgument, kState},
     .example = "qvs static-mac-allow set sw1 on",
     .run = writes(setSwitch<kStaticMacAllow, VSDVS_SetStaticMACAllow>, touches<kStaticMacAllow>)},
    {.words = "static-mac-allow clear",
     .summary = "no longer store whether static addresses are accepted on this host",
     .arguments = {kSwitchArgument},
     .example = "qvs static-mac-allow clear sw1",
     .run = writes(clearBy<kStaticMacAllow, VSDVS_ClearStaticMACAllow>, touches<kStaticMacAllow>)},
};

}  // namespace

const std::span<const Command> kMacLearningCommands = kRows;

}  // namespace qvs::cli
