// SPDX-License-Identifier: Apache-2.0
// qvs mcast, port mcast, rcf: multicast filtering, the addresses that are always let in, and the receive
// filter.
#include <qvs/qvs.h>

#include <algorithm>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kMode{"multicast filter mode", QVS_KEY_MULTICAST_FILTER};
constexpr Policy kList{"multicast addresses", QVS_KEY_MULTICAST_ADDRESSES};
constexpr Policy kPortList{"multicast addresses", QVS_KEY_PORT_MULTICAST_OVERRIDE};
constexpr Policy kRcf{"receive filter type", QVS_KEY_RCF_TYPE};

constexpr const char *kModes[] = {"legacy", "snooping"};
constexpr const char *kStoredModes[] = {"legacyFiltering", "snooping"};
constexpr const char *kRcfTypes[] = {"cbpf", "ebpf"};

// --- the filter mode ---

void getMode(const Arguments &arguments, Output &out) {
    PolicyPlace place(kMode, arguments);
    uint32_t mode = 0;
    if (arguments.given("--kernel")) {
        require(call<VSHYP_GetMcastFilterMode>(portsetOf(place.name()).c_str(), &mode), place.named());
    } else {
        place.requireRead(call<VSDVS_GetMcastFilterMode>(place.name(), &mode));
    }
    printValue(out, place, "mode", std::string_view(nameOf(kModes, mode)));
}

void setMode(const Arguments &arguments, Output &out) {
    uint32_t mode = chosen(arguments, "MODE", kModes);
    PolicyPlace place(kMode, arguments);
    bool same = place.holdsText(kStoredModes[mode]);
    HYP_ReturnStatus status = same ? HYP_OK : call<VSDVS_SetMcastFilterMode>(place.name(), mode);
    if (status == HYP_NOT_SUPPORTED)
        throw libraryFailure(place.named(), status, "switches of version 107 and later have it elsewhere");
    storePolicy(out, place, same, [&] { return status; });
}

// --- the addresses ---

std::vector<uint8_t> givenAddresses(const Arguments &arguments) {
    oneGiven(arguments, {"MAC", "--empty"});
    const std::vector<std::string> &words = arguments.all("MAC");
    if (words.size() > VSDVS_MCAST_MAX_ADDRESSES) {
        fail(Exit::Usage, "{} multicast addresses, at most {} fit", words.size(), VSDVS_MCAST_MAX_ADDRESSES);
    }
    std::vector<uint8_t> list = {static_cast<uint8_t>(words.size())};
    for (const std::string &word : words) {
        std::optional<MacAddress> address = parseMac(word);
        if (!address) fail(Exit::Usage, "{} is no MAC address, like 01:00:5e:00:00:01", inQuotes(word));
        list.insert(list.end(), address->begin(), address->end());
    }
    return list;
}

void showAddresses(Output &out, const PolicyPlace &place, const void *record) {
    const auto *list = static_cast<const uint8_t *>(record);
    std::vector<std::string> addresses;
    for (size_t i = 0; i < list[0]; i++)
        addresses.push_back(macText({list + 1 + sizeof(MacAddress) * i, sizeof(MacAddress)}));
    if (!out.json()) {
        for (const std::string &address : addresses)
            out.write(address + "\n");
        return;
    }
    Record fields(out);
    place.describe(fields);
    fields.field("addresses", "addresses", Words{{addresses.begin(), addresses.end()}});
    fields.finish();
}

void getList(const Arguments &arguments, Output &out) {
    PolicyPlace place(kList, arguments);
    void *list = nullptr;
    place.requireRead(call<VSDVS_GetMcastUserLegacyEntries>(place.name(), &list));
    VsdvsBuffer buffer(list);
    showAddresses(out, place, list);
}

void setList(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> list = givenAddresses(arguments);
    PolicyPlace place(kList, arguments);
    storePolicy(out, place, place.holds(list), [&] {
        return call<VSDVS_SetMcastUserLegacyEntries>(place.name(), uint32_t{list[0]}, list.data() + 1);
    });
}

void getPortList(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPortList, arguments);
    void *list = nullptr;
    place.requireRead(call<VSDVS_GetPortMcastUserLegacyEntries>(place.name(), place.port(), &list));
    VsdvsBuffer buffer(list);
    showAddresses(out, place, list);
}

