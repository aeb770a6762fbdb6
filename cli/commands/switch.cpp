// qvs switch: distributed switches and what the kernel knows about them.
#include <qvs/qvs.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>

#include "access/library.h"
#include "access/remains.h"
#include "access/snapshot.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr uint32_t kMostMaxPorts = std::numeric_limits<int32_t>::max();

// What is known about a switch from the snapshot.
struct SwitchView {
    explicit SwitchView(DVSSwitch *handle)
        : sw(handle),
          alias(findText({Scope::Global, handle}, QVS_KEY_ALIAS)),
          id(boundedText(DVS_SwitchId(handle), sizeof(SwitchIdString))),
          className(DVS_ClassName(handle)),
          portset(findText({Scope::Host, handle}, QVS_KEY_HOST_PORTSET)),
          version(DVS_Version(handle)),
          maxPorts(DVS_GetMaxPorts(handle)),
          ports(countPorts(handle)),
          uplinks(static_cast<uint32_t>(uplinkPorts(handle).size())),
          opaque(findText({Scope::Global, handle}, QVS_KEY_OPAQUE) == "true") {}

    DVSSwitch *sw;
    std::optional<std::string_view> alias;
    std::string_view id;
    std::string_view className;
    std::optional<std::string_view> portset;
    uint32_t version;
    uint32_t maxPorts;
    uint32_t ports;  // those of the uplinks among them
    uint32_t uplinks;
    bool opaque;
};

// --- create ---

// Throws when an attribute that was given is not the one the switch has.
void requireSame(const SwitchView &sw, const Arguments &arguments, const std::string &alias) {
    auto differs = [&](const std::string &has, const auto &wanted) {
        fail(Exit::Differs, "{}: exists with {}, not {}", named(alias), has, wanted);
    };
    auto text = [&](const char *option, std::string_view what, std::string_view has) {
        if (!arguments.given(option) || has == arguments.text(option)) return;
        differs(fmt::format("{} {}", what, inQuotes(has)), inQuotes(arguments.text(option)));
    };
    auto number = [&](const char *option, fmt::format_string<uint32_t &> format, uint32_t has,
                      uint32_t wanted) {
        if (arguments.given(option) && has != wanted) differs(fmt::format(format, has), wanted);
    };
    if (sw.className != "vswitch") differs("class " + inQuotes(sw.className), "'vswitch'");
    text("--id", "identifier", sw.id);
    text("--portset", "portset", sw.portset.value_or(""));
    number("--version", "version {}", sw.version, arguments.number("--version", 0));
    uint32_t maxPorts = arguments.number("--max-ports", 0);
    number("--max-ports", "room for {} ports", sw.maxPorts, maxPorts == 0 ? QVS_MAX_PORTS_DEFAULT : maxPorts);
    if (arguments.given("--opaque") && !sw.opaque) differs("opaque false", "true");
    number("--uplinks", "{} uplinks", sw.uplinks, arguments.number("--uplinks", 0));
    number("--ports", "{} ordinary ports", sw.ports - std::min(sw.uplinks, sw.ports),
           arguments.number("--ports", 0));
}

// What a switch lacks to be a whole one: something of itself, or of its uplinks. Nothing when it is whole.
std::string halfMade(DVSSwitch *sw, const std::string &alias) {
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    std::vector<std::string> parts;
    if (kernel) parts = missingParts(sw, *kernel);
    if (!parts.empty())
        return fmt::format("{}; 'qvs switch destroy {}' removes it", fmt::join(parts, ", "), shown(alias));
    parts = remainsOf(sw, std::nullopt);
    if (parts.empty()) return {};
    return fmt::format("{}; 'qvs switch repair {}' mends that", fmt::join(parts, ", "), shown(alias));
}

// Whether the switch is there as it is wanted. Throws when it is there and may not be, is half made, or
// differs.
bool isThere(const Arguments &arguments, const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr) return false;
    std::string lacking = halfMade(sw, alias);
    if (!arguments.given("--may-exist")) {
        throw libraryFailure(named(alias), HYP_EXISTS, lacking.empty() ? "" : "it is half made: " + lacking);
    }
    if (!lacking.empty()) fail(Exit::Differs, "{}: exists, but is half made: {}", named(alias), lacking);
    requireSame(SwitchView(sw), arguments, alias);
    return true;
}

