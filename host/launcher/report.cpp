// SPDX-License-Identifier: Apache-2.0
// Prints the state of a host.
#include "launcher/report.h"

#include <string>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"

namespace qvs::launcher {

namespace {

using nlohmann::json;

template <typename... Values>
void print(cli::Output &out, fmt::format_string<Values...> format, Values &&...values) {
    out.write(fmt::format(format, std::forward<Values>(values)...));
}

std::string text(const json &value, const char *member) {
    const auto found = value.find(member);
    if (found == value.end() || found->is_null()) return "-";
    return found->is_string() ? qvs::shown(found->get<std::string>()) : found->dump();
}

// Returns the effect of a fault as options of `fault add`.
std::string actionOf(const json &fault) {
    constexpr std::pair<const char *, const char *> kOptions[] = {
        {"errno", "--errno"},   {"status", "--status"}, {"exit", "--exit"},
        {"delayMs", "--delay"}, {"kill", "--kill"},     {"truncate", "--truncate"}};
    std::string action;
    for (const auto &[member, option] : kOptions) {
        if (fault.contains(member)) action += fmt::format(" {} {}", option, text(fault, member));
    }
    for (const json &patch : fault.value("output", json::array()))
        action += fmt::format(" --output {}:{}", patch.value("offset", 0u), text(patch, "hex"));
    return fault.contains("lab") ? action + " --lab, a lab" : action;
}

std::string duration(uint64_t seconds) {
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

void printSwitch(cli::Output &out, const json &sw) {
    std::string uplinks;
    for (const json &uplink : sw["uplinks"]) {
        uplinks +=
            fmt::format("{}{} ({})", uplinks.empty() ? "" : ", ", text(uplink, "port"), text(uplink, "nic"));
    }
    print(out, "  {}: {} of {} ports, version {}, class {}, portset {}\n    identifier {}\n    uplinks {}\n",
          text(sw, "alias"), text(sw, "ports"), text(sw, "maxPorts"), text(sw, "version"), text(sw, "class"),
          text(sw, "portset"), text(sw, "id"), uplinks.empty() ? "-" : uplinks);
}

// One line for each attachment, and what the host stores without an effect on frames.
void printNetwork(cli::Output &out, const json &network) {
    if (!network.value("enabled", false)) {
        print(out, "network off\n");
        return;
    }
    const bool runs = !network["process"].is_null();
    print(out, "network on, data path {}, restarts {}\n",
          runs ? "pid " + text(network, "process") : "is not running", text(network, "restarts"));
    for (const json &attachment : network["attachments"]) {
        std::string files;
        for (const char *member : {"path", "peer"})
            if (attachment.contains(member)) files += ' ' + text(attachment, member);
        const std::string problem = text(attachment, "problem");
        print(out, "  {} {} ({}): {}{}, carrier {}{}\n", text(attachment, "switch"), text(attachment, "port"),
              text(attachment, "client"), text(attachment, "kind"), files, text(attachment, "carrier"),
              problem.empty() ? "" : "; " + problem);
    }
    for (const json &neighbour : network["neighbours"]) {
        print(out, "  {} {} ({}): neighbour {}, port {}, system {}\n", text(neighbour, "switch"),
              text(neighbour, "port"), text(neighbour, "nic"), text(neighbour, "chassis"),
              text(neighbour, "portId"), text(neighbour, "systemName"));
    }
    std::string names;
    for (const json &name : network["notCarriedOut"])
        names += (names.empty() ? "" : ", ") + name.get<std::string>();
    print(out, "  not carried out: {}\n", names);
}

}  // namespace

void printFaults(cli::Output &out, const json &faults) {
    for (const json &fault : faults) {
        const std::string times =
            fault["count"] == 0 ? "--forever" : fmt::format("--count {}", text(fault, "count"));
        print(out, "  {}: \"{}\" --nth {} {}{}; matched {}, fired {}\n", text(fault, "id"),
              text(fault, "match"), text(fault, "nth"), times, actionOf(fault), text(fault, "matched"),
              text(fault, "fired"));
    }
}

void printJson(cli::Output &out, const json &value) {
    // The JSON library escapes only the control characters below U+0020. Other control characters appear only
    // in texts.
    std::string text;
    const std::string whole = value.dump(2);
    for (size_t at = 0; at < whole.size(); ++at) {
        const auto byte = static_cast<uint8_t>(whole[at]);
        const bool upper = byte == 0xc2 && static_cast<uint8_t>(whole[at + 1]) < 0xa0;
        if (byte != 0x7f && !upper) {
            text += whole[at];
            continue;
        }
        text += fmt::format("\\u{:04x}", upper ? static_cast<uint8_t>(whole[++at]) : byte);
    }
    print(out, "{}\n", text);
}

void printStatus(cli::Output &out, const json &status) {
    std::string traces;
    for (const json &path : status["trace"])
        traces += (traces.empty() ? "" : ", ") + qvs::shown(path.get<std::string>());
    if (const auto dropped = status.value("traceDropped", 0u); dropped != 0)
        traces += fmt::format("{}dropped lines {}", traces.empty() ? "-, " : ", ", dropped);
    print(out, "pid {}, up {}, state {}\n", text(status, "pid"), duration(status.value("uptimeSeconds", 0u)),
          text(status, "state"));
    print(out, "leases {}, {}, trace {}\n", text(status, "leases"),
          status.value("staysWithoutLease", false) ? "stays until it is stopped" : "ends with the last one",
          traces.empty() ? "-" : traces);
    print(out, "switches {}, ports {}\n", status["switches"].size(), text(status, "ports"));
    for (const json &sw : status["switches"])
        printSwitch(out, sw);
    print(out, "portsets {}\n", status["portsets"].size());
    for (const json &portset : status["portsets"]) {
        print(out, "  {}: number {}, capacity {}, MTU {}\n", text(portset, "name"), text(portset, "number"),
              text(portset, "capacity"), text(portset, "mtu"));
    }
    print(out, "NICs {}\n", status["nics"].size());
    for (const json &nic : status["nics"]) {
        print(out, "  {}: link {}, admin {}, {} Mb/s, MTU {}, {}, port {}\n", text(nic, "name"),
              text(nic, "link"), text(nic, "admin"), text(nic, "speedMbps"), text(nic, "mtu"),
              text(nic, "mac"), text(nic, "port"));
    }
    printNetwork(out, status["network"]);
    print(out, "faults {}\n", status["faults"].size());
    printFaults(out, status["faults"]);
}

}  // namespace qvs::launcher
