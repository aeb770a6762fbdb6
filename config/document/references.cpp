// SPDX-License-Identifier: Apache-2.0
#include "config/document/references.h"

#include <fmt/format.h>
#include <qvs/keys.h>

#include <algorithm>
#include <iterator>
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
    if (const Value *map = part.find(kPrivateVlans)) merged.privateVlans.merge(privateVlansIn(*map));
}

bool carriesUplink(const SwitchEntry &entry, std::string_view port) {
    return entry.uplinks &&
           std::ranges::find(*entry.uplinks, port, &UplinkEntry::port) != entry.uplinks->end();
}

Merged mergedOf(const SwitchEntry &before, const SwitchEntry &wanted, bool prune) {
    Merged merged;
    merged.ports = wanted.portIds();
    const auto &uplinks = wanted.uplinks ? wanted.uplinks : before.uplinks;
    if (uplinks)
        for (const UplinkEntry &uplink : *uplinks) {
            merged.uplinks.insert(uplink.name);
            merged.ports.insert(uplink.port);
        }
    addPrivateVlans(merged, wanted.global);
    if (prune) return merged;
    for (const PortEntry &port : before.ports)
        if (!wanted.uplinks || !carriesUplink(before, port.id)) merged.ports.insert(port.id);
    if (!wanted.global.names(kPrivateVlans)) addPrivateVlans(merged, before.global);
    return merged;
}

Existing existingOf(const Merged &merged) {
    return {
        .uplink = [&](std::string_view name) { return merged.uplinks.contains(name); },
        .port = [&](std::string_view id) { return merged.ports.contains(id); },
        .privateVlan = [&](uint64_t id) { return merged.privateVlans.contains(id); },
    };
}

// Checks one switch.
class References {
  public:
    References(const SwitchEntry &before, const SwitchEntry &wanted, bool prune, std::string_view origin)
        : before_(before),
          wanted_(wanted),
          prune_(prune),
          origin_(origin),
          had_(mergedOf(before, {}, false)),
          has_(mergedOf(before, wanted, prune)) {}

    std::vector<Problem> run() {
        const std::string path = std::string(kSwitches) + '.' + documentText(wanted_.alias);
        const auto pathOf = [&](const PortEntry &port) {
            return path + '.' + kPorts + '.' + documentText(port.id);
        };
        checkNamed(wanted_.global, path);
        checkNamed(wanted_.host, path + '.' + kHost);
        for (const PortEntry &port : wanted_.ports)
            checkNamed(port.part, pathOf(port));
        if (prune_ || wanted_.hidesSettings) return std::move(problems_);
        checkStored(before_.global, wanted_.global, path);
        checkStored(before_.host, wanted_.host, path + '.' + kHost);
        const Part none;
        for (const PortEntry &port : before_.ports) {
            // What a port has goes with it.
            if (!has_.ports.contains(port.id)) continue;
            const PortEntry *named = wanted_.findPort(port.id);
            checkStored(port.part, named == nullptr ? none : named->part, pathOf(port));
        }
        return std::move(problems_);
    }

  private:
    void add(Mark mark, const std::string &place, const Setting &setting, std::string text) {
        problems_.push_back(
            {std::string(origin_), mark.line, mark.column, place + '.' + setting.name, std::move(text)});
    }

    void checkNamed(const Part &part, const std::string &place) {
        for (const auto &[setting, value, mark] : part.settings) {
            if (!refers(*setting)) continue;
            for (const std::string &missing : missingReferences(*setting, value, existingOf(has_)))
                add(mark, place, *setting, missing + " does not exist");
        }
    }

    // What was missing before is nothing that the document removes.
    void checkStored(const Part &part, const Part &wanted, const std::string &place) {
        for (const auto &[setting, value, mark] : part.settings) {
            if (!refers(*setting) || wanted.names(*setting)) continue;
            const std::vector<std::string> before = missingReferences(*setting, value, existingOf(had_));
            for (const std::string &missing : missingReferences(*setting, value, existingOf(has_)))
                if (std::ranges::find(before, missing) == before.end())
                    add(wanted_.mark, place, *setting,
                        fmt::format("is stored and names {}, which the document removes", missing));
        }
    }

    const SwitchEntry &before_;
    const SwitchEntry &wanted_;
    bool prune_;
    std::string_view origin_;
    Merged had_;
    Merged has_;
    std::vector<Problem> problems_;
};

// Calls check(before, wanted) for each switch of a document, with an empty entry for one that is new.
template <typename Check>
std::vector<Problem> checkEach(const Document &now, const Document &wanted, Check check) {
    std::vector<Problem> problems;
    const SwitchEntry none;
    for (const SwitchEntry &entry : wanted.switches) {
        if (entry.hidesObjects) continue;
        const SwitchEntry *before = now.findSwitch(entry.alias);
        std::vector<Problem> found = check(before == nullptr ? none : *before, entry);
        std::ranges::move(found, std::back_inserter(problems));
    }
    return problems;
}

}  // namespace

std::vector<Problem> danglingReferences(const Document &now, const Document &wanted, bool prune,
                                        std::string_view origin) {
    return checkEach(now, wanted, [&](const SwitchEntry &before, const SwitchEntry &entry) {
        return References(before, entry, prune, origin).run();
    });
}

std::vector<Problem> lackOfRoom(const Document &now, const Document &wanted, bool prune,
                                std::string_view origin) {
    return checkEach(now, wanted, [&](const SwitchEntry &before, const SwitchEntry &entry) {
        std::vector<Problem> problems;
        const uint32_t room =
            entry.maxPorts ? *entry.maxPorts : before.maxPorts.value_or(QVS_MAX_PORTS_DEFAULT);
        const size_t after = mergedOf(before, entry, prune).ports.size();
        const std::set<std::string_view> had = before.portIds();
        std::set<std::string_view> most = entry.portIds();
        const size_t named = most.size();
        most.insert(had.begin(), had.end());
        if (most.size() <= room || most.size() == had.size()) return problems;
        std::string text =
            after <= room
                ? fmt::format(
                      "needs {} ports until others are removed, but there is room for {}; remove "
                      "ports first",
                      most.size(), room)
                : fmt::format("has {} ports, those of uplinks{} among them, but there is room for {}", after,
                              after > named ? " and those that stay on the host" : "", room);
        problems.push_back({std::string(origin), entry.mark.line, entry.mark.column,
                            std::string(kSwitches) + '.' + documentText(entry.alias), std::move(text)});
        return problems;
    });
}

Findings checkOnHost(const Document &now, const Document &wanted, bool prune, bool strict,
                     std::string_view origin) {
    Findings findings{lackOfRoom(now, wanted, prune, origin), {}};
    std::ranges::move(danglingReferences(now, wanted, prune, origin),
                      std::back_inserter(strict ? findings.errors : findings.warnings));
    sortByPlace(findings.errors);
    sortByPlace(findings.warnings);
    return findings;
}

}  // namespace qvs::config