// A switch that lacks parts or ports may be one that another process is still creating.
bool isInTheMaking(const Arguments &arguments, const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr || !arguments.given("--may-exist")) return false;
    uint64_t wanted = uint64_t{arguments.number("--uplinks", 0)} + arguments.number("--ports", 0);
    return countPorts(sw) < wanted || !halfMade(sw, alias).empty();
}

// Throws when the kernel has a portset of this name, whoever made it.
void requireNoPortset(const std::string &portset, const std::string &alias) {
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    if (!kernel || !hasPortset(*kernel, portset)) return;
    fail(Exit::Differs,
         "{}: portset {} exists in the kernel; name another with --portset, or remove it with 'qvs switch "
         "destroy {}' "
         "if nothing needs it",
         named(alias), inQuotes(portset), shown(portset));
}

// A switch that stands in the way of a new one, and what to do about it.
void requireFree(const std::string &portset, const Arguments &arguments, const std::string &alias) {
    forEachSwitch([&](DVSSwitch *sw) {
        std::string owner = inQuotes(findText({Scope::Global, sw}, QVS_KEY_ALIAS).value_or("-"));
        if (findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET) == portset) {
            throw libraryFailure(named(alias) + ": portset " + inQuotes(portset), HYP_EXISTS,
                                 "it belongs to switch " + owner + ", name another with --portset");
        }
        if (arguments.given("--id") && DVS_SwitchId(sw) == arguments.text("--id")) {
            throw libraryFailure(named(alias) + ": identifier " + inQuotes(arguments.text("--id")),
                                 HYP_EXISTS, "it belongs to switch " + owner);
        }
        return true;
    });
}

// The library makes lists of all uplinks, and the switch, before the first of them is refused.
void requireRoom(const Arguments &arguments, const std::string &alias) {
    uint32_t given = arguments.number("--max-ports", 0);
    uint32_t maxPorts = given == 0 ? QVS_MAX_PORTS_DEFAULT : given;
    uint64_t wanted = uint64_t{arguments.number("--uplinks", 0)} + arguments.number("--ports", 0);
    if (wanted <= maxPorts) return;
    throw libraryFailure(named(alias), HYP_LIMIT_EXCEEDED,
                         fmt::format("--max-ports has to hold uplinks and ports, and is {}", maxPorts));
}

bool anyNameless() {
    bool any = false;
    forEachSwitch([&](DVSSwitch *sw) { return !(any = !findText({Scope::Global, sw}, QVS_KEY_ALIAS)); });
    return any;
}

std::string_view hintFor(HYP_ReturnStatus status, const Arguments &arguments) {
    switch (status) {
        case HYP_BAD_PARAM:
            return "the kernel's shell would interpret the portset name, give a plain one with --portset";
        case HYP_EXISTS:
            if (anyNameless())
                return "a half-made switch without alias may have the identifier; 'qvs switch repair' "
                       "removes it";
            return arguments.given("--id") ? ""
                                           : "the identifier is made from the first 15 bytes, "
                                             "give another with --id";
        default:
            return {};
    }
}

// Runs of qvs that create the switch have been waited for; another program gets a moment.
constexpr int kLooksAtOthers = 15;

void create(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("ALIAS");
    const std::string portset = arguments.given("--portset") ? arguments.text("--portset") : alias;
    requireFits(kAliasLimit, alias);
    requireFits(kPortsetLimit, portset);
    if (arguments.given("--id")) requireFits(kSwitchIdLimit, arguments.text("--id"));
    uint32_t version = arguments.number("--version", QVS_SWITCH_VERSION_DEFAULT);
    uint32_t maxPorts = arguments.number("--max-ports", 0, 0, kMostMaxPorts);
    auto nowThere = [&] { return isThere(arguments, alias); };
    bool there = isInTheMaking(arguments, alias) ? comesTrue(nowThere, kLooksAtOthers) : nowThere();
    if (!there) {
        requireRoom(arguments, alias);
        requireFree(portset, arguments, alias);
        HYP_ReturnStatus status = callWhole<VSDVS_CreateVSwitch>(
            alias.c_str(), arguments.orNull("--id"), arguments.orNull("--portset"), version,
            arguments.given("--opaque") ? 1 : 0, maxPorts, arguments.number("--uplinks", 0),
            arguments.number("--ports", 0));
        // The kernel refuses a second portset of a name without saying why.
        bool taken = status == HYP_EXISTS || status == HYP_FAILURE;
        there = taken && arguments.given("--may-exist") && comesTrue(nowThere);
        if (!there && status == HYP_FAILURE) requireNoPortset(portset, alias);
        if (!there && status != HYP_OK)
            throw libraryFailure(named(alias), status, hintFor(status, arguments));
    }
    reportSwitch(out, alias, !there);
}

