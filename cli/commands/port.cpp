// SPDX-License-Identifier: Apache-2.0
// qvs port: the ports of a switch.
#include <qvs/qvs.h>

#include <algorithm>
#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "access/setting.h"
#include "access/team_hint.h"
#include "commands/nouns.h"
#include "commands/port.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"
#include "views/port_list.h"
#include "views/port_words.h"

// A state library may lack it, and has live ports only then.
// NOLINTNEXTLINE(readability-redundant-declaration): it is this one that makes the reference weak
extern "C" __attribute__((weak)) uint32_t DVS_PortState(const DVSPort *port);

namespace qvs::cli {
namespace {

std::vector<std::string> touchedPorts(const Arguments &arguments) {
    std::vector<std::string> paths;
    for (const std::string &port : arguments.all("PORT")) {
        paths.push_back(touchedPath({arguments.text("SWITCH"), "port", port}));
    }
    return paths;
}

constexpr RecordKind kPortInfo{"port-info", "info", "port"};

void listKernel(const Arguments &arguments, const std::string &alias, Output &out) {
    auto ask = [&] { return fetched<VSHYP_GetSwitchPortInfo>(named(alias), alias.c_str()); };
    printList(arguments, out, boundedList(ask, VSHYP_PORT_INFO_SIZE, "ports"), kPortInfo);
}

void list(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    DVSSwitch *sw = findSwitch(alias);
    if (arguments.given("--kernel")) return listKernel(arguments, alias, out);
    if (arguments.given("--names") && !arguments.given(kVlanOption.name)) {
        NameList names(out);
        forEachPort(sw, [&](DVSPort *port) {
            names.add(DVS_PortId(port));
            return true;
        });
        return names.finish();
    }
    listPorts(sw, arguments, out);
}

std::string_view stateName(uint32_t state) {
    constexpr std::array<std::string_view, 5> kNames = {"invalid", "live", "shadow", "zombie", "local cache"};
    return state < kNames.size() ? kNames[state] : "unknown";
}

// What the kernel answers about one port; nothing for a port that is not on this host.
struct KernelPort {
    std::optional<uint32_t> number;
    std::optional<TeamHint> hint;
    VshypBuffer info;
};

KernelPort askKernel(const std::string &alias, const std::string &portId) {
    KernelPort port;
    uint32_t number = 0;
    HYP_ReturnStatus status = call<VSDVS_DvPortIDToPortID>(alias.c_str(), portId.c_str(), &number);
    if (status == HYP_NOT_FOUND) return port;
    require(status, named(alias, portId));
    port.number = number;

    port.hint = teamHint(number, named(alias, portId));
    status = fetch<VSHYP_GetPortInfo>(port.info, alias.c_str(), portId.c_str());
    if (status != HYP_NOT_FOUND) require(status, named(alias, portId));
    return port;
}

void addCarrier(Record &record, Output &out, const SwitchFacts &facts, std::optional<size_t> carrier) {
    std::optional<std::string_view> name;
    std::string nic;
    if (carrier) {
        name = facts.uplinks[*carrier].name;
        nic = fmt::format("{} (NIC {})", *name, facts.uplinks[*carrier].nic.value_or(""));
    }
    if (out.json()) return record.member("uplink", name);
    record.field(nullptr, "uplink", std::string_view(nic));
}

void show(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &portId = arguments.text("PORT");
    DVSSwitch *sw = findVswitch(alias);
    DVSPort *port = findPort(sw, alias, portId);
    KernelPort kernel = askKernel(alias, portId);
    std::optional<Bytes> info;
    if (kernel.info) info.emplace(static_cast<const uint8_t *>(kernel.info.get()), VSHYP_PORT_INFO_SIZE);
    if (arguments.given("--raw")) {
        if (!info) throw libraryFailure(named(alias, portId) + ": kernel information", HYP_NOT_FOUND);
        return writeRaw(out, arguments.text("--raw"), *info);
    }

    const SwitchFacts facts = gatherSwitch(sw, Ask::NumbersAlone);
    const PortFacts &status = *std::ranges::find(facts.ports, port, &PortFacts::handle);
    const std::optional<std::string> why =
        status.linkUp ? std::nullopt : std::optional(linkReason(facts, status));
    const std::optional<size_t> carrier =
        kernel.hint ? carrierOf(arguments, facts, status, *kernel.hint) : std::nullopt;
    Record record(out);
    record.field("switch", "switch", alias);
    record.field("port", "port", portId);
    record.field("alias", "alias", findText(placeOf(port), QVS_KEY_PORT_ALIAS));
    record.field("state", "state", stateName(DVS_PortState != nullptr ? DVS_PortState(port) : DVS_PORT_LIVE));
    record.field("connectId", "connect id", findNumber(placeOf(port), QVS_KEY_PORT_CONNECT_ID));
    record.field("externalId", "external id", findText(placeOf(port), QVS_KEY_PORT_EXTERNAL_ID));
    record.field("blocked", "blocked", Flag{findText(placeOf(port), QVS_KEY_PORT_BLOCK) == "true"});
    record.field("number", "number", kernel.number);
    record.field("inUse", "in use", Flag{status.inUse});
    if (out.json()) {
        record.member("linkUp", Flag{status.linkUp});
        record.member("linkReason", why ? std::optional<std::string_view>(*why) : std::nullopt);
    } else {
        const std::string link = why ? fmt::format("down ({})", *why) : "up";
        record.field(nullptr, "link", std::string_view(link));
    }
    record.field("kernelBlocked", "blocked by kernel", Flag{status.kernelBlocked});
    record.field("client", "client", status.client);
    addCarrier(record, out, facts, carrier);
    addSettings(record, out, alias, port);
    std::optional<Bytes> hint;
    if (kernel.hint) hint.emplace(*kernel.hint);
    addRecord(arguments, record, out, kTeamHint, hint, "teamHintFields");
    addRecord(arguments, record, out, {kPortInfo.name, "info", "kernel information"}, info);
    record.finish();
}

void number(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("SWITCH");
    const std::string &portId = arguments.text("PORT");
    uint32_t number = 0;
    if (arguments.given("--by-id")) {
        requireFits(kSwitchIdLimit, name);
        require(call<VSDVS_DvPortIDToPortIDFromDVSID>(name.c_str(), portId.c_str(), &number),
                named(name, portId));
    } else {
        findVswitch(name);
        number = portNumber(name, portId);
    }
    if (!out.json()) return out.write(fmt::format("{}\n", number));
    Record record(out);
    record.field("switch", "switch", name);
    record.field("port", "port", portId);
    record.field("number", "number", number);
    record.finish();
}

const Command kRows[] = {
    {.words = "port add",
     .summary = "add ports to a switch",
     .arguments = {kSwitchArgument,
                   {"PORT", "identifier of a new port, at most 47 bytes", Kind::Name, false, true}},
     .options = {{.name = "--connect-id",
                  .value = "N",
                  .summary = "connection id, 32 bits (1)",
                  .excludes = "--external-id",
                  .check = checkNumber<0, UINT32_MAX>},
                 {"--external-id", "ID", "identifier of the interface outside that the one port is for"},
                 kMayExist},
     .details = "All ports are checked before the first is added.",
     .example = "qvs port add sw1 web db --connect-id 7",
     .run = writes(addPorts, touchedPorts),
     .agrees = requirePortsToAdd},
    {.words = "port remove",
     .summary = "remove ports from a switch",
     .arguments = {kSwitchArgument, {"PORT", "identifier of a port", Kind::Port, false, true}},
     .options = {kIfExists, kStrict},
     .details =
         "All ports are checked before the first is removed. A port that carries an uplink is refused.",
     .example = "qvs port remove sw1 web db",
     .run = writes(removePorts, touchedPorts),
     .agrees = requirePortsOnce},
    {.words = "port list",
     .summary = "list the ports of a switch",
     .arguments = {kSwitchArgument},
     .options = {kNames,
                 kColumnsOption,
                 kVlanOption,
                 {"--kernel", nullptr, "show the kernel's information blocks instead"}},
     .more = kListOptions,
     .details = "POLICIES are the settings that differ from the default, VLAN and mirror sessions aside.",
     .example = "qvs port list sw1 --vlan 100 --columns port,client,uplink",
     .run = reads(list),
     .agrees = choosesFrom<kPortInfo>},
    {.words = "port show",
     .summary = "show a port, its settings, the uplink teaming would choose for it, and the kernel's "
                "information block",
     .arguments = {kSwitchArgument, kPortArgument},
     .more = kRecordOptions,
     .details = "The uplink is the one that teaming would choose for a used port. Its NIC stands in the "
                "hint, of which a "
                "layout file is needed. A link that is down has the reason behind it. "
                "Hint and block are the kernel's own, 32 and 1458 bytes. The settings are those that hold, "
                "whether they are stored or not.",
     .example = "qvs port show sw1 port0",
     .run = reads(show)},
    {.words = "port block",
     .summary = "let no frame through ports",
     .arguments = {kSwitchArgument, {"PORT", "identifier of a port", Kind::Port, false, true}},
     .details = "All ports are checked before the first is blocked. qvs port unblock undoes it.",
     .example = "qvs port block sw1 web",
     .run = writes(blockPorts, touchedPorts),
     .agrees = requirePortsOnce},
    {.words = "port unblock",
     .summary = "let frames through ports that are blocked",
     .arguments = {kSwitchArgument, {"PORT", "identifier of a port", Kind::Port, false, true}},
     .example = "qvs port unblock sw1 web",
     .run = writes(unblockPorts, touchedPorts),
     .agrees = requirePortsOnce},
    {.words = "port number",
     .summary = "print the kernel's number of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {kById},
     .example = "qvs port number sw1 port0",
     .run = reads(number)},
};

}  // namespace

const std::span<const Command> kPortCommands = kRows;

}  // namespace qvs::cli
