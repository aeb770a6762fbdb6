// SPDX-License-Identifier: Apache-2.0
#include "config/settings/setting.h"

#include <qvs/keys.h>

#include <algorithm>
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

Value completedMember(const Member &member, const Value &value) {
    if (value.absent() && member.fallback != nullptr && !member.list)
        return parseScalar(member, member.fallback).value;
    if (value.absent() || member.type != Type::Record) return value;
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

}  // namespace

Value completed(const Setting &setting, const Value &value) {
    if (setting.isScalar()) return completedMember(setting.members[0], value);
    const Member record{.name = "", .summary = "", .type = Type::Record, .members = setting.members};
    return completedMember(record, value);
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
        &kPrivateVlans,
        // Of this host's part of a switch.
        &kMacLearning,
        &kLearnStatic,
        &kOverlayCache,
        &kStaticMacAllow,
        // Of a port.
        &kVlan,
        &kNestedVlan,
        &kPortMacLearning,
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
    for (size_t i = 0; i < kMostKeys; i++) {
        if (setting.keys[i] == nullptr) continue;
        std::optional<Property> property = findProperty(place, setting.keys[i]);
        if (property) stored[i] = property->value;
    }
    return stored;
}

std::optional<Value> expressed(const Setting &setting, const StoredView &stored, const Target &target) {
    std::optional<Value> value = setting.decode(stored);
    if (!value) return std::nullopt;
    const Stored again = setting.encode(*value, {}, target);
    for (size_t i = 0; i < kMostKeys; i++) {
        if (again[i].has_value() != stored[i].has_value()) return std::nullopt;
        if (stored[i] && !std::ranges::equal(*stored[i], *again[i])) return std::nullopt;
    }
    return value;
}

}  // namespace qvs::config
