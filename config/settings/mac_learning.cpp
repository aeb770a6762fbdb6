// SPDX-License-Identifier: Apache-2.0
// MAC learning: of a switch on this host, of its ports, and the three options of static and overlay
// addresses.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <cstring>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- of a switch ---

constexpr Member kMembers[] = {
    {.name = "aging",
     .summary = "time after which a learned address expires",
     .type = Type::Number,
     .most = QVS_MAC_AGING_MAX,
     .unit = "seconds",
     .fallback = "600"},
    {.name = "limit",
     .summary = "number of addresses that are learned at most",
     .type = Type::Number,
     .fallback = "65536"},
};

uint32_t agingOf(const VSDVS_MACLearning &record) {
    uint32_t aging = 0;
    std::memcpy(&aging, record.agingTime, sizeof record.agingTime);
    return aging;
}

Value valueOf(const VSDVS_MACLearning &record) {
    return Members{{"aging", uint64_t{agingOf(record)}}, {"limit", uint64_t{record.macLimit}}};
}

std::optional<Value> decode(const StoredView &stored) {
    const auto record = recordOf<VSDVS_MACLearning>(stored[0]);
    if (!record || agingOf(*record) > QVS_MAC_AGING_MAX) return std::nullopt;
    return valueOf(*record);
}

Stored encode(const Value &value, const StoredView &now, const Target &) {
    VSDVS_MACLearning record{};
    if (const auto old = recordOf<VSDVS_MACLearning>(now[0])) record.reserved = old->reserved;
    const auto aging = static_cast<uint32_t>(value["aging"].number());
    std::memcpy(record.agingTime, &aging, sizeof record.agingTime);
    record.macLimit = static_cast<uint32_t>(value["limit"].number());
    return {blobOf(record)};
}

std::optional<Value> read(const Target &target) {
    VSDVS_MACLearning record{};
    if (!wasRead(kMacLearning, target, call<VSDVS_GetMACLearning>(target.alias.c_str(), &record)))
        return std::nullopt;
    return valueOf(record);
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return call<VSDVS_SetMACLearning>(target.alias.c_str(), records[0]->data());
}

// --- of a port ---

constexpr const char *kLimitPolicies[] = {"allow", "deny"};
constexpr Member kPortMembers[] = {
    {.name = "learning",
     .summary = "learn the addresses behind the port",
     .type = Type::Boolean,
     .fallback = "off"},
    {.name = "flooding",
     .summary = "deliver frames to unknown addresses",
     .type = Type::Boolean,
     .fallback = "off"},
    {.name = "limit",
     .summary = "number of addresses that are learned at most",
     .type = Type::Number,
     .fallback = "4096"},
    {.name = "limitPolicy",
     .summary = "frames from addresses beyond the limit",
     .type = Type::Word,
     .words = kLimitPolicies,
     .fallback = "allow"},
};

Value portValueOf(const VSDVS_PortMACLearning &learning) {
    return Members{{"learning", learning.learning != 0},
                   {"flooding", learning.flooding != 0},
                   {"limit", uint64_t{learning.macLimit}},
                   {"limitPolicy", kLimitPolicies[learning.macLimitPolicy != 0 ? 1 : 0]}};
}

std::optional<Value> decodePort(const StoredView &stored) {
    const auto record = recordOf<VSDVS_PortMACManagement>(stored[0]);
    if (!record) return std::nullopt;
    return portValueOf(record->learning);
}

// libqvs stores beside the settings whether the port's security allows another MAC address.
bool allowsMacChange(const Target &target) {
    if (target.place.port == nullptr) return false;
    const std::optional<uint32_t> security = findNumber(target.place, QVS_KEY_PORT_SECURITY);
    return security && (*security & VSDVS_SECURITY_DENY_MAC_CHANGE) == 0;
}

Stored encodePort(const Value &value, const StoredView &, const Target &target) {
    VSDVS_PortMACManagement record{};
    record.macChange = allowsMacChange(target) ? 1 : 0;
    record.learning.learning = value["learning"].on() ? 1 : 0;
    record.learning.flooding = value["flooding"].on() ? 1 : 0;
    record.learning.macLimit = static_cast<uint32_t>(value["limit"].number());
    record.learning.macLimitPolicy = value["limitPolicy"].text() == kLimitPolicies[1] ? 1 : 0;
    return {blobOf(record)};
}

std::optional<Value> readPort(const Target &target) {
    VSDVS_PortMACLearning learning{};
    if (!wasRead(kPortMacLearning, target,
                 call<VSDVS_GetPortMACLearning>(target.alias.c_str(), target.port.c_str(), &learning)))
        return std::nullopt;
    return portValueOf(learning);
}

