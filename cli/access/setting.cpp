// SPDX-License-Identifier: Apache-2.0
#include "access/setting.h"

#include <algorithm>
#include <set>

#include "access/library.h"
#include "config/settings/references.h"
#include "tool/failure.h"

namespace qvs::cli {
namespace {

using config::Stored;
using config::StoredView;
using config::Target;

// The port is an option of commands whose setting the switch has, too.
const std::vector<std::string> &portsOf(const Arguments &arguments) {
    return arguments.all(arguments.given("--port") ? "--port" : "PORT");
}

void setPort(Target &target, const std::string &port) {
    target.port = port;
    requireFits(kPortIdLimit, port);
    target.place.port = findPort(target.place.sw, target.alias, port);
}

// Whether exactly these records are stored, with the classes of their keys.
bool holds(const Setting &setting, const Target &target, const Stored &records) {
    for (size_t i = 0; i < config::kMostKeys; i++) {
        if (setting.keys[i] == nullptr) continue;
        const std::optional<Property> now = findProperty(target.place, setting.keys[i]);
        if (now.has_value() != records[i].has_value()) return false;
        if (!now) continue;
        if (now->classes != config::classOfKey(setting.scope, setting.keys[i])) return false;
        if (!std::ranges::equal(now->value, *records[i])) return false;
    }
    return true;
}

// libqvs derives one record from another, so that a change of one of these touches both.
constexpr const Setting *kDerived[] = {&config::kSecurity, &config::kPortMacLearning};

void reportUsers(const std::string &alias, const std::string &removed, const std::vector<std::string> &users,
                 bool strict) {
    if (users.empty()) return;
    warnOrFail(strict, fmt::format("{}: {} is removed, but still named by: {}", named(alias), removed,
                                   fmt::join(users, ", ")));
}

}  // namespace

std::string named(const Arguments &arguments) {
    const std::string &alias = arguments.text("SWITCH");
    const bool port = arguments.given("--port") || arguments.given("PORT");
    return port ? named(alias, portsOf(arguments).front()) : named(alias);
}

Target targetOf(const Setting &setting, const Arguments &arguments) {
    Target target;
    target.alias = arguments.text("SWITCH");
    target.byId = arguments.given("--by-id");
    target.place.scope = setting.scope;
    if (target.byId) {
        requireFits(kSwitchIdLimit, target.alias);
        target.place.sw = findSwitchById(target.alias);
        return target;
    }
    target.place.sw = findVswitch(target.alias);
    if (setting.scope == Scope::Port) setPort(target, portsOf(arguments).front());
    return target;
}

std::vector<Target> targetsOf(const Setting &setting, const Arguments &arguments) {
    std::vector<Target> targets = {targetOf(setting, arguments)};
    if (setting.scope != Scope::Port) return targets;
    const std::vector<std::string> &ports = portsOf(arguments);
    for (size_t i = 1; i < ports.size(); i++) {
        if (std::find(ports.begin(), ports.begin() + static_cast<long>(i), ports[i]) !=
            ports.begin() + static_cast<long>(i))
            fail(Exit::Usage, "port {}: given twice", inQuotes(ports[i]));
        setPort(targets.emplace_back(targets[0]), ports[i]);
    }
    return targets;
}

std::string namedSetting(const Setting &setting, const Target &target) {
    return fmt::format("{}: {}", target.named(), setting.what);
}

bool isStored(const StoredView &stored) {
    return std::ranges::any_of(stored, [](const auto &record) { return record.has_value(); });
}

std::optional<Value> storedValue(const Setting &setting, const Target &target) {
    const StoredView stored = storedOf(setting, target.place);
    if (!isStored(stored)) return std::nullopt;
    std::optional<Value> value = setting.decode(stored);
    if (value) return completed(setting, *value);
    const size_t at = stored[0] ? 0 : 1;
    fail(Exit::Failed,
         "{}: the members cannot express the {} bytes that are stored as {}; 'qvs {} set' {}replaces them",
         namedSetting(setting, target), stored[at]->size(), setting.keys[at], setting.noun,
         setting.isScalar() ? "" : "with --reset ");
}

bool storeSetting(const Setting &setting, const Target &target, const Value &value) {
    const Stored records = setting.encode(value, storedOf(setting, target.place), target);
    bool changed = !holds(setting, target, records);
    if (!changed && !setting.storesMore) return false;
    if (!changed) changed = setting.read(target) != value;
    const HYP_ReturnStatus status = setting.store(target, records);
    // Another process may have removed it in the meantime.
    if (status == HYP_NOT_FOUND && !isStored(config::viewOf(records))) return false;
    require(status, namedSetting(setting, target));
    return changed;
}

bool clearSetting(const Setting &setting, const Target &target) {
    if (!isStored(storedOf(setting, target.place))) return false;
    if (setting.clearStores && holds(setting, target, setting.encode(fallbackOf(setting), {}, target)))
        return false;
    const HYP_ReturnStatus status = setting.clear(target);
    if (status == HYP_NOT_FOUND) return false;
    require(status, namedSetting(setting, target));
    return true;
}

void warnOrFail(bool strict, const std::string &message) {
    if (strict) fail(Exit::Failed, "{}", message);
    warn("{}", message);
}

void checkReferences(const Setting &setting, const Target &target, const Value &value, bool strict) {
    if (!config::refers(setting)) return;
    // The switch of a port is not in its place.
    const std::vector<std::string> missing =
        config::missingReferences(setting, value, config::existingIn(findVswitch(target.alias)));
    if (missing.empty()) return;
    warnOrFail(strict, fmt::format("{}: {}", namedSetting(setting, target), config::missingText(missing)));
}

void checkUsers(DVSSwitch *sw, const std::string &alias, const std::vector<std::string> &names, bool strict) {
    const auto stays = [&](std::string_view name) { return std::ranges::find(names, name) == names.end(); };
    const auto exists = [](uint64_t) { return true; };
    std::vector<std::string> users = config::settingsThatMiss(sw, {stays, stays, exists});
    // What a port has goes with it.
    for (const std::string &name : names)
        std::erase_if(users, [&](const std::string &user) {
            return user.starts_with(fmt::format("port {}: ", inQuotes(name)));
        });
    reportUsers(alias, fmt::to_string(fmt::join(names, ", ")), users, strict);
}

void checkUsers(const Setting &setting, const Target &target, const Value &after, bool strict) {
    if (!config::isReferredTo(setting)) return;
    DVSSwitch *sw = findVswitch(target.alias);
    std::set<uint64_t> removed = config::privateVlansOf(sw);
    if (!after.absent())
        std::erase_if(removed,
                      [kept = config::privateVlansIn(after)](uint64_t id) { return kept.contains(id); });
    const auto exists = [](std::string_view) { return true; };
    const auto stays = [&](uint64_t id) { return !removed.contains(id); };
    reportUsers(target.alias, fmt::format("private VLAN {}", fmt::join(removed, ", ")),
                config::settingsThatMiss(sw, {exists, exists, stays}), strict);
}

void describe(Record &record, const Target &target) {
    record.field("switch", "switch", target.alias);
    if (!target.port.empty()) record.field("port", "port", target.port);
}

void reportSetting(Output &out, const Target &target, bool changed) {
    if (target.port.empty()) return reportSwitch(out, target.alias, changed);
    reportPort(out, target.alias, target.port, changed);
}

std::vector<std::string> touchedSettings(const Arguments &arguments,
                                         std::initializer_list<const Setting *> settings) {
    // With --by-id the alias is not known, so that the command may touch any switch.
    if (arguments.given("--by-id")) return {touchedPath({})};
    const std::string &name = arguments.text("SWITCH");
    std::vector<std::string> paths;
    auto add = [&](const Setting &setting) {
        for (const char *key : setting.keys) {
            if (key == nullptr) continue;
            if (setting.scope == Scope::Port) {
                for (const std::string &port : portsOf(arguments))
                    paths.push_back(touchedPath({name, "port", port, key}));
            } else {
                paths.push_back(touchedPath({name, setting.scope == Scope::Host ? "host" : "global", key}));
            }
        }
    };
    for (const Setting *setting : settings) {
        const bool derived = std::ranges::find(kDerived, setting) != std::end(kDerived);
        if (!derived) add(*setting);
        if (derived) std::ranges::for_each(kDerived, [&](const Setting *each) { add(*each); });
    }
    return paths;
}

}  // namespace qvs::cli
