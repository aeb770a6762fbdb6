// SPDX-License-Identifier: Apache-2.0
// qvs show: what runs, as a tree.
#include <algorithm>
#include <string>
#include <unordered_map>

#include "access/library.h"
#include "access/overview.h"
#include "tool/output.h"
#include "views/facts_json.h"
#include "views/nouns.h"
#include "views/port_words.h"
#include "views/problems.h"
#include "views/tree.h"

namespace qvs::cli {
namespace {

// A switch with more used ports than these shows ports that are alike in one line.
constexpr size_t kMostLines = 64;
// So many runs of names are shown of ports that are alike.
constexpr size_t kMostRuns = 4;

using Ports = std::vector<const PortFacts *>;
using Cells = std::vector<std::string>;

std::string counted(size_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

// --- names of ports that are alike ---

// Where the number at the end of a name begins. A number with a leading zero has no successor here.
size_t numberAt(std::string_view name) {
    constexpr size_t kMostDigits = 9;
    size_t at = name.size();
    while (at > 0 && name.size() - at < kMostDigits && name[at - 1] >= '0' && name[at - 1] <= '9')
        at--;
    while (at + 1 < name.size() && name[at] == '0')
        at++;
    return at;
}

bool follows(std::string_view name, std::string_view before) {
    const size_t at = numberAt(name);
    const size_t atBefore = numberAt(before);
    if (at == name.size() || atBefore == before.size() || name.substr(0, at) != before.substr(0, atBefore))
        return false;
    return parseNumber(name.substr(at)).value_or(0) == parseNumber(before.substr(atBefore)).value_or(0) + 1;
}

// "vm0..vm9, web (11 ports)"
std::string namesOf(const Ports &ports) {
    std::string names;
    size_t runs = 0;
    for (size_t i = 0; i < ports.size();) {
        size_t end = i + 1;
        while (end < ports.size() && follows(ports[end]->id, ports[end - 1]->id))
            end++;
        if (++runs > kMostRuns) {
            names += ", ...";
            break;
        }
        names += (i > 0 ? ", " : "") + shown(ports[i]->id);
        if (end - i > 1) names += (end - i > 2 ? ".." : ", ") + shown(ports[end - 1]->id);
        i = end;
    }
    return ports.size() == 1 ? names : fmt::format("{} ({})", names, counted(ports.size(), "port"));
}

// --- the branches of a switch ---

std::string stateCell(std::string_view state) {
    if (state == "down") return tinted(state, Tint::Red);
    return state == "blocked" ? tinted(state, Tint::Yellow) : std::string(state);
}

Cells cellsOf(std::string name, const PortFacts &port, bool withClient) {
    return {std::move(name), port.vlan.empty() ? "" : "VLAN " + port.vlan,
            withClient ? shown(port.client.value_or("")) : "", stateCell(portState(port)),
            shown(portDetails(port))};
}

// Ports that are alike in everything but names and clients.
std::vector<Ports> alike(const Ports &ports) {
    std::vector<Ports> groups;
    std::unordered_map<std::string, size_t> places;
    for (const PortFacts *port : ports) {
        const std::string key = fmt::format("{}\n{}\n{}", port->vlan, portState(*port), portDetails(*port));
        const auto [place, fresh] = places.emplace(key, groups.size());
        if (fresh) groups.emplace_back();
        groups[place->second].push_back(port);
    }
    return groups;
}

void addPorts(Branch &root, const SwitchFacts &facts, bool all) {
    Ports used;
    Ports unused;
    for (const PortFacts &port : facts.ports)
        if (!port.uplink) (port.inUse || all ? used : unused).push_back(&port);
    if (used.empty() && unused.empty()) return;
    std::vector<Cells> rows;
    auto addGroups = [&](const Ports &ports) {
        for (const Ports &group : alike(ports))
            rows.push_back(cellsOf(namesOf(group), *group[0], group.size() == 1));
    };
    if (used.size() > kMostLines && !all) {
        addGroups(used);
    } else {
        for (const PortFacts *port : used)
            rows.push_back(cellsOf(shown(port->id), *port, true));
    }
    addGroups(unused);
    Branch &branch = root.add("ports");
    for (std::string &line : aligned(rows))
        branch.add(std::move(line));
}

void addUplinks(Branch &root, const SwitchFacts &facts) {
    if (facts.uplinks.empty()) return;
    std::vector<Cells> rows;
    for (const UplinkFacts &uplink : facts.uplinks) {
        std::string link = uplink.nic ? "link unknown" : "no NIC";
        if (uplink.linkUp) link = stateCell(*uplink.linkUp ? "up" : "down");
        std::string speed = uplink.speedMbps ? speedText(*uplink.speedMbps) : "";
        std::string details;
        if (uplink.port) {
            const PortFacts &port = facts.ports[*uplink.port];
            details = shown(portDetails(port));
            if (portState(port) == "blocked")
                details.insert(0, stateCell("blocked") + (details.empty() ? "" : "; "));
        }
        rows.push_back({shown(uplink.name), shown(uplink.nic.value_or("")), std::move(link), std::move(speed),
                        std::move(details)});
    }
    Branch &branch = root.add("uplinks");
    for (std::string &line : aligned(rows))
        branch.add(std::move(line));
}

void addPolicies(Branch &root, const SwitchFacts &facts) {
    if (facts.policies.empty()) return;
    Branch &branch = root.add("policies");
    for (const Policy &policy : facts.policies)
        branch.add(fmt::format("{}: {}", policy.name(), shown(policy.words)));
}

void addPrivateVlans(Branch &root, const SwitchFacts &facts) {
    if (facts.privateVlans.empty()) return;
    Branch &branch = root.add("private VLANs");
    for (const auto &[primary, line] : privateVlanWords(facts))
        branch.add(fmt::format("{}: {}", primary, line));
}

std::string joined(const std::vector<std::string_view> &texts) {
    std::string all;
    for (const std::string_view text : texts)
        all += (all.empty() ? "" : " ") + shown(text);
    return all;
}

void addMirrors(Branch &root, const SwitchFacts &facts) {
    if (facts.mirrors.empty()) return;
    std::vector<Cells> rows;
    for (const MirrorFacts &mirror : facts.mirrors) {
        std::string paths;
        for (const auto &[member, word] : {std::pair("sourcesIn", "in"), std::pair("sourcesOut", "out"),
                                           std::pair("destinations", "to")}) {
            const std::string names = joined(mirror.texts(member));
            if (!names.empty()) paths += fmt::format("{}{} {}", paths.empty() ? "" : ", ", word, names);
        }
        rows.push_back({shown(mirror.text("session")), std::string(mirror.text("type")),
                        mirror.port.empty() ? "of uplinks" : "of port " + shown(mirror.port),
                        mirror.disabled() ? "disabled" : "", std::move(paths)});
    }
    Branch &branch = root.add("mirror sessions");
    for (std::string &line : aligned(rows))
        branch.add(std::move(line));
}

// "4 ports (3 in use), 2 uplinks (1 up), room for 512"
std::string portsInHead(const SwitchFacts &facts) {
    const auto isUplink = [](const PortFacts &port) { return port.uplink.has_value(); };
    const auto inUse = [&](const PortFacts &port) { return port.inUse && !port.uplink; };
    const auto isUp = [](const UplinkFacts &uplink) { return uplink.linkUp == true; };
    const auto uplinkPorts = static_cast<size_t>(std::ranges::count_if(facts.ports, isUplink));
    std::string text = fmt::format("{} ({} in use)", counted(facts.ports.size() - uplinkPorts, "port"),
                                   std::ranges::count_if(facts.ports, inUse));
    if (!facts.uplinks.empty())
        text += fmt::format(", {} ({} up)", counted(facts.uplinks.size(), "uplink"),
                            std::ranges::count_if(facts.uplinks, isUp));
    return text + fmt::format(", room for {}", facts.maxPorts);
}

void print(Output &out, const SwitchFacts &facts, bool all) {
    std::string head = fmt::format("{}: ", shown(facts.name()));
    if (facts.mtu) head += fmt::format("MTU {}, ", *facts.mtu);
    head += portsInHead(facts);
    if (facts.className != "vswitch") head += fmt::format(", class {}", shown(facts.className));
    if (!facts.portset) {
        head += ", no portset";
    } else if (facts.portset != facts.alias) {
        head += fmt::format(", portset {}", shown(*facts.portset));
    }
    if (facts.opaque) head += ", opaque";
    Branch root{std::move(head)};
    addPolicies(root, facts);
    addPrivateVlans(root, facts);
    addMirrors(root, facts);
    addUplinks(root, facts);
    addPorts(root, facts, all);
    if (!facts.gaps.empty()) {
        Branch &branch = root.add("cannot be read");
        for (const std::string &gap : facts.gaps)
            branch.add(gap);
    }
    printTree(out, root);
}

void printProblems(Output &out, const std::vector<SwitchFacts> &switches, bool all) {
    std::vector<Cells> rows;
    for (const SwitchFacts &facts : switches)
        for (const Problem &problem : problemsOf(facts))
            rows.push_back({shown(facts.name()), fmt::format("{} {}", problem.kind, shown(problem.name)),
                            shown(problem.text)});
    if (rows.empty()) return;
    Branch root{counted(rows.size(), "problem")};
    const size_t hidden = rows.size() > kMostLines && !all ? rows.size() - kMostLines : 0;
    rows.resize(rows.size() - hidden);
    for (std::string &line : aligned(rows))
        root.add(std::move(line));
    if (hidden > 0) root.add(fmt::format("and {} more; --all shows them", hidden));
    out.write("\n");
    printTree(out, root);
}

void show(const Arguments &arguments, Output &out) {
    std::vector<SwitchFacts> all;
    if (arguments.given("SWITCH")) {
        all.push_back(gatherSwitch(findSwitch(arguments.text("SWITCH"))));
    } else {
        all = gatherSwitches();
    }
    if (out.json()) out.write(all.empty() ? "[" : "[\n");
    for (const SwitchFacts &facts : all) {
        const bool first = &facts == &all.front();
        if (out.json()) {
            if (!first) out.write(",\n");
            appendJson(out.buffer(), facts);
        } else {
            if (!first) out.write("\n");
            print(out, facts, arguments.given("--all"));
        }
        out.drain();
    }
    if (out.json()) return out.write(all.empty() ? "]\n" : "\n]\n");
    printProblems(out, all, arguments.given("--all"));
}

const Command kRows[] = {
    {.words = "show",
     .summary = "show what runs: switches, uplinks, ports, and the policies that differ from the default",
     .arguments = {{"SWITCH", "alias of the only switch to show", Kind::Switch, true}},
     .options = {{"--all", nullptr, "show each port in a line of its own"}},
     .details =
         "Unused ports that are alike share a line, and so do used ports of a switch with more than 64 of "
         "them. JSON has each port, and the whole values of the policies that are shown. What cannot be read "
         "is left out, with a warning, and listed at the end of the switch. A port is free, up, down or "
         "blocked: up and down are the links of clients. The last lines are the problems: uplinks and used "
         "ports without a link, "
         "blocked ports, mirror sessions without sources, and settings that refer to what does not exist.",
     .example = "qvs show sw1",
     .run = reads(show)},
};

}  // namespace

const std::span<const Command> kShowCommands = kRows;

}  // namespace qvs::cli
