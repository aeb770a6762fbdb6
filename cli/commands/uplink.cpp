// SPDX-License-Identifier: Apache-2.0
// qvs uplink: the uplinks of a switch, their ports and their links.
#include <qvs/qvs.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <unordered_set>

#include "access/library.h"
#include "access/opaque.h"
#include "access/overview.h"
#include "access/remains.h"
#include "access/setting.h"
#include "commands/nouns.h"
#include "commands/uplink.h"
#include "config/library/host.h"
#include "config/library/lock.h"
#include "config/library/snapshot.h"
#include "config/library/uplink_list.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

UplinkState snapshotUplinks(const std::string &alias) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    return sw != nullptr ? uplinkState(sw) : UplinkState{};
}

}  // namespace

std::vector<Uplink> readUplinks(const std::string &alias, std::string *broken) {
    void *rawNames = nullptr;
    void *rawPorts = nullptr;
    auto read = [&] { return call<VSDVS_GetSwitchUplinkPorts>(alias.c_str(), &rawNames, &rawPorts); };
    // A switch without lists shows like one of whose uplinks a port is missing.
    auto disagree = [&](HYP_ReturnStatus status) {
        return status == HYP_FAILURE || (status == HYP_NOT_FOUND && snapshotUplinks(alias).listed);
    };
    HYP_ReturnStatus status = read();
    // Another process may be between port and lists.
    if (disagree(status)) awaitOtherRuns(alias);
    for (int i = 0; disagree(status) && i < 10; i++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        requireState(loadSnapshot());
        status = read();
    }
    VsdvsBuffer names(rawNames);
    VsdvsBuffer ports(rawPorts);
    if (disagree(status)) {
        std::string hint = mendingHint(alias);
        if (hint.empty()) throw libraryFailure(named(alias), status);
        if (broken == nullptr) fail(Exit::Failed, "{}: {}", named(alias), hint);
        *broken = hint;
        return snapshotUplinks(alias).whole;
    }
    if (status == HYP_NOT_FOUND) return {};
    require(status, named(alias));
    // The one success without lists: there was no memory to sort them.
    if (!names || !ports) throw libraryFailure(named(alias), HYP_NO_MEMORY);

    // The library has checked both lengths against the count.
    const auto nameList = UplinkNames::checked(names.get());
    const auto portList = UplinkPorts::checked(ports.get());
    std::vector<Uplink> uplinks;
    for (size_t i = 0; i < nameList.size(); i++)
        uplinks.push_back({std::string(nameList[i]), std::string(portList[i])});
    return uplinks;
}

