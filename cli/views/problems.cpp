// SPDX-License-Identifier: Apache-2.0
#include "views/problems.h"

#include <fmt/format.h>

#include <algorithm>

#include "config/settings/families.h"
#include "config/settings/references.h"
#include "views/port_words.h"

namespace qvs::cli {
namespace {

using Problems = std::vector<Problem>;

// A link of which the kernel says nothing is no problem that is known.
bool isKnownDown(const UplinkFacts &uplink) {
    return uplink.port && (!uplink.nic || uplink.linkUp == false);
}

void addUplinks(Problems &problems, const SwitchFacts &facts) {
    for (const UplinkFacts &uplink : facts.uplinks)
        if (isKnownDown(uplink)) problems.push_back({"uplink", uplink.name, uplinkReason(uplink)});
    if (!facts.uplinks.empty() && std::ranges::all_of(facts.uplinks, isKnownDown))
        problems.push_back({"switch", std::string(facts.name()), "none of its uplinks has a link"});
}

void addPorts(Problems &problems, const SwitchFacts &facts) {
    for (const PortFacts &port : facts.ports) {
        if (port.blocked || port.kernelBlocked) {
            problems.push_back(
                {"port", std::string(port.id), port.blocked ? "is blocked" : "is blocked by the kernel"});
        } else if (port.inUse && !port.linkUp && !port.uplink) {
            problems.push_back({"port", std::string(port.id), linkReason(facts, port)});
        }
    }
}

void addMirrors(Problems &problems, const SwitchFacts &facts) {
    if (facts.mirrors.empty()) return;
    const config::Existing existing = config::existingIn(facts.handle);
    for (const MirrorFacts &mirror : facts.mirrors) {
        const std::string of = mirror.port.empty() ? "" : fmt::format("of port {}: ", mirror.port);
        const auto add = [&](const std::string &text) {
            problems.push_back({"mirror session", std::string(mirror.text("session")), of + text});
        };
        if (!mirror.disabled() && mirror.texts("sourcesIn").empty() && mirror.texts("sourcesOut").empty())
            add("has no sources");
        const std::vector<std::string> missing = config::missingReferences(
            config::kPortMirrorSessions, config::Value(config::List{mirror.session}), existing);
        if (!missing.empty()) add(config::missingText(missing));
    }
}

void addReferences(Problems &problems, const SwitchFacts &facts) {
    for (const MissingReferences &each : facts.missing)
        problems.push_back({each.port.empty() ? "switch" : "port",
                            std::string(each.port.empty() ? facts.name() : each.port),
                            fmt::format("{}: {}", each.setting->what, config::missingText(each.objects))});
}

}  // namespace

std::vector<Problem> problemsOf(const SwitchFacts &facts) {
    Problems problems;
    addUplinks(problems, facts);
    addPorts(problems, facts);
    addMirrors(problems, facts);
    addReferences(problems, facts);
    return problems;
}

}  // namespace qvs::cli
