// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: the multicast groups that ports have joined. Labs define them.
//
// A request contains the portset name at 0 (128 bytes), the port number at 176 (0: all ports of the switch),
// the type at 180 (0: MAC, 2: IPv4, 3: IPv6) and the group at 184. A filter is an address of 6, 4 or 16
// bytes.
//
// Records in layouts/emulated.json: mcast-filter, mcast-group-stats.
#include <algorithm>
#include <cerrno>
#include <set>

#include <fmt/format.h>

#include "daemon/devices/device_request.h"
#include "daemon/devices/multicast_groups.h"
#include "daemon/devices/network_counters.h"
#include "daemon/devices/record_table.h"
#include "daemon/model/text.h"
#include "wire/fault.h"

namespace qvs::kernel {

namespace {

constexpr char kMember[] = "mcastFilters";

constexpr size_t kPortAt = SwitchRequest::kOwnAt;
constexpr size_t kTypeAt = SwitchRequest::kOwnAt + 4;
constexpr size_t kGroupAt = SwitchRequest::kOwnAt + 8;
constexpr size_t kSwitchFilter = 20;
constexpr size_t kPortsAt = 16;
constexpr size_t kStatsHead = 28;

enum Type : uint32_t { Mac = 0, IPv4 = 2, IPv6 = 3 };

bool isType(uint32_t number) {
    return number == Mac || number == IPv4 || number == IPv6;
}

size_t addressSize(uint32_t type) {
    return type == Mac ? 6 : type == IPv4 ? 4 : 16;
}

struct Address {
    Type type = Mac;
    std::string bytes;  // in network order

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a null pointer
    auto operator<=>(const Address &) const = default;
};

// A port and a group that it has joined.
struct Membership {
    uint32_t port = 0;
    Address group;

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a null pointer
    auto operator<=>(const Membership &) const = default;
};

// "PORT TYPE GROUP", the port and the group in hexadecimal.
std::string keyOf(const Membership &key) {
    return fmt::format("{} {} {}", kPortKey.write(key.port), static_cast<uint32_t>(key.group.type),
                       hexDigits(key.group.bytes));
}

std::optional<Membership> readKey(std::string_view text) {
    constexpr size_t kTypeText = 9;
    constexpr size_t kGroupText = 11;
    if (text.size() < kGroupText) return std::nullopt;
    const auto port = kPortKey.read(text.substr(0, kTypeText - 1));
    const auto type = wire::numberOf<uint32_t>(text.substr(kTypeText, 1));
    const auto group = parseHex(text.substr(kGroupText));
    if (!port || !type || !isType(*type) || !group || group->size() != addressSize(*type))
        return std::nullopt;
    return Membership{*port, {static_cast<Type>(*type), *group}};
}

// The addresses of the sources have the size of the group address.
bool fitsGroup(const Membership &key, const std::string &sources) {
    return sources.size() % addressSize(key.group.type) == 0;
}

// The addresses of the sources, by port and group, and the most rows of this table.
constexpr size_t kRoom = 65536;
constexpr Table<Membership, std::string> kJoined("multicast groups", {keyOf, readKey}, kBytes<isAnything>,
                                                 kRoom, fitsGroup);
constexpr const AnyTable *kTables[] = {&kJoined};

// A group that some of the requested ports have joined.
struct Group {
    uint32_t ports = 0;
    bool everybody = false;  // a port has joined it for all sources
    std::set<std::string> sources;
};
using Groups = std::map<std::string, Group>;

// Adds the groups that the data path saw the port join. A port counts once for a group.
void addSnooped(const Model &model, const Port &port, uint32_t type, Groups *groups) {
    const auto &joined = model.facts.joined;
    for (auto row = joined.lower_bound({port.number, {}}); row != joined.end() && row->first == port.number;
         ++row) {
        const std::string &bytes = row->second;
        if (bytes.size() != addressSize(type)) continue;
        Group &group = (*groups)[bytes];
        if (!model.tables.rows(kJoined).contains({port.number, {static_cast<Type>(type), bytes}}))
            ++group.ports;
        group.everybody = true;
        group.sources.clear();
    }
}

void addGroups(const Model &model, const Port &port, uint32_t type, Groups *groups) {
    const auto &rows = model.tables.rows(kJoined);
    const Membership begin = {port.number, {static_cast<Type>(type), {}}};
    for (auto row = rows.lower_bound(begin);
         row != rows.end() && row->first.port == port.number && row->first.group.type == begin.group.type;
         ++row) {
        Group &group = (*groups)[row->first.group.bytes];
        ++group.ports;
        group.everybody = group.everybody || row->second.empty();
        for (size_t at = 0; at < row->second.size(); at += addressSize(type))
            group.sources.insert(row->second.substr(at, addressSize(type)));
        if (group.everybody) group.sources.clear();
    }
    addSnooped(model, port, type, groups);
}

// Adds the groups of all ports of a switch. It visits the rows, because most ports have joined no group.
void addGroupsOfSwitch(const Model &model, const Switch &sw, uint32_t type, Groups *groups) {
    std::set<uint32_t> numbers;
    for (const auto &[key, sources] : model.tables.rows(kJoined))
        numbers.insert(key.port);
    for (const auto &[number, group] : model.facts.joined)
        numbers.insert(number);
    for (const uint32_t number : numbers) {
        const Port *port = model.inventory.findPort(number);
        if (port != nullptr && port->owner == &sw) addGroups(model, *port, type, groups);
    }
}

// Finds the groups that a request selects. Returns an errno, or 0.
int findGroups(const Call &call, uint32_t number, Groups *groups) {
    const Portset *portset = requestedPortset(call);
    if (portset == nullptr) return ENOENT;
    const uint32_t type = u32At(call.input, kTypeAt);
    if (!isType(type)) return EINVAL;
    if (number == 0) {
        if (portset->owner != nullptr) addGroupsOfSwitch(call.model, *portset->owner, type, groups);
        return 0;
    }
    const Port *port = call.model.inventory.findPort(number);
    if (port == nullptr || port->owner != portset->owner) return ENOENT;
    addGroups(call.model, *port, type, groups);
    return 0;
}

Result getMcastFilters(const Call &call) {
    Groups groups;
    if (const int error = findGroups(call, u32At(call.input, kPortAt), &groups)) return failure(error);
    const std::vector<std::pair<std::string, Group>> list(groups.begin(), groups.end());
    const size_t size = addressSize(u32At(call.input, kTypeAt));
    return countedList(call, 0, size, list,
                       [&](const auto &group) { return Record(size).bytes(0, group.first); });
}

// This request ignores the port field.
Result getSwitchMcastFilters(const Call &call) {
    Groups groups;
    if (const int error = findGroups(call, 0, &groups)) return failure(error);
    const std::vector<std::pair<std::string, Group>> list(groups.begin(), groups.end());
    return countedList(call, 0, kSwitchFilter, list, [](const auto &group) {
        return Record(kSwitchFilter).bytes(0, group.first).put(kPortsAt, group.second.ports);
    });
}

// Sums what the data path counted for the group, at one port or at all ports (0) of a switch.
void putGroup(const Model &model, const Portset &portset, uint32_t number, const std::string &group,
              Record *head) {
    uint64_t frames = 0;
    uint64_t filtered = 0;
    for (const auto &[port, entity] : portset.owner->ports) {
        if (number != 0 && number != port) continue;
        const std::string slot = groupSlot(port, hexDigits(group));
        frames += slotValue(model, slot, datapath::kGroupPackets);
        filtered += slotValue(model, slot, datapath::kGroupFiltered);
    }
    head->put(0, frames).put(8, filtered);
}

Result getMcastFilterStats(const Call &call) {
    const uint32_t type = u32At(call.input, kTypeAt);
    if (type == Mac) return failure(EINVAL);
    const uint32_t number = u32At(call.input, kPortAt);
    Groups groups;
    if (const int error = findGroups(call, number, &groups)) return failure(error);
    const size_t size = addressSize(type);
    const std::string address(call.input.substr(kGroupAt, size));
    const auto found = groups.find(address);
    if (found == groups.end()) return failure(ENOENT);

    const Portset &portset = *requestedPortset(call);
    const Address group{static_cast<Type>(type), address};
    CounterRow counters =
        call.model.counters.read("multicast " + portset.name + "/" + keyOf({number, group}));
    const std::set<std::string> &sources = found->second.sources;
    const bool headOnly = call.outLength <= kStatsHead;
    const size_t room = headOnly ? sources.size() : (call.outLength - kStatsHead) / size;
    const size_t count = std::min(room, sources.size());
    Record head(kStatsHead);
    if (hasSlot(call.model, switchSlot(portset.number))) {
        putGroup(call.model, portset, number, address, &head);
    } else {
        head.put(0, counters.next()).put(8, counters.next());
    }
    head.put(16, uint32_t{!sources.empty()});
    head.put(20, static_cast<uint32_t>(count)).put(24, found->second.ports);
    Result result;
    result.output = head.take();
    if (headOnly) return result;
    std::for_each_n(sources.begin(), count, [&](const std::string &source) { result.output += source; });
    return result;
}

constexpr Command kCommands[] = {
    {0x1008, SwitchRequest::kSize, "GetMcastFilters", getMcastFilters},
    {0x1009, SwitchRequest::kSize, "GetSwitchMcastFilters", getSwitchMcastFilters},
    {0x100a, SwitchRequest::kSize, "GetMcastFilterStats", getMcastFilterStats},
};

// --- the lab ---

Address parseAddress(const Members &members, const char *name, const std::string &text) {
    if (const auto ip = parseIp(text)) return {ip->size() == addressSize(IPv4) ? IPv4 : IPv6, *ip};
    const auto mac = parseMac(text);
    if (!mac) members.fail(name, "is none of a MAC, IPv4 and IPv6 address: " + text);
    return {Mac, *mac};
}

bool isMulticast(const Address &address) {
    const auto first = u8At(address.bytes, 0);
    return address.type == Mac ? (first & 1) != 0 : address.type == IPv4 ? first >> 4 == 0xe : first == 0xff;
}

void applyFilter(Members &members, Model &model) {
    const Port &port = portOf(members, model);
    const Address first = parseAddress(members, "group", members.text("group"));
    if (!isMulticast(first)) members.fail("group", "is not a multicast group");
    std::string sources;
    for (const std::string &text : members.texts("sources")) {
        const Address source = parseAddress(members, "sources", text);
        if (first.type == Mac || source.type != first.type)
            members.fail("sources", "holds an address of another type");
        sources += source.bytes;
    }
    std::map<Membership, std::string> rows;
    const uint32_t count = countOf(members, roomIn(model, kJoined));
    eachAddress(members, count, first.bytes, [&](const std::string &bytes) {
        const Address group{first.type, bytes};
        if (!isMulticast(group)) members.fail("count", "exceeds the last multicast group");
        rows.insert_or_assign(Membership{port.number, group}, sources);
    });
    model.tables.setRows(kJoined, rows);
}

// Replaces all groups.
void applyFilters(Members &lab, Model &model) {
    clearTable(model, kJoined);
    lab.each(kMember, [&](Members &members) { applyFilter(members, model); });
}

constexpr LabMember kLab[] = {{kMember, applyFilters}};

}  // namespace

void forEachGroup(const Model &model, const Port &port, const VisitGroup &visit) {
    const auto &rows = model.tables.rows(kJoined);
    for (auto row = rows.lower_bound({port.number, {}}); row != rows.end() && row->first.port == port.number;
         ++row)
        visit(row->first.group.bytes, row->second);
}

constexpr DevicePart kVswitchMcastFilters = {.commands = kCommands, .lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