void setPortList(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> list = givenAddresses(arguments);
    PolicyPlace place(kPortList, arguments);
    storePolicy(out, place, place.holds(list), [&] {
        return call<VSDVS_SetPortMcastUserLegacyEntries>(place.name(), place.port(), uint32_t{list[0]},
                                                         list.data() + 1);
    });
}

// --- the receive filter ---

void getRcf(const Arguments &arguments, Output &out) {
    PolicyPlace place(kRcf, arguments);
    uint32_t type = 0;
    require(call<VSDVS_GetRCFType>(place.name(), &type), place.named());
    printValue(out, place, "type", std::string_view(kRcfTypes[type]));
}

void setRcf(const Arguments &arguments, Output &out) {
    uint32_t type = chosen(arguments, "TYPE", kRcfTypes);
    PolicyPlace place(kRcf, arguments);
    storePolicy(out, place, place.holdsText(kRcfTypes[type]),
                [&] { return call<VSDVS_SetRCFType>(place.name(), type); });
}

constexpr Argument kAddresses{"MAC", "an address, like 01:00:5e:00:00:01; at most 25", Kind::Word, true,
                              true};
constexpr Option kEmpty{"--empty", nullptr, "store a list without addresses"};

const Command kRows[] = {
    {.words = "mcast mode get",
     .summary = "print how a switch filters multicast: legacy or snooping",
     .arguments = {kSwitchArgument},
     .options = {{"--kernel", nullptr, "ask the running switch, whatever is stored"}},
     .details = "Never stored, it is what the running switch answers.",
     .example = "qvs mcast mode get sw1",
     .run = reads(getMode, touches<kMode>)},
    {.words = "mcast mode set",
     .summary = "store how a switch filters multicast",
     .arguments = {kSwitchArgument, {"MODE", "legacy or snooping"}},
     .details = "For switches up to version 106.",
     .example = "qvs mcast mode set sw1 snooping",
     .run = writes(setMode, touches<kMode>)},
    {.words = "mcast list get",
     .summary = "print the multicast addresses that a switch lets in on this host",
     .arguments = {kSwitchArgument},
     .example = "qvs mcast list get sw1",
     .run = reads(getList, touches<kList>)},
    {.words = "mcast list set",
     .summary = "store the multicast addresses that a switch lets in on this host",
     .arguments = {kSwitchArgument, kAddresses},
     .options = {kEmpty},
     .example = "qvs mcast list set sw1 01:00:5e:00:00:fb 33:33:00:00:00:fb",
     .run = writes(setList, touches<kList>)},
    {.words = "mcast list clear",
     .summary = "remove the multicast addresses of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs mcast list clear sw1",
     .run = writes(clearBy<kList, VSDVS_ClearMcastUserLegacyEntries>, touches<kList>)},
    {.words = "port mcast get",
     .summary = "print the multicast addresses that a port lets in",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port mcast get sw1 port0",
     .run = reads(getPortList, touches<kPortList>)},
    {.words = "port mcast set",
     .summary = "store the multicast addresses that a port lets in, in place of the switch's",
     .arguments = {kSwitchArgument, kPortArgument, kAddresses},
     .options = {kEmpty},
     .example = "qvs port mcast set sw1 port0 01:00:5e:00:00:fb",
     .run = writes(setPortList, touches<kPortList>)},
    {.words = "port mcast clear",
     .summary = "remove the multicast addresses of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port mcast clear sw1 port0",
     .run = writes(clearBy<kPortList, VSDVS_ClearPortMcastUserLegacyEntries>, touches<kPortList>)},
    {.words = "rcf get",
     .summary = "print the instruction type of a switch's receive filter: cbpf or ebpf",
     .arguments = {kSwitchArgument},
     .example = "qvs rcf get sw1",
     .run = reads(getRcf, touches<kRcf>)},
    {.words = "rcf set",
     .summary = "store the instruction type of a switch's receive filter",
     .arguments = {kSwitchArgument, {"TYPE", "cbpf or ebpf"}},
     .example = "qvs rcf set sw1 ebpf",
     .run = writes(setRcf, touches<kRcf>)},
};

}  // namespace

const std::span<const Command> kMulticastCommands = kRows;

}  // namespace qvs::cli
