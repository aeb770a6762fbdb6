// SPDX-License-Identifier: Apache-2.0
// qvs switch: distributed switches and what the kernel knows about them.
#include <qvs/qvs.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "access/remains.h"
#include "commands/nouns.h"
#include "commands/switch.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

// --- list, show, find ---

void listKernelNames(Listing &listing, const char *kind, uint32_t selector, uint32_t entrySize) {
    auto ask = [&] { return fetched<VSHYP_GetSwitches>("switches of the kernel", selector); };
    KernelList list = boundedList(ask, entrySize, "switches");
    for (uint32_t i = 0; i < list.count; i++) {
        listing.row(std::string_view(kind), boundedText(list.entry(i).data(), entrySize));
    }
}

void listKernel(Output &out) {
    Listing listing(out, {{"kind", "KIND"}, {"name", "NAME"}});
    listKernelNames(listing, "portset", VSHYP_SELECT_SWITCH_NAMES, VSHYP_SWITCH_NAME_ENTRY_SIZE);
    listKernelNames(listing, "alias", VSHYP_SELECT_SWITCH_NAMES - 1, VSHYP_SWITCH_ALIAS_ENTRY_SIZE);
    listing.finish();
}

void list(const Arguments &arguments, Output &out) {
    if (arguments.given("--kernel")) return listKernel(out);
    if (arguments.given("--names")) {
        NameList names(out);
        forEachSwitch([&](DVSSwitch *sw) {
            if (auto alias = findText({Scope::Global, sw}, QVS_KEY_ALIAS)) names.add(*alias);
            return true;
        });
        return names.finish();
    }
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    std::vector<std::vector<std::string>> remains;
    forEachSwitch([&](DVSSwitch *sw) {
        remains.push_back(remainsOf(sw, kernel));
        return true;
    });
    bool anything =
        std::any_of(remains.begin(), remains.end(), [](const auto &words) { return !words.empty(); });
    Listing listing(out, {{"alias", "ALIAS"},
                          {"id", "ID"},
                          {"class", "CLASS"},
                          {"version", "VERSION"},
                          {"maxPorts", nullptr},
                          {"ports", "PORTS"},
                          {"uplinks", "UPLINKS"},
                          {"portset", "PORTSET"},
                          {"opaque", nullptr},
                          {"remains", anything ? "LEFT HALF MADE" : nullptr}});
    auto remain = remains.begin();
    forEachSwitch([&](DVSSwitch *handle) {
        SwitchView sw(handle);
        std::vector<std::string_view> words(remain->begin(), remain->end());
        std::string joined = fmt::format("{}", fmt::join(*remain++, ", "));
        if (out.json()) {
            listing.row(sw.alias, sw.id, sw.className, sw.version, sw.maxPorts, sw.ports, sw.uplinks,
                        sw.portset, Flag{sw.opaque}, Words{words});
        } else {
            listing.row(sw.alias, sw.id, sw.className, sw.version, sw.maxPorts, sw.ports, sw.uplinks,
                        sw.portset, Flag{sw.opaque}, std::string_view(joined));
        }
        return true;
    });
    listing.finish();
}

constexpr RecordKind kSwitchInfo{"switch-info", "info", "kernel information"};

// The kernel's information block; none for a switch that is not on this host.
VshypBuffer switchInfo(const std::string &alias) {
    VshypBuffer info;
    HYP_ReturnStatus status = fetch<VSHYP_GetSwitchInfo>(info, alias.c_str());
    if (status == HYP_NOT_FOUND) return nullptr;
    require(status, named(alias));
    return info;
}

std::optional<Bytes> blockOf(const VshypBuffer &buffer, size_t size) {
    if (!buffer) return std::nullopt;
    return Bytes(static_cast<const uint8_t *>(buffer.get()), size);
}

