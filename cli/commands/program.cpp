// SPDX-License-Identifier: Apache-2.0
// The table of commands of qvs, and what is done before and after each command.
#include "tool/program.h"

#include <optional>
#include <string>
#include <utility>

#include "access/library.h"
#include "access/settle.h"
#include "base/text.h"
#include "commands/nouns.h"
#include "commands/settings.h"
#include "config/apply/recover.h"
#include "config/library/host.h"
#include "config/library/limits.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"
#include "config/settings/families.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/run.h"
#include "tool/values.h"
#include "views/nouns.h"

namespace qvs::cli {
namespace {

// The switch that a command names, by its alias.
std::string lockName(const Arguments &arguments) {
    if (arguments.given("ALIAS")) return arguments.text("ALIAS");
    if (!arguments.given("SWITCH")) return {};
    const std::string &name = arguments.text("SWITCH");
    DVSSwitch *sw = arguments.given("--by-id") ? findSwitchById(name) : nullptr;
    return std::string(sw != nullptr ? findText({Scope::Global, sw}, QVS_KEY_ALIAS).value_or(name) : name);
}

void runLocked(const Call &call, Output &out) {
    const bool writes = call.command->run.access == Access::Writes;
    const Guard guard = writes ? call.command->guard : Guard::None;
    if (guard != Guard::None) settle();
    std::optional<Lock> lock(std::in_place, guard, lockName(call.arguments));
    while (guard != Guard::None && config::pendingJournal() != config::Pending::Nothing) {
        lock.reset();
        settle();
        lock.emplace(guard, lockName(call.arguments));
    }
    if (lock->behind()) requireState(loadSnapshot());
    call.command->run(call.arguments, out);
}

void runOnHost(const Call &call, Output &out) {
    onWarning = complainLines;
    onCall = call.arguments.given("--trace") ? complainLines : nullptr;
    if (call.arguments.given("--timeout")) setPatience(call.arguments.number("--timeout", 0));
    if (call.command->run.access != Access::Local) requireHost();
    foundNothing = false;
    try {
        runLocked(call, out);
    } catch (const Failure &failure) {
        out.flush();
        if (failure.ofCall && failure.exit != Exit::NoAnswer) blameHost(failure.message);
        throw;
    }
    if (!foundNothing || call.command->run.access != Access::Reads) return;
    try {
        blameHost("");
    } catch (const Failure &) {
        // A host that cannot be reached answers with an empty list, which must not be printed as a result.
        out.buffer().clear();
        throw;
    }
}

constexpr Option kOptions[] = {
    {"--trace", nullptr, "print each library call, its status and its time to standard error"},
    {.name = "--timeout",
     .value = "SECONDS",
     .summary = "wait so long for the host to answer, and for other runs that change the same (10)",
     .check = checkNumber<1, kMostPatience>},
};

constexpr NameSource kNameSources[] = {
    {Kind::Switch, "switch list --names"},
    {Kind::Port, "port list --names $switch", &kPortIdLimit},
    {Kind::Uplink, "uplink list --names $switch"},
    {Kind::Session, "mirror list --names $--port $switch"},
    {Kind::Checkpoint, "checkpoint list --names $--dir"},
};

constexpr Topic kTopics[] = {
    {"What runs", "show top topology monitor metrics"},
    {"Switches", "switch port uplink nic mtu pvlan"},
    {"Policies", "teaming ls-teaming mac-learning mcast rcf mirror health discovery"},
    {"Learning on this host", "learn-static static-mac-allow overlay-cache"},
    {"Configuration", "export diff apply confirm checkpoint batch prop schema fleet"},
    {"Tables and sessions of the kernel", "mac ipfix spf bfd kcp rarp trace int livetrace options rtm"},
    {"This host", "status dump doctor"},
};

constexpr Noun kParts[] = {
    {"confirm", "keep what apply changed", {}},
    {"diff", "what apply would change", {}},
    {"learn-static", "static addresses are learned", {}},
    {"overlay-cache", "addresses are cached for overlays", {}},
    {"static-mac-allow", "static addresses are accepted", {}},
    {"rcf", "the receive filter", {}},
    {"schema", "the schema of documents", {}},
};

constexpr OtherName kOtherNames[] = {
    {"vswitch dvs dvswitch bridge", "switch"},
    {"pnic interface link", "uplink"},
    {"lacp", "uplink list"},
    {"vlan", "port vlan,port list,topology"},
    {"who member membership", "port list,show"},
    {"move migrate retag", "port vlan set,checkpoint save"},
    {"trunk", "port vlan set"},
    {"bond bonding lag team", "teaming"},
    {"span tap capture sniff pcap sniffer", "mirror"},
    {"fdb neighbour arp locate where address", "mac table"},
    {"property properties key", "prop"},
    {"cdp lldp", "discovery"},
    {"multicast igmp mld", "mcast"},
    {"netflow sflow", "ipfix"},
    {"restore undo revert backup save", "checkpoint,apply"},
    {"safe safely", "checkpoint,apply,batch"},
    {"watch follow event log", "monitor"},
    {"history change changed recent recently last past audit when", "monitor,checkpoint diff,diff"},
    {"enable disable shut shutdown isolate quarantine", "port block,port unblock,uplink up,uplink down"},
    {"draw picture graph", "topology"},
    {"counter traffic bandwidth throughput utilization load send receive busy busiest talker rate usage",
     "top,port stats"},
    {"prometheus grafana node_exporter exporter scrape textfile monitoring", "metrics"},
    {"problem why check down broken trouble", "show,port show,doctor"},
    {"carry carries carrier path route pin pinned", "port show,uplink list"},
    {"ls", "show"},
};

constexpr Passage kDescription[] = {
    {"qvs creates, shows and changes the distributed virtual switches of this host, their ports, uplinks and "
     "stored "
     "properties. A switch is named by its alias."},
    {"Every change is reported as changed or unchanged. When several objects are given, all are checked "
     "before the "
     "first is changed. Options may stand anywhere behind the command; -- ends them, so that a name may "
     "begin "
     "with a "
     "dash."},
    {"Reading commands print a table, or JSON with --json: a list is an array of objects, one a line; an "
     "absent value "
     "is null and shown as -; a boolean is always present. "
     "Names are shown with control characters, invisible characters, backslashes and bytes that are not "
     "UTF-8 "
     "escaped: \\t, \\n, \\\\, and \\xNN for other bytes. Names of switches, ports, uplinks and mirror "
     "sessions "
     "may be typed in the same way; a backslash that begins no escape stands for itself."},
    {"Records whose layout is the kernel's own are shown by the fields that a layout file describes. "
     "--layout "
     "names the file, or the variable QVS_LAYOUT; a host that qvs-host runs sets it. Without a layout the "
     "records are shown as hexadecimal digits. JSON has the bytes as base64, and the fields under fields."},
    {"On a machine without a hypervisor, qvs-host run -- qvs ... gives qvs an emulated host."},
};

constexpr Passage kExitCodes[] = {
    {.text = "success", .term = "0"},
    {.text = "the operation failed", .term = "1"},
    {.text = "wrong usage, or a value that its record cannot hold", .term = "2"},
    {.text = "not found", .term = "3"},
    {.text = "exists already, or exists and differs", .term = "4"},
    {.text = "no hypercore on this machine", .term = "5"},
    {.text = "the host does not answer", .term = "6"},
    {.text = "locked by another run, or by a change that waits to be confirmed", .term = "7"},
    {.text = "not confirmed at the terminal", .term = "8"},
};
constexpr Passage kSeeAlso[] = {{"qvs-host(1), libqvs(7), libqvs-config(3)"}};
constexpr Passage kEnvironment[] = {
    {.text = "the layout file of the kernel's records, unless --layout names one", .term = "QVS_LAYOUT"},
};
constexpr Section kSections[] = {
    {"Exit status", kExitCodes}, {"Environment", kEnvironment}, {"See also", kSeeAlso}};

// The commands in the order of the help. The table is built at the first use, because its rows are in other
// files.
std::span<const Noun> nouns() {
    using namespace config;
    static const Noun table[] = {
        {"show", "what runs", kShowCommands},
        {"top", "ports by their traffic", kTopCommands},
        {"switch", "distributed switches", kSwitchCommands},
        {"port", "ports of a switch", kPortCommands},
        {"port stats", "the counters of ports", kPortStatsCommands},
        {"uplink", "uplinks and their links", kUplinkCommands},
        {"nic", "physical NICs of uplinks", kNicCommands},
        {"mtu", "the MTU of a switch", settingRows({&kMtu})},
        {"mirror", "mirror sessions of ports and uplinks", kMirrorCommands},
        {"mirror runtime", "mirror sessions as the kernel runs them", kMirrorRuntimeCommands},
        {"pvlan", "the private VLANs of a switch", settingRows({&kPrivateVlans})},
        {"port vlan", "the VLANs of a port", settingRows({&kVlan, &kNestedVlan})},
        {"port security", "what a port may do and receive", settingRows({&kSecurity, &kFilter})},
        {"port sink", "ports that receive frames for unknown destinations", kSinkCommands},
        {"teaming", "how traffic is spread over the uplinks",
         settingRows({&kTeaming, &kPortTeaming, &kTeamingOverride, &kTxUplink})},
        {"rarp", "counters of moves between uplinks", kTeamingStatsCommands},
        {"ls-teaming", "teaming of logical switches", settingRows({&kLsTeaming, &kPortLsTeaming})},
        {"mac-learning", "MAC address learning",
         settingRows({&kMacLearning, &kPortMacLearning, &kLearnStatic, &kOverlayCache, &kStaticMacAllow})},
        {"mac", "MAC tables and learning", kMacCommands},
        {"mcast", "multicast filtering",
         settingRows({&kMulticastMode, &kMulticastAddresses, &kPortMulticastAddresses, &kRcf})},
        {"mcast filters", "the multicast groups that the kernel lets in", kMulticastFilterCommands},
        {"health", "checks of teaming, VLANs and MTU", settingRows({&kTeamCheck, &kVlanMtuCheck})},
        {"health result", "what the checks have found", kHealthCommands},
        {"discovery", "the discovery protocol", settingRows({&kDiscovery})},
        {"port ipfix", "flow sampling of a port", settingRows({&kIpfix})},
        {"ipfix", "counters of flow sampling", kIpfixStatsCommands},
        {"spf", "ports of the SPF data path", kSpfCommands},
        {"bfd", "forwarding detection between tunnel ends", kBfdCommands},
        {"kcp", "the kernel control plane", kKcpCommands},
        {"trace", "tracing of flows", kTraceCommands},
        {"int", "in-band network telemetry", kTelemetryCommands},
        {"livetrace", "live-trace sessions", kLivetraceCommands},
        {"options", "switch module options", kOptionsCommands},
        {"rtm", "the route-table module", kRouteTableCommands},
        {"prop", "stored properties of switches and ports", kPropCommands},
        {"export", "the host as a document", kDocumentCommands},
        {"dump", "the whole state as text", kDumpCommands},
        {"status", "explain an error code", kStatusCommands},
        {"apply", "carry out a document", kApplyCommands},
        {"doctor", "problems of this machine", kDoctorCommands},
        {"batch", "many commands in one run", kBatchCommands},
        {"checkpoint", "save and restore the host", kCheckpointCommands},
        {"monitor", "changes as they happen", kMonitorCommands},
        {"metrics", "measurements for Prometheus", kMetricsCommands},
        {"fleet", "one configuration for many hosts", kFleetCommands, true},
        {"topology", "a picture of the wiring", kTopologyCommands},
        {"tool", "the tool itself", kToolCommands},
    };
    return table;
}

}  // namespace

const Program &program() {
    static const Program self = {
        .name = "qvs",
        .version = QVS_VERSION,
        .date = QVS_DATE,
        .summary = "control the distributed virtual switches of a hypervisor host",
        .usage = "NOUN VERB [ARGUMENT...] [OPTION...]",
        .nouns = nouns(),
        .options = kOptions,
        .names = kNameSources,
        .description = kDescription,
        .sections = kSections,
        .failed = 1,
        .topics = kTopics,
        .otherNames = kOtherNames,
        .parts = kParts,
        .hasPagesOfNouns = true,
        .run = runOnHost,
    };
    return self;
}

}  // namespace qvs::cli
