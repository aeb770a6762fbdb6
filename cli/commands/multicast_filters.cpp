// SPDX-License-Identifier: Apache-2.0
// qvs mcast filters, switch-filters, stats: the multicast groups that the kernel lets in.
#include <arpa/inet.h>
#include <qvs/qvs.h>

#include <array>
#include <optional>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "access/requests.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr const char *kFamilyNames[] = {"mac", "ipv4", "ipv6"};

constexpr size_t kStatsHeader = 28;
constexpr size_t kStatsCountAt = 20;

std::string addressText(const MulticastFamily &family, Bytes address) {
    if (family.type == VSHYP_MCAST_MAC) return macText(address);
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(family.type == VSHYP_MCAST_IPV4 ? AF_INET : AF_INET6, address.data(), text, sizeof text);
}

// The kernel's number of the port that is given; 0 stands for the whole switch.
uint32_t filterPort(const Arguments &arguments) {
    if (!arguments.given("--port")) return 0;
    return portNumber(arguments.text("SWITCH"), arguments.text("--port"));
}

void filters(const Arguments &arguments, Output &out) {
    std::span<const MulticastFamily> families = kMulticastFamilies;
    if (arguments.given("--type")) families = families.subspan(chosen(arguments, "--type", kFamilyNames), 1);
    std::string portset = portsetOf(arguments.text("SWITCH"));
    uint32_t port = filterPort(arguments);
    Listing listing(out, {{"type", "TYPE"}, {"group", "GROUP"}});
    for (const MulticastFamily &family : families) {
        auto ask = [&] {
            return fetched<VSHYP_GetMcastFilters>(named(arguments), portset.c_str(), port, family.type);
        };
        KernelList list = boundedList(ask, family.size, "multicast filters");
        for (uint32_t i = 0; i < list.count; i++)
            listing.row(std::string_view(family.name), addressText(family, list.entry(i)));
    }
    listing.finish();
}

constexpr RecordKind kFilter{"mcast-filter", "entry", "filter"};

void switchFilters(const Arguments &arguments, Output &out) {
    std::string portset = portsetOf(arguments.text("SWITCH"));
    auto ask = [&] {
        return fetched<VSHYP_GetSwitchMcastFilters>(named(arguments), portset.c_str(),
                                                    arguments.number("--value", 0));
    };
    printList(arguments, out, boundedList(ask, VSHYP_SWITCH_MCAST_FILTER_SIZE, "multicast filters"), kFilter,
              arguments.number("--value", 0));
}

void checkGroup(std::string_view, const std::string &text) {
    std::array<uint8_t, 16> group{};
    for (const int family : {AF_INET, AF_INET6})
        if (inet_pton(family, text.c_str(), group.data()) == 1) return;
    fail(Exit::Usage, "{} is no IPv4 or IPv6 address", inQuotes(text));
}

void stats(const Arguments &arguments, Output &out) {
    const std::string &text = arguments.text("GROUP");
    std::array<uint8_t, 16> group{};
    const bool ipv4 = inet_pton(AF_INET, text.c_str(), group.data()) == 1;
    if (!ipv4) (void)inet_pton(AF_INET6, text.c_str(), group.data());
    const MulticastFamily &family = kMulticastFamilies[ipv4 ? 1 : 2];
    std::string portset = portsetOf(arguments.text("SWITCH"));
    uint32_t port = filterPort(arguments);

    auto ask = [&] {
        return fetched<VSHYP_GetMcastFilterStats>(named(arguments) + ": group " + inQuotes(text),
                                                  portset.c_str(), port, family.type,
                                                  static_cast<const void *>(group.data()));
    };
    KernelList list = boundedList(ask, family.size, "addresses", kStatsHeader, kStatsCountAt);
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), list.bytes());
    const RecordKind kind{"mcast-group-stats", "stats", "statistics"};
    const auto fields = decoded(arguments, out, kind, list.bytes(), static_cast<uint32_t>(family.type));
    std::vector<std::string> addresses;
    for (uint32_t i = 0; i < list.count; i++)
        addresses.push_back(addressText(family, list.entry(i)));
    Record record(out);
    record.field("group", "group", addressText(family, Bytes(group).first(family.size)));
    // Text has them among the fields.
    if (out.json() || !fields)
        record.field("addresses", "addresses", Words{{addresses.begin(), addresses.end()}});
    addRecord(record, out, kind, list.bytes().first(kStatsHeader), fields);
    record.finish();
}

constexpr Option kPort{"--port", "PORT", "of this port; without it, of the whole switch", Kind::Port};

const Command kRows[] = {
    {.words = "mcast filters",
     .summary = "list the multicast groups that a switch or a port has joined",
     .arguments = {kSwitchArgument},
     .options =
         {kPort,
          {.name = "--type", .value = "TYPE", .summary = "mac, ipv4 or ipv6 alone", .choices = kFamilyNames}},
     .example = "qvs mcast filters sw1 --port port0",
     .run = reads(filters)},
    {.words = "mcast switch-filters",
     .summary = "list the multicast filters of a switch as the kernel has them",
     .arguments = {kSwitchArgument},
     .options =
         {{.name = "--value",
           .value = "N",
           .summary =
               "which ones, as the kernel numbers them (0); of the emulated host: 0 MAC, 2 IPv4, 3 IPv6",
           .check = checkNumber<0, UINT32_MAX>}},
     .more = kListOptions,
     .details = "The filters are the kernel's own, 20 bytes each.",
     .example = "qvs mcast switch-filters sw1 --value 2",
     .run = reads(switchFilters),
     .agrees = choosesFrom<kFilter>},
    {.words = "mcast stats",
     .summary = "show the statistics of a multicast group and the addresses it is joined for",
     .arguments = {kSwitchArgument,
                   {.name = "GROUP", .summary = "an IPv4 or IPv6 address", .check = checkGroup}},
     .options = {kPort},
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 28 bytes.",
     .example = "qvs mcast stats sw1 239.1.1.1",
     .run = reads(stats)},
};

}  // namespace

const std::span<const Command> kMulticastFilterCommands = kRows;

}  // namespace qvs::cli
