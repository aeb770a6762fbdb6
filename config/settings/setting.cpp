// SPDX-License-Identifier: Apache-2.0
#include "config/settings/setting.h"

#include <qvs/keys.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>

#include "config/settings/families.h"

namespace qvs::config {
namespace {

// A key within its scope.
struct ScopedKey {
    Scope scope;
    std::string_view key;

    friend bool operator==(const ScopedKey &, const ScopedKey &) = default;
};
struct HashKey {
    size_t operator()(const ScopedKey &scoped) const {
        return std::hash<std::string_view>{}(scoped.key) * 3 + static_cast<size_t>(scoped.scope);
    }
};
template <typename Content>
using KeyMap = std::unordered_map<ScopedKey, Content, HashKey>;

KeyMap<const Setting *> settingsByKey() {
    KeyMap<const Setting *> map;
    for (const Setting *setting : settings())
        for (const char *key : setting->keys)
            if (key != nullptr) map.emplace(ScopedKey{setting->scope, key}, setting);
    return map;
}

KeyMap<uint32_t> classesByKey() {
    KeyMap<uint32_t> map;
#define QVS_ADD_KEY(key, scope, propType) map.emplace(ScopedKey{static_cast<Scope>(scope), key}, propType);
    QVS_KEYS(QVS_ADD_KEY)
#undef QVS_ADD_KEY
    return map;
}

// The words of a set that are given, in their order; and what is no word, for problemOf.
List ordered(const Member &member, const List &given) {
    List words;
    for (const char *word : member.words)
        if (std::ranges::find(given, Value(word)) != given.end()) words.emplace_back(word);
    std::ranges::copy_if(given, std::back_inserter(words), [&](const Value &each) {
        return std::ranges::find(member.words, each.text()) == member.words.end();
    });
    return words;
}

Value completedMember(const Member &member, const Value &value) {
    if (value.absent()) return member.type == Type::Record && !member.list ? value : fallbackOf(member);
    if (member.set) return ordered(member, value.list());
    if (member.type != Type::Record) return value;
    if (member.list) {
        List items;
        Member item = member;
        item.list = false;
        for (const Value &each : value.list())
            items.push_back(completedMember(item, each));
        return items;
    }
    Members all;
    for (const Member &each : member.members) {
        Value filled = completedMember(each, value[each.name]);
        if (!filled.absent()) all.push_back({each.name, std::move(filled)});
    }
    return all;
}

// A setting as one member.
Member asMember(const Setting &setting) {
    if (setting.isScalar()) return setting.members[0];
    return {.name = "", .summary = "", .type = Type::Record, .members = setting.members};
}

std::string problemOfMember(const Member &member, const Value &value);

std::string problemOfItems(const Member &member, const List &items) {
    if (items.size() > member.mostItems)
        return fmt::format("{} entries, at most {} fit", items.size(), member.mostItems);
    Member item = member;
    item.list = false;
    for (size_t i = 0; i < items.size(); i++) {
        std::string problem = problemOfMember(item, items[i]);
        if (!problem.empty()) return fmt::format("entry {}: {}", i + 1, problem);
    }
    return {};
}

std::string problemOfMember(const Member &member, const Value &value) {
    if (member.list) return problemOfItems(member, value.list());
    if (member.type != Type::Record) return problemOf(member, value);
    for (const Member &each : member.members) {
        const Value &content = value[each.name];
        if (content.absent() && !each.required) continue;
        std::string problem = content.absent() ? "is missing" : problemOfMember(each, content);
        if (!problem.empty()) return fmt::format("{}: {}", each.name, problem);
    }
    return {};
}

}  // namespace

Value completed(const Setting &setting, const Value &value) {
    Value all = completedMember(asMember(setting), value);
    return setting.canonical == nullptr || all.absent() ? all : setting.canonical(std::move(all));
}

std::string problemOf(const Setting &setting, const Value &value) {
    std::string problem = problemOfMember(asMember(setting), value);
    if (!problem.empty() || setting.problem == nullptr) return problem;
    return setting.problem(value);
}

Value fallbackOf(const Setting &setting) {
    return completed(setting, setting.isScalar() ? Value() : Value(Members{}));
}

StoredView viewOf(const Stored &stored) {
    StoredView view;
    std::transform(stored.begin(), stored.end(), view.begin(),
                   [](const auto &record) { return record ? std::optional<Bytes>(*record) : std::nullopt; });
    return view;
}

std::span<const Setting *const> settings() {
    static const Setting *const table[] = {
        // Of a switch on all hosts.
        &kMtu,
        &kPrivateVlans,
        &kTeaming,
        &kLsTeaming,
        &kMulticastMode,
        &kRcf,
        &kTeamCheck,
        &kVlanMtuCheck,
        &kDiscovery,
        // Of this host's part of a switch.
        &kUplinkMirrorSessions,
        &kMacLearning,
        &kLearnStatic,
        &kOverlayCache,
        &kStaticMacAllow,
        &kMulticastAddresses,
        // Of a port. Its security comes before what libqvs derives from it.
        &kVlan,
        &kNestedVlan,
        &kSecurity,
        &kFilter,
        &kPortTeaming,
        &kTeamingOverride,
        &kPortLsTeaming,
        &kTxUplink,
        &kPortMacLearning,
        &kPortMulticastAddresses,
        &kPortMirrorSessions,
        &kIpfix,
    };
    return table;
}

const Setting *settingNamed(Scope scope, std::string_view name) {
    for (const Setting *setting : settings())
        if (setting->scope == scope && setting->name == name) return setting;
    return nullptr;
}

const Setting *settingOfKey(Scope scope, std::string_view key) {
    static const KeyMap<const Setting *> map = settingsByKey();
    auto found = map.find({scope, key});
    return found == map.end() ? nullptr : found->second;
}

std::optional<uint32_t> classOfKey(Scope scope, std::string_view key) {
    static const KeyMap<uint32_t> map = classesByKey();
    auto found = map.find({scope, key});
    return found == map.end() ? std::nullopt : std::optional<uint32_t>(found->second);
}

StoredView storedOf(const Setting &setting, const Place &place) {
    StoredView stored;
    if (place.scope == Scope::Port ? place.port == nullptr : place.sw == nullptr) return stored;
    for (size_t i = 0; i < kMostKeys; i++) {
        if (setting.keys[i] == nullptr) continue;
        std::optional<Property> property = findProperty(place, setting.keys[i]);
        if (property) stored[i] = property->value;
    }
    return stored;
}

std::optional<Value> expressed(const Setting &setting, const StoredView &stored, const Target &target) {
    std::optional<Value> value = setting.decode(stored);
    if (!value || !problemOf(setting, *value).empty()) return std::nullopt;
    const Stored again = setting.encode(*value, {}, target);
    for (size_t i = 0; i < kMostKeys; i++) {
        const bool same = stored[i] ? again[i] && std::ranges::equal(*stored[i], *again[i]) : !again[i];
        if (!same) return std::nullopt;
    }
    return value;
}

}  // namespace qvs::config