namespace {

// Refuses names that are given twice or are too long.
template <const Limit &limit>
void requireUplinksOnce(const Arguments &arguments) {
    std::unordered_set<std::string_view> seen;
    for (const std::string &uplink : arguments.all("UPLINK")) {
        requireFits(limit, uplink);
        if (!seen.insert(uplink).second) fail(Exit::Usage, "uplink {}: given twice", inQuotes(uplink));
    }
}

void requireUplinksToSet(const Arguments &arguments) {
    oneGiven(arguments, {"UPLINK", "--count"});
    requireUplinksOnce<kUplinkLimit>(arguments);
}

// The port identifier that the kernel has behind a NIC.
std::string kernelPortOf(const std::string &nic, std::string_view subject) {
    if (nic.empty() || nic.size() > kLinkUplinkLimit.bytes) return {};
    char identity[VSHYP_UPLINK_DV_PORT_ID_SIZE] = {};
    HYP_ReturnStatus status = call<VSHYP_GetUplinkDVPortID>(nic.c_str(), identity);
    if (status == HYP_NOT_FOUND) return {};
    require(status, subject);
    return std::string(boundedText(identity, sizeof identity));
}

std::optional<Flag> linkFlag(std::optional<bool> up) {
    if (!up) return std::nullopt;
    return linkState(*up);
}

std::optional<std::string_view> unlessEmpty(std::string_view text) {
    if (text.empty()) return std::nullopt;
    return text;
}

constexpr RecordKind kUplinkEntry{"uplink", "entry", "uplink"};

void listKernel(const Arguments &arguments, const std::string &portset, const std::string &alias,
                Output &out) {
    auto ask = [&] { return fetched<VSHYP_GetUplinks>(named(alias), portset.c_str()); };
    printList(arguments, out, boundedList(ask, VSHYP_UPLINK_ENTRY_SIZE, "uplinks"), kUplinkEntry);
}

void list(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    findVswitch(alias);
    std::string portset = portsetOf(alias);
    if (arguments.given("--kernel")) return listKernel(arguments, portset, alias, out);
    std::string broken;
    std::vector<Uplink> uplinks = readUplinks(alias, &broken);
    DVSSwitch *sw = findVswitch(alias);
    auto failBroken = [&] {
        if (!broken.empty()) fail(Exit::Failed, "{}: {}", named(alias), broken);
    };
    if (arguments.given("--names")) {
        NameList names(out);
        for (const Uplink &uplink : uplinks)
            names.add(uplink.name);
        names.finish();
        return failBroken();
    }
    Listing listing(out, {{"uplink", "UPLINK"},
                          {"port", "PORT"},
                          {"linkUp", "LINK"},
                          {"lacpUp", "LACP"},
                          {"nic", "NIC"},
                          {"kernelPort", "KERNEL PORT"}});
    for (const Uplink &uplink : uplinks) {
        std::string subject = namedUplink(alias, uplink.name);
        DVSPort *port = lookUpPort(sw, uplink.port);
        std::string nic(port != nullptr ? portStatus(port).client.value_or("") : "");
        auto link = uplinkLink(portset, uplink.port, subject);
        auto lacp = uplinkLacpLink(portset, uplink.port, subject);
        std::string kernelPort = kernelPortOf(nic, subject);
        listing.row(uplink.name, uplink.port, linkFlag(link), linkFlag(lacp), unlessEmpty(nic),
                    unlessEmpty(kernelPort));
    }
    listing.finish();
    failBroken();
}

}  // namespace

void checkLinksLeft(const std::string &alias, const std::vector<std::string> &taken, bool strict) {
    DVSSwitch *sw = findVswitch(alias);
    const auto portset = findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET);
    if (!portset) return;
    const auto isTaken = [&](std::string_view name) { return std::ranges::find(taken, name) != taken.end(); };
    bool losesLink = false;
    for (const Uplink &uplink : uplinkState(sw).whole) {
        const std::optional<bool> up =
            uplinkLink(std::string(*portset), uplink.port, namedUplink(alias, uplink.name));
        if (!up.value_or(false)) continue;
        DVSPort *port = lookUpPort(sw, uplink.port);
        const std::string_view nic = port != nullptr ? portStatus(port).client.value_or("") : "";
        if (!isTaken(uplink.name) && !isTaken(uplink.port) && (nic.empty() || !isTaken(nic))) return;
        losesLink = true;
    }
    if (losesLink) warnOrFail(strict, fmt::format("{}: no uplink with a link remains", named(alias)));
}

