// SPDX-License-Identifier: Apache-2.0
// qvs port security, port filter, port sink: what a port may do, and what it receives beyond its own frames.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/flags.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kSecurity{"security", QVS_KEY_PORT_SECURITY, sizeof(uint32_t)};
constexpr Policy kFilter{"receive filter", QVS_KEY_PORT_FILTER, sizeof(VSDVS_ExtraEthFilter)};

// --- security ---

constexpr const char *kAllowDeny[] = {"allow", "deny"};

struct Right {
    const char *option;
    const char *key;
    const char *label;
    uint32_t denied;
};
constexpr Right kRights[] = {
    {"--promiscuous", "promiscuous", "promiscuous mode", VSDVS_SECURITY_DENY_PROMISCUOUS},
    {"--mac-change", "macChange", "MAC address change", VSDVS_SECURITY_DENY_MAC_CHANGE},
    {"--forged", "forged", "forged transmits", VSDVS_SECURITY_DENY_FORGED},
};

uint32_t readSecurity(const PolicyPlace &place) {
    uint32_t mask = 0;
    place.requireRead(call<VSDVS_GetPortSecurity>(place.name(), place.port(), &mask));
    return mask;
}

void getSecurity(const Arguments &arguments, Output &out) {
    PolicyPlace place(kSecurity, arguments);
    uint32_t mask = readSecurity(place);
    Record record(out);
    place.describe(record);
    for (const Right &right : kRights)
        record.field(right.key, right.label, std::string_view(kAllowDeny[(mask & right.denied) != 0]));
    record.field("stored", "stored", Flag{place.stored().has_value()});
    record.finish();
}

void setSecurity(const Arguments &arguments, Output &out) {
    uint32_t given = 0;
    uint32_t denied = 0;
    for (const Right &right : kRights) {
        if (!arguments.given(right.option)) continue;
        given |= right.denied;
        if (chosen(arguments, right.option, kAllowDeny) != 0) denied |= right.denied;
    }
    if (given == 0) fail(Exit::Usage, "at least one of --promiscuous, --mac-change, --forged is needed");
    constexpr uint32_t kAll =
        VSDVS_SECURITY_DENY_PROMISCUOUS | VSDVS_SECURITY_DENY_MAC_CHANGE | VSDVS_SECURITY_DENY_FORGED;
    PolicyPlace place(kSecurity, arguments);
    uint32_t kept = given == kAll ? 0 : readSecurity(place) & kAll & ~given;
    uint32_t mask = kept | denied;
    storePolicy(out, place, place.holds(bytesOf(mask)),
                [&] { return call<VSDVS_SetPortSecurity>(place.name(), place.port(), &mask); });
}

// --- filter ---

constexpr FlagName kFilterFlags[] = {
    {"unicast", VSDVS_FILTER_UNICAST},   {"multicast", VSDVS_FILTER_MULTICAST},
    {"allmulti", VSDVS_FILTER_ALLMULTI}, {"broadcast", VSDVS_FILTER_BROADCAST},
    {"promisc", VSDVS_FILTER_PROMISC},   {"use-ladrf", VSDVS_FILTER_USE_LADRF},
    {"sink", VSDVS_FILTER_SINK},
};
constexpr size_t kMostAddresses = std::size(VSDVS_ExtraEthFilter{}.addresses);

// The addresses that count: there are some only with the flag, and never more than the record has room for.
std::vector<std::string> addressesOf(const VSDVS_ExtraEthFilter &filter) {
    std::vector<std::string> addresses;
    if ((filter.flags & VSDVS_FILTER_MULTICAST) == 0) return addresses;
    size_t count = filter.addressCount;
    if (count > kMostAddresses) {
        complain("warning: the filter counts {} addresses, but has room for {}", count, kMostAddresses);
        count = kMostAddresses;
    }
    for (size_t i = 0; i < count; i++)
        addresses.push_back(macText(filter.addresses[i]));
    return addresses;
}

void getFilter(const Arguments &arguments, Output &out) {
    PolicyPlace place(kFilter, arguments);
    VSDVS_ExtraEthFilter filter{};
    place.requireRead(call<VSDVS_GetExtraEthFilter>(place.name(), place.port(), &filter));
    std::vector<std::string> flags = flagNames(kFilterFlags, filter.flags);
    std::vector<std::string> addresses = addressesOf(filter);
    Record record(out);
    place.describe(record);
    record.field("flags", "flags", Words{{flags.begin(), flags.end()}});
    record.field("addresses", "addresses", Words{{addresses.begin(), addresses.end()}});
    record.finish();
}