void show(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    SwitchView sw(findSwitch(alias));
    VshypBuffer buffer = switchInfo(alias);
    std::optional<Bytes> info = blockOf(buffer, VSHYP_SWITCH_INFO_SIZE);
    if (arguments.given("--raw")) {
        if (!info) throw libraryFailure(named(alias) + ": kernel information", HYP_NOT_FOUND);
        return writeRaw(out, arguments.text("--raw"), *info);
    }
    Record record(out);
    record.field("alias", "alias", sw.alias);
    record.field("id", "id", sw.id);
    record.field("class", "class", sw.className);
    record.field("version", "version", sw.version);
    record.field("maxPorts", "max ports", sw.maxPorts);
    record.field("ports", "ports", sw.ports);
    record.field("uplinks", "uplinks", sw.uplinks);
    record.field("portset", "portset", sw.portset);
    record.field("opaque", "opaque", Flag{sw.opaque});
    addRecord(arguments, record, out, kSwitchInfo, info);
    record.finish();
}

void info(const Arguments &arguments, Output &out) {
    const std::string &portset = arguments.text("PORTSET");
    requireFits(kPortsetLimit, portset);
    std::array<uint8_t, VSHYP_SWITCH_INFO_SIZE> block{};
    require(call<VSHYP_GetVSInfo>(portset.c_str(), block.data()), "portset " + inQuotes(portset));
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), block);
    Record record(out);
    record.field("portset", "portset", portset);
    addRecord(arguments, record, out, kSwitchInfo, Bytes(block));
    record.finish();
}

// The identifier that the kernel has for an alias, which it knows only on its own host.
std::optional<std::string> kernelId(const std::string &alias) {
    if (alias.size() > kAliasLimit.bytes) return std::nullopt;
    SwitchIdString id{};
    HYP_ReturnStatus status = call<VSHYP_DVSAliasToSwitchId>(alias.c_str(), id);
    if (status == HYP_NOT_FOUND) return std::nullopt;
    require(status, named(alias));
    return std::string(boundedText(id, sizeof id));
}

std::string aliasOfPortset(const std::string &portset) {
    SwitchAliasName alias{};
    require(call<DVSPortsetNameToAlias>(portset.c_str(), alias), "portset " + inQuotes(portset));
    if (alias[0] == '\0') throw libraryFailure("portset " + inQuotes(portset), HYP_NOT_FOUND);
    return std::string(boundedText(alias, sizeof alias));
}

void find(const Arguments &arguments, Output &out) {
    const std::string alias =
        arguments.given("--alias") ? arguments.text("--alias") : aliasOfPortset(arguments.text("--portset"));
    SwitchView sw(findSwitch(alias));
    std::optional<std::string> fromKernel = kernelId(alias);
    Record record(out);
    record.field("alias", "alias", sw.alias);
    record.field("id", "id", sw.id);
    record.field("kernelId", "kernel id", std::optional<std::string_view>(fromKernel));
    record.field("portset", "portset", portsetOf(alias));
    record.finish();
}

// --- kernel requests ---

void lagTable(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    findSwitch(alias);
    VshypBuffer table;
    require(fetch<VSHYP_GetLAGTable>(table, portsetOf(alias).c_str()), named(alias));
    std::optional<Bytes> bytes = blockOf(table, VSHYP_LAG_TABLE_SIZE);
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), *bytes);
    Record record(out);
    record.field("switch", "switch", alias);
    addRecord(arguments, record, out, {"lag-table", "lagTable", "link aggregation table"}, bytes);
    record.finish();
}

void refreshNuma(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    findVswitch(alias);
    require(call<VSHYP_RefreshDevNUMAInfo>(portsetOf(alias).c_str()), named(alias));
    reportSwitch(out, alias, true);
}