namespace {

// An uplink's administrative state cannot be read, its link can. A link that is up needs nothing to be taken
// up; a link that is down may still be up administratively, so taking it down is always asked of the kernel.
void setLinks(const Arguments &arguments, Output &out, bool up) {
    const std::string &alias = arguments.text("SWITCH");
    const std::vector<std::string> &uplinks = arguments.all("UPLINK");
    findVswitch(alias);
    std::string portset = portsetOf(alias);

    std::vector<bool> isUp;
    for (const std::string &uplink : uplinks) {
        uint32_t state = 0;
        require(call<VSHYP_GetUplinkLinkState>(portset.c_str(), uplink.c_str(), &state),
                namedUplink(alias, uplink));
        isUp.push_back(state != 0);
    }
    if (!up) checkLinksLeft(alias, uplinks, false);
    ChangeList changes(out, alias, "uplinks", "uplink");
    for (size_t i = 0; i < uplinks.size(); i++) {
        if (!up || !isUp[i]) {
            require(call<VSHYP_SetUplinkAdminLinkState>(portset.c_str(), uplinks[i].c_str(), up ? 1 : 0),
                    namedUplink(alias, uplinks[i]));
        }
        changes.add(uplinks[i], isUp[i] != up);
    }
}

void takeUp(const Arguments &arguments, Output &out) {
    setLinks(arguments, out, true);
}
void takeDown(const Arguments &arguments, Output &out) {
    setLinks(arguments, out, false);
}

constexpr Argument kUplinks{"UPLINK", "name of an uplink", Kind::Uplink, false, true};
constexpr const char *kAddDetails =
    "uplink up and uplink down take names of at most 31 bytes, and no link is shown for a longer one. Runs "
    "of qvs wait for one another; another program that changes the uplinks meanwhile may store its lists "
    "over these.";
constexpr const char *kLinkDetails =
    "UPLINK is an uplink of the switch or the NIC that carries it, at most 31 bytes. The administrative "
    "state cannot be read: changed means that the link was not in that state.";

const Command kRows[] = {
    {.words = "uplink list",
     .summary = "list the uplinks of a switch with their ports, links and NICs",
     .arguments = {kSwitchArgument},
     .options = {kNames, {"--kernel", nullptr, "show the kernel's entries instead"}},
     .more = kListOptions,
     .details = "A link that the kernel does not answer for is shown as -. Lists that do not agree with the "
                "ports are a "
                "failure behind the uplinks that are whole; qvs switch repair mends them.",
     .example = "qvs uplink list sw1",
     .run = reads(list),
     .agrees = choosesFrom<kUplinkEntry>},
    {.words = "uplink add",
     .summary = "add uplinks to a switch",
     .arguments = {kSwitchArgument,
                   {"UPLINK", "name of a new uplink and its port, at most 47 bytes", Kind::Name, false,
                    true}},
     .options = {kMayExist},
     .details = kAddDetails,
     .example = "qvs uplink add sw1 uplink2 --may-exist",
     .run = writes(addUplinks),
     .agrees = requireUplinksOnce<kUplinkLimit>},
    {.words = "uplink remove",
     .summary = "remove uplinks and their ports from a switch",
     .arguments = {kSwitchArgument, kUplinks},
     .options = {kIfExists, kStrict},
     .details = "Removing is not undone when it fails half way; uplink list then says what is left.",
     .example = "qvs uplink remove sw1 uplink2",
     .run = writes(removeUplinks),
     .agrees = requireUplinksOnce<kUplinkLimit>},
    {.words = "uplink set",
     .summary = "give a switch without uplinks all of them at once",
     .arguments = {kSwitchArgument,
                   {"UPLINK", "name of a new uplink and its port, at most 47 bytes", Kind::Name, true, true}},
     .options = {{.name = "--count",
                  .value = "N",
                  .summary = "this many, called uplink0, uplink1...",
                  .check = checkNumber<0, UINT32_MAX>}},
     .example = "qvs uplink set sw1 left right",
     .run = writes(setUplinks),
     .agrees = requireUplinksToSet},
    {.words = "uplink clear",
     .summary = "forget the uplinks of a switch and leave their ports as ordinary ones",
     .arguments = {kSwitchArgument},
     .options = {kStrict},
     .details = "A port that stays as it was made for its uplink, and unused, counts as left over: qvs "
                "switch repair "
                "removes it.",
     .example = "qvs uplink clear sw1",
     .run = writes(clearUplinks)},
    {.words = "uplink up",
     .summary = "enable uplinks",
     .arguments = {kSwitchArgument, kUplinks},
     .details = kLinkDetails,
     .example = "qvs uplink up sw1 uplink0",
     .run = lasting(writes(takeUp)),
     .agrees = requireUplinksOnce<kLinkUplinkLimit>},
    {.words = "uplink down",
     .summary = "disable uplinks",
     .arguments = {kSwitchArgument, kUplinks},
     .details = kLinkDetails,
     .example = "qvs uplink down sw1 uplink0",
     .run = lasting(writes(takeDown)),
     .agrees = requireUplinksOnce<kLinkUplinkLimit>},
};

}  // namespace

const std::span<const Command> kUplinkCommands = kRows;

}  // namespace qvs::cli
