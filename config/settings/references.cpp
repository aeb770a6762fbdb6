// SPDX-License-Identifier: Apache-2.0
#include "config/settings/references.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "base/text.h"
#include "config/library/uplink_list.h"
#include "config/settings/codec.h"
#include "config/settings/families.h"
#include "config/settings/mirror_entity.h"

namespace qvs::config {
namespace {

using Missing = std::vector<std::string>;

Missing missingOfTeaming(const Value &value, const Existing &existing) {
    Missing missing;
    for (const char *member : {"active", "standby"}) {
        if (value[member].absent()) continue;
        for (const Value &name : value[member].list())
            if (!existing.uplink(name.text())) missing.push_back("uplink " + inQuotes(name.text()));
    }
    return missing;
}

Missing missingOfVlan(const Value &value, const Existing &existing) {
    const Value &isPrivate = value["private"];
    const Value &id = value["id"];
    if (isPrivate.absent() || !isPrivate.on() || id.absent() || existing.privateVlan(id.number())) return {};
    return {fmt::format("private VLAN {}", id.number())};
}

// Only entities of some types are names of ports or uplinks.
Missing missingOfSessions(const Value &value, const Existing &existing) {
    const std::span<const Member> members = kPortMirrorSessions.members[0].members;
    const auto type = std::ranges::find(members, std::string_view("type"), &Member::name);
    constexpr const char *kGroups[] = {"destinations", "sourcesIn", "sourcesOut"};
    Missing missing;
    for (const Value &session : value.list()) {
        for (size_t group = 0; group < std::size(kGroups); group++) {
            const Value &names = session[kGroups[group]];
            const uint32_t number = numberOf(type->words, session["type"]);
            if (names.absent() || formOf(group, number) != Form::Name) continue;
            for (const Value &name : names.list())
                if (!existing.port(name.text()) && !existing.uplink(name.text()))
                    missing.push_back("port or uplink " + inQuotes(name.text()));
        }
    }
    return missing;
}

struct Referrer {
    const Setting *setting;
    Missing (*missing)(const Value &value, const Existing &existing);
};
constexpr Referrer kReferrers[] = {
    {&kTeaming, missingOfTeaming},
    {&kPortTeaming, missingOfTeaming},
    {&kVlan, missingOfVlan},
    {&kUplinkMirrorSessions, missingOfSessions},
    {&kPortMirrorSessions, missingOfSessions},
};

const Referrer *referrerOf(const Setting &setting) {
    const auto *found = std::ranges::find(kReferrers, &setting, &Referrer::setting);
    return found == std::end(kReferrers) ? nullptr : found;
}

void addSettings(Missing &missing, const Place &place, const std::string &before, const Existing &existing) {
    for (const Referrer &referrer : kReferrers) {
        if (referrer.setting->scope != place.scope) continue;
        const StoredView stored = storedOf(*referrer.setting, place);
        if (!stored[0]) continue;
        const std::optional<Value> value = referrer.setting->decode(stored);
        if (value && !referrer.missing(*value, existing).empty())
            missing.push_back(before + referrer.setting->what);
    }
}

}  // namespace

Existing existingIn(DVSSwitch *sw) {
    const Place global{Scope::Global, sw, nullptr};
    std::set<std::string, std::less<>> uplinks;
    if (const std::optional<Property> stored = findProperty(global, QVS_KEY_UPLINK_NAMES)) {
        const UplinkNames names(stored->value);
        for (size_t i = 0; i < names.size(); i++)
            uplinks.emplace(names[i]);
    }
    return {
        .uplink = [uplinks = std::move(uplinks)](std::string_view name) { return uplinks.contains(name); },
        .port = [sw](std::string_view id) { return lookUpPort(sw, std::string(id)) != nullptr; },
        .privateVlan = [ids = privateVlansOf(sw)](uint64_t id) { return ids.contains(id); },
    };
}

std::set<uint64_t> privateVlansIn(const Value &map) {
    std::set<uint64_t> ids;
    for (const Value &entry : map.list())
        for (const char *member : {"primary", "secondary"})
            ids.insert(entry[member].number());
    return ids;
}

std::set<uint64_t> privateVlansOf(DVSSwitch *sw) {
    const StoredView stored = storedOf(kPrivateVlans, {Scope::Global, sw, nullptr});
    const std::optional<Value> map = stored[0] ? kPrivateVlans.decode(stored) : std::nullopt;
    return map ? privateVlansIn(*map) : std::set<uint64_t>();
}

bool isReferredTo(const Setting &setting) {
    return &setting == &kPrivateVlans;
}

bool refers(const Setting &setting) {
    return referrerOf(setting) != nullptr;
}

std::vector<std::string> missingReferences(const Setting &setting, const Value &value,
                                           const Existing &existing) {
    const Referrer *referrer = referrerOf(setting);
    return referrer == nullptr ? Missing{} : referrer->missing(value, existing);
}

std::string missingText(const std::vector<std::string> &missing) {
    return fmt::format("{} {} missing", fmt::join(missing, ", "), missing.size() == 1 ? "is" : "are");
}

std::vector<std::string> settingsThatMiss(DVSSwitch *sw, const Existing &existing) {
    Missing missing;
    addSettings(missing, {Scope::Global, sw, nullptr}, "", existing);
    addSettings(missing, {Scope::Host, sw, nullptr}, "", existing);
    forEachPort(sw, [&](DVSPort *port) {
        addSettings(missing, placeOf(port), fmt::format("port {}: ", inQuotes(DVS_PortId(port))), existing);
        return true;
    });
    return missing;
}

}  // namespace qvs::config