HYP_ReturnStatus storePort(const Target &target, const Stored &records) {
    VSDVS_PortMACManagement record;
    std::memcpy(&record, records[0]->data(), sizeof record);
    return call<VSDVS_SetPortMACLearning>(target.alias.c_str(), target.port.c_str(), &record.learning);
}

// --- options of this host ---

constexpr Member kEnabled[] = {
    {.name = "", .summary = "whether it is enabled", .type = Type::Boolean, .fallback = "off"}};

template <const Setting &setting, auto Get>
std::optional<Value> readOption(const Target &target) {
    uint8_t enabled = 0;
    require(call<Get>(target.alias.c_str(), &enabled), fmt::format("{}: {}", target.named(), setting.what));
    return enabled != 0;
}

// libqvs has no getter for this one.
std::optional<Value> readOverlayCache(const Target &target) {
    const StoredView stored = storedOf(kOverlayCache, target.place);
    return textOf(stored[0]) == "true";
}

template <auto Set>
HYP_ReturnStatus storeOption(const Target &target, const Stored &records) {
    const bool on = decodeTrueFalse(viewOf(records))->on();
    return call<Set>(target.alias.c_str(), static_cast<uint8_t>(on ? 1 : 0));
}

}  // namespace

const Setting kMacLearning = {
    .name = "macLearning",
    .noun = "mac-learning",
    .what = "MAC learning",
    .summary = "how long learned addresses are kept on this host, and how many",
    .scope = Scope::Host,
    .keys = {QVS_KEY_MAC_LEARNING},
    .members = kMembers,
    .example = "--aging 300 --limit 1024",
    .details = "The default is 600 seconds and 65536 addresses.",
    .decode = decode,
    .encode = encode,
    .read = read,
    .store = store,
    .clear = clearSwitch<VSDVS_ClearMACLearning>,
};

const Setting kPortMacLearning = {
    .name = "macLearning",
    .noun = "port mac-learning",
    .what = "MAC learning",
    .summary = "how a port learns addresses",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_MAC_MANAGEMENT},
    .members = kPortMembers,
    .example = "--learning on --limit 128 --limit-policy deny",
    .details =
        "By default, learning and flooding are off, and frames beyond 4096 addresses are allowed. The record "
        "also notes whether the security of the port allows it to change its MAC address.",
    .repeats = &kSecurity,
    .decode = decodePort,
    .encode = encodePort,
    .read = readPort,
    .store = storePort,
    .clear = clearKey<kPortMacLearning>,
};

const Setting kLearnStatic = {
    .name = "learnStatic",
    .noun = "learn-static",
    .what = "learning of static addresses",
    .summary = "whether static addresses are learned on this host",
    .scope = Scope::Host,
    .keys = {QVS_KEY_LEARN_STATIC},
    .members = kEnabled,
    .example = "on",
    .details = "The default is off.",
    .decode = decodeTrueFalse,
    .encode = encodeTrueFalse,
    .read = readOption<kLearnStatic, VSDVS_GetLearnStatic>,
    .store = storeOption<VSDVS_SetLearnStatic>,
    .clear = clearSwitch<VSDVS_ClearLearnStatic>,
};

const Setting kOverlayCache = {
    .name = "overlayCache",
    .noun = "overlay-cache",
    .what = "caching for the overlay",
    .summary = "whether addresses are cached for the overlay on this host",
    .scope = Scope::Host,
    .keys = {QVS_KEY_OVERLAY_CACHE},
    .members = kEnabled,
    .example = "on",
    .details = "The default is off.",
    .decode = decodeTrueFalse,
    .encode = encodeTrueFalse,
    .read = readOverlayCache,
    .store = storeOption<VSDVS_SetCaching>,
    .clear = clearSwitch<VSDVS_ClearCaching>,
};

const Setting kStaticMacAllow = {
    .name = "staticMacAllow",
    .noun = "static-mac-allow",
    .what = "acceptance of static addresses",
    .summary = "whether static addresses are accepted on this host",
    .scope = Scope::Host,
    .keys = {QVS_KEY_STATIC_MAC_ALLOW},
    .members = kEnabled,
    .example = "on",
    .details = "The default is off.",
    .decode = decodeTrueFalse,
    .encode = encodeTrueFalse,
    .read = readOption<kStaticMacAllow, VSDVS_GetStaticMACAllow>,
    .store = storeOption<VSDVS_SetStaticMACAllow>,
    .clear = clearSwitch<VSDVS_ClearStaticMACAllow>,
};

}  // namespace qvs::config