bool isHalfMade(const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    return sw != nullptr && kernel && !missingParts(sw, *kernel).empty();
}

// True unless another process was quicker.
bool destroySwitch(const std::string &alias) {
    auto isGone = [&] { return DVSState_SwitchFindByAlias(alias.c_str()) == nullptr; };
    findVswitch(alias);
    HYP_ReturnStatus status = callWhole<VSDVS_DestroyVSwitch>(alias.c_str());
    if (status != HYP_NOT_FOUND) {
        require(status, named(alias));
        return true;
    }
    // It is gone, or half made and so without the association that the library did not find.
    if (!comesTrue([&] { return isGone() || isHalfMade(alias); })) require(status, named(alias));
    if (isGone()) return false;
    removeHalfMade(findVswitch(alias), named(alias));
    return true;
}

void destroy(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    bool there =
        DVSState_SwitchFindByAlias(alias.c_str()) != nullptr ? destroySwitch(alias) : removeNameless(alias);
    if (!there && !arguments.given("--if-exists")) throw libraryFailure(named(alias), HYP_NOT_FOUND);
    reportSwitch(out, alias, there);
}

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
    record.block("info", "kernel information", info);
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
    record.block("info", "kernel information", Bytes(block));
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
    bool byAlias = oneGiven(arguments, {"--portset", "--alias"}) == "--alias";
    const std::string alias =
        byAlias ? arguments.text("--alias") : aliasOfPortset(arguments.text("--portset"));
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
    record.block("lagTable", "link aggregation table", bytes);
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
     .arguments = {{"ALIAS", "name of the new switch, at most 80 bytes"}},
     .options = {{"--id", "ID", "identifier, at most 63 bytes (made from the alias)"},
                 {"--portset", "NAME", "name of the data path on this host, at most 127 bytes (the alias)"},
                 {"--version", "N", "version of the switch (105)"},
                 {"--opaque", nullptr, "its ports are managed from outside"},
                 {"--max-ports", "N", "port capacity, at most 2147483647 (128)"},
                 {"--uplinks", "N", "uplinks to create (0)"},
                 {"--ports", "N", "ports to create (0)"},
                 kMayExist},
     .details = "A switch that exists is left as it is by --may-exist, and compared in what is given. One "
                "that is half "
                "made is refused.",
     .example = "qvs switch create sw1 --uplinks 2 --ports 8",
     .run = writes(create)},
    {.words = "switch destroy",
     .summary = "destroy a switch with its ports and its portset",
     .arguments = {kSwitchArgument},
     .options = {kIfExists},
     .details = "What a change that was killed or not undone left of a switch is removed as well. SWITCH is "
                "then its "
                "alias, the identifier of a switch without alias, or the name of a portset without switch.",
     .example = "qvs switch destroy sw1 --if-exists",
     .run = writes(destroy)},
    {.words = "switch repair",
     .summary = "remove or mend what changes that were killed or not undone left half made",
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
     .run = writes(repair),
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
     .options = {kRaw},
     .details = "The block is the kernel's own, 220 bytes, and is shown as it is.",
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
     .options = {kRaw},
     .example = "qvs switch info sw1 --raw sw1.bin",
     .run = reads(info)},
    {.words = "switch lag-table",
     .summary = "show the kernel's link aggregation table",
     .arguments = {kSwitchArgument},
     .options = {kRaw},
     .details = "The table is the kernel's own, 35588 bytes, and is shown as it is.",
     .example = "qvs switch lag-table sw1 --raw lag.bin",
     .run = reads(lagTable)},
    {.words = "switch refresh-numa",
     .summary = "have the kernel place the devices of a switch on NUMA nodes anew",
     .arguments = {kSwitchArgument},
     .example = "qvs switch refresh-numa sw1",
     .run = writes(refreshNuma)},
};

}  // namespace

const std::span<const Command> kSwitchCommands = kRows;

}  // namespace qvs::cli
