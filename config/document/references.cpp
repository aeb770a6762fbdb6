// SPDX-License-Identifier: Apache-2.0
#include "config/document/references.h"

#include <set>
#include <string>

#include "config/document/identity.h"
#include "config/document/quoting.h"
#include "config/settings/families.h"
#include "config/settings/references.h"

namespace qvs::config {
namespace {

// What a switch has once the document is carried out.
struct Merged {
    std::set<std::string_view> uplinks;
    std::set<std::string_view> ports;
    std::set<uint64_t> privateVlans;
};

void addPrivateVlans(Merged &merged, const Part &part) {
    const Value *map = part.find(kPrivateVlans);
    if (map == nullptr) return;
    for (const Value &entry : map->list())
        for (const char *member : {"primary", "secondary"})
            merged.privateVlans.insert(entry[member].number());
}

Merged mergedOf(const SwitchEntry *now, const SwitchEntry &wanted, bool prune) {
    Merged merged;
    const SwitchEntry none;
    const SwitchEntry &before = now == nullptr ? none : *now;
    const auto &uplinks = wanted.uplinks ? wanted.uplinks : before.uplinks;
    if (uplinks)
        for (const UplinkEntry &uplink : *uplinks) {
            merged.uplinks.insert(uplink.name);
            merged.ports.insert(uplink.port);
        }
    for (const PortEntry &port : wanted.ports)
        merged.ports.insert(port.id);
    addPrivateVlans(merged, wanted.global);
    if (prune) return merged;
    for (const PortEntry &port : before.ports)
        merged.ports.insert(port.id);
    if (wanted.global.find(kPrivateVlans) == nullptr) addPrivateVlans(merged, before.global);
    return merged;
}

}  // namespace

std::vector<Problem> danglingReferences(const Document &now, const Document &wanted, bool prune,
                                        std::string_view origin) {
    std::vector<Problem> problems;
    for (const SwitchEntry &entry : wanted.switches) {
        const Merged merged = mergedOf(now.findSwitch(entry.alias), entry, prune);
        const Existing existing = {
            .uplink = [&](std::string_view name) { return merged.uplinks.contains(name); },
            .port = [&](std::string_view id) { return merged.ports.contains(id); },
            .privateVlan = [&](uint64_t id) { return merged.privateVlans.contains(id); },
        };
        const std::string path = std::string(kSwitches) + '.' + documentText(entry.alias);
        const auto check = [&](const Part &part, const std::string &place) {
            for (const auto &[setting, value, mark] : part.settings)
                for (const std::string &missing : missingReferences(*setting, value, existing))
                    problems.push_back({std::string(origin), mark.line, mark.column,
                                        place + '.' + setting->name, missing + " does not exist"});
        };
        check(entry.global, path);
        check(entry.host, path + '.' + kHost);
        for (const PortEntry &port : entry.ports)
            check(port.part, path + '.' + kPorts + '.' + documentText(port.id));
    }
    return problems;
}

}  // namespace qvs::config
