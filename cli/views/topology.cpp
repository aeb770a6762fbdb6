// SPDX-License-Identifier: Apache-2.0
// qvs topology: what is connected to what, as text, as a picture, and as a page.
#include "views/topology.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>
#include <map>
#include <utility>

#include "access/library.h"
#include "tool/values.h"
#include "views/facts_json.h"
#include "views/nouns.h"
#include "views/port_words.h"
#include "views/tree.h"

namespace qvs::cli {
namespace {

std::string vlanTitle(std::string_view vlan) {
    if (vlan.empty()) return "No VLAN";
    if (std::isdigit(static_cast<unsigned char>(vlan[0])) != 0) return fmt::format("VLAN {}", vlan);
    std::string title(vlan);
    title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
    return title;
}

}  // namespace

std::string policyNames(const std::vector<Policy> &policies) {
    std::vector<std::string_view> names;
    names.reserve(policies.size());
    for (const Policy &policy : policies)
        names.push_back(policy.name());
    std::ranges::sort(names);
    return fmt::format("{}", fmt::join(names, ", "));
}

namespace {

// --- text ---

std::string joined(const std::vector<std::string_view> &names) {
    std::string text;
    for (const std::string_view name : names)
        text += (text.empty() ? "" : ", ") + shown(name);
    return text.empty() ? "-" : text;
}

void addUplinks(Branch &root, const SwitchFacts &facts) {
    for (const UplinkFacts &uplink : facts.uplinks) {
        std::string line =
            fmt::format("{} -- {}", uplink.nic ? "NIC " + shown(*uplink.nic) : "no NIC", shown(uplink.name));
        if (uplink.linkUp) line += *uplink.linkUp ? ": up" : ": down";
        if (uplink.speedMbps) line += ", " + speedText(*uplink.speedMbps);
        root.add(std::move(line));
    }
}

void addGroups(Branch &root, const SwitchFacts &facts) {
    for (const PortGroup &group : groupsOf(facts)) {
        const size_t count = group.ports.size();
        Branch &branch = root.add(fmt::format("{}{}: {} {}", group.title,
                                              group.policies.empty() ? "" : " (" + group.policies + ")",
                                              count, count == 1 ? "port" : "ports"));
        for (const PortFacts *port : group.ports) {
            std::string line = fmt::format("{}: {}", shown(port->id), portState(*port));
            if (port->client) line += ", " + shown(*port->client);
            branch.add(std::move(line));
        }
    }
}

void addMirrors(Branch &root, const SwitchFacts &facts) {
    for (const MirrorFacts &mirror : facts.mirrors) {
        std::vector<std::string_view> sources = mirror.texts("sourcesIn");
        for (const std::string_view source : mirror.texts("sourcesOut"))
            if (std::ranges::find(sources, source) == sources.end()) sources.push_back(source);
        root.add(fmt::format("mirror session {}{}: {} -> {}", shown(mirror.text("session")),
                             mirror.disabled() ? " (disabled)" : "", joined(sources),
                             joined(mirror.texts("destinations"))));
    }
}

void addPrivateVlans(Branch &root, const SwitchFacts &facts) {
    for (const auto &[primary, secondaries] : privateVlanWords(facts))
        root.add(fmt::format("private VLAN {}: {}", primary, secondaries));
}

void printText(Output &out, const std::vector<SwitchFacts> &switches) {
    for (const SwitchFacts &facts : switches) {
        if (&facts != &switches.front()) out.write("\n");
        Branch root{shown(facts.name())};
        if (!facts.policies.empty()) root.add("policies: " + policyNames(facts.policies));
        addUplinks(root, facts);
        addGroups(root, facts);
        addMirrors(root, facts);
        addPrivateVlans(root, facts);
        printTree(out, root);
        out.drain();
    }
}

// --- page ---

void printPage(Output &out, const std::vector<SwitchFacts> &switches) {
    std::array<char, 256> host{};
    // The name is cut when it is longer.
    (void)gethostname(host.data(), host.size() - 1);
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> time{};
    std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M UTC", &utc);

    fmt::memory_buffer json;
    const auto put = [&](std::string_view text) { json.append(text); };
    put(R"({"host":)");
    appendJson(json, std::string_view(host.data()));
    put(R"(,"time":)");
    appendJson(json, std::string_view(time.data()));
    put(R"(,"switches":[)");
    for (const SwitchFacts &facts : switches) {
        if (&facts != &switches.front()) put(",");
        appendJson(json, facts);
    }
    put("]}");

    constexpr std::string_view kPlace = "@DATA@";
    const size_t place = kTopologyPage.find(kPlace);
    out.write(kTopologyPage.substr(0, place));
    // In JSON this sign stands in texts alone. As it is, it could end the element around the data.
    for (std::string_view rest(json.data(), json.size()); !rest.empty();) {
        const size_t sign = std::min(rest.find('<'), rest.size());
        out.write(rest.substr(0, sign));
        if (sign < rest.size()) out.write("\\u003c");
        rest.remove_prefix(std::min(sign + 1, rest.size()));
    }
    out.write(kTopologyPage.substr(place + kPlace.size()));
}

// --- the command ---

enum Format { Text, Dot, Svg, Html };
constexpr const char *kFormats[] = {"text", "dot", "svg", "html"};

void topology(const Arguments &arguments, Output &out) {
    uint32_t format = Text;
    if (arguments.given("--format")) format = chosen(arguments, "--format", kFormats);
    std::vector<SwitchFacts> switches;
    if (arguments.given("SWITCH")) {
        switches.push_back(gatherSwitch(findSwitch(arguments.text("SWITCH"))));
    } else {
        switches = gatherSwitches();
    }
    switch (format) {
        case Dot:
            return out.write(dotText(switches));
        case Svg:
            return writeSvg(out, dotText(switches));
        case Html:
            return printPage(out, switches);
        default:
            return printText(out, switches);
    }
}

const Command kRows[] = {
    {.words = "topology",
     .summary =
         "draw what is connected to what: NICs, uplinks, switches, ports, mirror sessions, private VLANs",
     .arguments = {{"SWITCH", "alias of the only switch to draw", Kind::Switch, true}},
     .options = {{.name = "--format",
                  .value = "WORD",
                  .summary = "text, dot, svg or html (text)",
                  .choices = kFormats}},
     .details = "Ports of one VLAN with the same policies are drawn together. dot is the language of "
                "Graphviz, which draws svg; its Debian package is graphviz. html is a page for a browser, "
                "with search, zoom and details; it needs no network.",
     .example = "qvs topology --format html >topology.html",
     .json = false,
     .run = reads(topology)},
};

}  // namespace

std::vector<PortGroup> groupsOf(const SwitchFacts &facts) {
    std::map<std::pair<std::string, std::string>, size_t> places;
    std::vector<PortGroup> groups;
    for (const PortFacts &port : facts.ports) {
        if (port.uplink) continue;
        std::pair<std::string, std::string> key{vlanTitle(port.vlan), policyNames(port.policies)};
        const auto [place, fresh] = places.emplace(key, groups.size());
        if (fresh) groups.push_back({std::move(key.first), std::move(key.second), {}});
        groups[place->second].ports.push_back(&port);
    }
    std::ranges::stable_sort(groups, [](const PortGroup &left, const PortGroup &right) {
        return left.title != right.title ? namedBefore(left.title, right.title)
                                         : left.policies < right.policies;
    });
    return groups;
}

const std::span<const Command> kTopologyCommands = kRows;

}  // namespace qvs::cli