VSDVS_ExtraEthFilter givenFilter(const Arguments &arguments) {
    VSDVS_ExtraEthFilter filter{};
    for (const std::string &name : arguments.all("FLAG"))
        filter.flags |= flagNamed("FLAG", kFilterFlags, name);
    const std::vector<std::string> &addresses = arguments.all("--address");
    if (addresses.size() > kMostAddresses)
        fail(Exit::Usage, "--address: {} addresses, at most {} fit", addresses.size(), kMostAddresses);
    if (!addresses.empty() && (filter.flags & VSDVS_FILTER_MULTICAST) == 0)
        fail(Exit::Usage, "--address: addresses count only with the flag multicast");
    for (size_t i = 0; i < addresses.size(); i++) {
        std::optional<MacAddress> address = parseMac(addresses[i]);
        if (!address)
            fail(Exit::Usage, "--address: {} is no MAC address like 01:00:5e:00:00:01",
                 inQuotes(addresses[i]));
        std::copy(address->begin(), address->end(), filter.addresses[i]);
    }
    filter.addressCount = static_cast<uint16_t>(addresses.size());
    return filter;
}

void setFilter(const Arguments &arguments, Output &out) {
    VSDVS_ExtraEthFilter filter = givenFilter(arguments);
    PolicyPlace place(kFilter, arguments);
    storePolicy(out, place, place.holds(bytesOf(filter)),
                [&] { return call<VSDVS_SetExtraEthFilter>(place.name(), place.port(), &filter); });
}

// --- sink ---

bool isSink(const PolicyPlace &place) {
    uint8_t enabled = 0;
    place.requireRead(call<VSDVS_IsSinkPortEnabled>(place.name(), place.port(), &enabled));
    return enabled != 0;
}

void getSink(const Arguments &arguments, Output &out) {
    PolicyPlace place(kFilter, arguments);
    printValue(out, place, "enabled", Flag{isSink(place), "on", "off"});
}

void setSink(const Arguments &arguments, Output &out) {
    bool on = chosen(arguments, "STATE", kOffOn) != 0;
    PolicyPlace place(kFilter, arguments);
    storePolicy(out, place, isSink(place) == on,
                [&] { return call<VSDVS_ConfigureSinkPort>(place.name(), place.port(), on); });
}

const Command kRows[] = {
    {.words = "port security get",
     .summary = "show what a port is allowed and denied",
     .arguments = {kSwitchArgument, kPortArgument},
     .details = "A port for which nothing is stored is denied promiscuous mode and allowed the rest.",
     .example = "qvs port security get sw1 port0",
     .run = reads(getSecurity, touches<kSecurity>)},
    {.words = "port security set",
     .summary = "allow or deny a port promiscuous mode, change of its MAC address, forged transmits",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{"--promiscuous", "RULE", "allow or deny"},
                 {"--mac-change", "RULE", "allow or deny"},
                 {"--forged", "RULE", "allow or deny"}},
     .details = "What is not given stays as it is.",
     .example = "qvs port security set sw1 port0 --promiscuous allow --forged deny",
     .run = writes(setSecurity, touches<kSecurity>)},
    {.words = "port filter get",
     .summary = "show the extra Ethernet receive filter of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port filter get sw1 port0",
     .run = reads(getFilter, touches<kFilter>)},
    {.words = "port filter set",
     .summary = "store the extra Ethernet receive filter of a port in place of the one it has",
     .arguments = {kSwitchArgument,
                   kPortArgument,
                   {"FLAG", "unicast, multicast, allmulti, broadcast, promisc, use-ladrf or sink", Kind::Word,
                    false, true}},
     .options = {{"--address", "MAC", "an address for multicast; at most 32", Kind::Word, true}},
     .example = "qvs port filter set sw1 port0 unicast multicast --address 01:00:5e:00:00:01",
     .run = writes(setFilter, touches<kFilter>)},
    {.words = "port filter clear",
     .summary = "remove the extra Ethernet receive filter of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .details = "A sink port stops being one.",
     .example = "qvs port filter clear sw1 port0",
     .run = writes(clearBy<kFilter, VSDVS_ClearExtraEthFilter>, touches<kFilter>)},
    {.words = "port sink get",
     .summary = "print whether a port is a sink port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port sink get sw1 port0",
     .run = reads(getSink, touches<kFilter>)},
    {.words = "port sink set",
     .summary = "make a port a sink port, or an ordinary one",
     .arguments = {kSwitchArgument, kPortArgument, {"STATE", "on or off"}},
     .details = "The rest of the port's filter stays as it is.",
     .example = "qvs port sink set sw1 port0 on",
     .run = writes(setSink, touches<kFilter>)},
};

}  // namespace

const std::span<const Command> kPortSecurityCommands = kRows;

}  // namespace qvs::cli