const Command kRows[] = {
    {.words = "switch create",
     .summary = "create a switch, its uplinks uplink0, uplink1... and its ports port0, port1...",
     .arguments = {{.name = "ALIAS",
                    .summary = "name of the new switch, at most 80 bytes",
                    .kind = Kind::Name,
                    .check = checkFits<kAliasLimit>}},
     .options = {{.name = "--id",
                  .value = "ID",
                  .summary = "identifier, at most 63 bytes (made from the alias)",
                  .check = checkFits<kSwitchIdLimit>},
                 {.name = "--portset",
                  .value = "NAME",
                  .summary = "name of the data path on this host, at most 127 bytes (the alias)",
                  .check = checkFits<kPortsetLimit>},
                 {.name = "--version",
                  .value = "N",
                  .summary = "version of the switch (105)",
                  .check = checkNumber<0, UINT32_MAX>},
                 {"--opaque", nullptr, "its ports are managed from outside"},
                 {.name = "--max-ports",
                  .value = "N",
                  .summary = "port capacity, at most 2147483647 (128)",
                  .check = checkNumber<0, kMostMaxPorts>},
                 {.name = "--uplinks",
                  .value = "N",
                  .summary = "uplinks to create (0)",
                  .check = checkNumber<0, UINT32_MAX>},
                 {.name = "--ports",
                  .value = "N",
                  .summary = "ports to create (0)",
                  .check = checkNumber<0, UINT32_MAX>},
                 kMayExist},
     .details = "A switch that exists is left as it is by --may-exist, and compared in what is given. One "
                "that is half "
                "made is refused.",
     .example = "qvs switch create sw1 --uplinks 2 --ports 8",
     .run = writes(createSwitch)},
    {.words = "switch destroy",
     .summary = "destroy a switch with its ports and its portset",
     .arguments = {kSwitchArgument},
     .options = {kIfExists},
     .details = "What a change that was killed or not undone left of a switch is removed as well. SWITCH is "
                "then its "
                "alias, the identifier of a switch without alias, or the name of a portset without switch.",
     .example = "qvs switch destroy sw1 --if-exists",
     .run = writes(destroySwitch)},
    {.words = "switch repair",
     .summary = "clean up after an interrupted change",
     .arguments = {{"SWITCH", "alias of the only switch to repair", Kind::Switch, true}},
     .options = {{"--dry-run", nullptr, "show what would be done, and do nothing"}},
     .details =
         "A switch that lacks its alias, its portset or its association with it is removed, and so is a "
         "portset that belongs to no switch, unless SWITCH is given. An uplink is whole when its name and "
         "its "
         "port are listed and the port is there; other entries are dropped, and ports that were made for "
         "uplinks, are in no list and are as they were made are removed unless in use. Changes of other runs "
         "wait meanwhile; other programs should make none.",
     .example = "qvs switch repair --dry-run",
     .run = lasting(writes(repair)),
     .guard = Guard::Everything},
    {.words = "switch list",
     .summary = "list the switches",
     .options = {kNames, {"--kernel", nullptr, "list the portset names and aliases the kernel answers"}},
     .details =
         "PORTS counts all ports, those of the uplinks among them. A last column says what is half made "
         "where "
         "something is; another process may be at it, else switch destroy or switch repair is the remedy.",
     .example = "qvs switch list --json",
     .run = reads(list)},
    {.words = "switch show",
     .summary = "show a switch and the kernel's information block",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .details = "The block is the kernel's own, 220 bytes.",
     .example = "qvs switch show sw1",
     .run = reads(show)},
    {.words = "switch find",
     .summary = "find a switch by portset name or alias",
     .options = {{"--portset", "NAME", "the switch whose portset name NAME begins with", Kind::Word, false,
                  Need::Choice},
                 {"--alias", "NAME", "the switch with this alias", Kind::Switch, false, Need::Choice}},
     .details = "The kernel id is the identifier that the kernel has for the alias on this host.",
     .example = "qvs switch find --portset sw1",
     .run = reads(find)},
    {.words = "switch info",
     .summary = "show the kernel's information block of a portset",
     .arguments = {{"PORTSET", "name of the data path"}},
     .more = kRecordOptions,
     .example = "qvs switch info sw1 --raw sw1.bin",
     .run = reads(info)},
    {.words = "switch lag-table",
     .summary = "show the kernel's link aggregation table",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .details = "The table is the kernel's own, 35588 bytes.",
     .example = "qvs switch lag-table sw1 --raw lag.bin",
     .run = reads(lagTable)},
    {.words = "switch refresh-numa",
     .summary = "have the kernel place the devices of a switch on NUMA nodes anew",
     .arguments = {kSwitchArgument},
     .example = "qvs switch refresh-numa sw1",
     .run = lasting(writes(refreshNuma))},
};

}  // namespace

const std::span<const Command> kSwitchCommands = kRows;

}  // namespace qvs::cli
