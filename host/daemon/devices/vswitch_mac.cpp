// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: MAC tables.
//
// A request about a switch contains its portset name. A request about a distributed port contains the
// identifiers of the switch and the port. A change without a port identifier contains the port number at 264.
// A byte at 182 selects the table. The entry to set or clear is at 176.
//
// Records in layouts/emulated.json: mac-entry, static-context.
#include <algorithm>
#include <cerrno>

#include "daemon/devices/device_request.h"
#include "daemon/devices/mac_table.h"

namespace qvs::kernel {

namespace {

constexpr size_t kEntryAt = SwitchRequest::kOwnAt;
constexpr size_t kSelectorAt = 182;
constexpr size_t kNumberAt = 264;
constexpr size_t kMacEntry = 86;
constexpr size_t kStaticContext = 529;

// The kinds of entries. Any selects all of them.
enum class MacKind : uint8_t { Any = 0, Static = 1, Learnt = 2 };

constexpr uint64_t kGroupBit = uint64_t{1} << 40;
constexpr uint64_t kAllOnes = 0xffffffffffff;

// --- requested ports ---

// Returns the port that a request names by its identifier or, if that is empty, by its number.
const Port *requestedPort(const Call &call, const Switch &sw) {
    const std::string_view id = textAt(call.input, SwitchRequest::kPortIdAt, kPortIdField);
    if (!id.empty()) return sw.port(id);
    const Port *port = call.model.inventory.findPort(u32At(call.input, kNumberAt));
    return port != nullptr && port->owner == &sw ? port : nullptr;
}

// --- MAC tables ---

std::string addressBytes(uint64_t address) {
    std::string bytes;
    for (int shift = 40; shift >= 0; shift -= 8)
        bytes += static_cast<char>(address >> shift);
    return bytes;
}

uint64_t addressAt(std::string_view bytes, size_t offset) {
    uint64_t address = 0;
    for (size_t i = 0; i < 6; ++i)
        address = address << 8 | static_cast<uint8_t>(bytes[offset + i]);
    return address;
}

using Row = std::map<MacKey, MacEntry>::value_type;

template <typename Wanted>
std::vector<const Row *> rowsOf(const MacTable &table, MacKind kind, const Wanted &wanted) {
    std::vector<const Row *> rows;
    for (const Row &row : table.entries()) {
        const bool fits = kind == MacKind::Any || row.second.learnt == (kind == MacKind::Learnt);
        if (fits && wanted(*row.second.port)) rows.push_back(&row);
    }
    return rows;
}

template <typename Wanted>
Result macTable(const Call &call, const Wanted &wanted) {
    const auto kind = u8At(call.input, kSelectorAt);
    if (kind > static_cast<uint8_t>(MacKind::Learnt)) return failure(EINVAL);
    const MacTable table(call.model);
    return countedList(call, 0, kMacEntry, rowsOf(table, MacKind{kind}, wanted), [&](const Row *row) {
        const auto &[key, entry] = *row;
        const MacKind own = entry.learnt ? MacKind::Learnt : MacKind::Static;
        Record record(kMacEntry);
        record.bytes(0, addressBytes(key.address)).put(6, static_cast<uint8_t>(own)).put(8, key.vlan);
        record.put(12, entry.port->number).put(16, table.ageOf(entry));
        return record.text(20, kPortIdField, entry.port->id);
    });
}

Result getMacTable(const Call &call, const Portset &portset) {
    return macTable(call, [&](const Port &port) { return port.owner == portset.owner; });
}

// Returns the addresses behind the uplinks.
Result getTeamMacTable(const Call &call, const Portset &portset) {
    return macTable(call, [&](const Port &port) {
        return port.owner == portset.owner && port.owner->uplinkSet.contains(port.id);
    });
}

Result getPortMacTable(const Call &call, const Port &wanted) {
    return macTable(call, [&](const Port &port) { return &port == &wanted; });
}

bool validAddress(uint64_t address, uint16_t vlan) {
    return address != 0 && (address & kGroupBit) == 0 && vlan <= kMaxVlan;
}

Result changeEntry(const Call &call, const Switch *sw, bool set) {
    const Port *port = sw == nullptr ? nullptr : requestedPort(call, *sw);
    if (port == nullptr) return failure(ENOENT);
    const std::string_view given = std::string_view(call.input).substr(kEntryAt, kMacEntry);
    const uint64_t address = addressAt(given, 0);
    const auto kind = u8At(given, 6);
    const auto vlan = u16At(given, 8);
    if (!validAddress(address, vlan) || kind > static_cast<uint8_t>(MacKind::Learnt)) return failure(EINVAL);
    MacTable table(call.model);
    if (!set) return failure(table.remove(address, vlan, *port) ? 0 : ENOENT);
    const bool learnt = MacKind{kind} == MacKind::Learnt;
    return failure(table.put(address, vlan, {port, learnt, learningClock(call.model)}) ? 0 : ENOSPC);
}

// A request with a port number contains the portset name. A request with a port identifier contains the
// switch identifier.
Result setPortMacTable(const Call &call) {
    if (!textAt(call.input, SwitchRequest::kPortIdAt, kPortIdField).empty())
        return changeEntry(call, requestedSwitchById(call), true);
    const Portset *portset = requestedPortset(call);
    return changeEntry(call, portset == nullptr ? nullptr : portset->owner, true);
}

// This request always contains the switch identifier.
Result clearPortMacTable(const Call &call) {
    return changeEntry(call, requestedSwitchById(call), false);
}

// --- static contexts ---

// Returns the static addresses behind each port. A port with many addresses has several records.
template <typename Wanted>
Result staticContexts(const Call &call, const Wanted &wanted) {
    constexpr size_t kFirst = 56;
    constexpr size_t kEach = 8;
    constexpr size_t kMost = (kStaticContext - kFirst) / kEach;
    const MacTable table(call.model);
    std::map<uint32_t, std::vector<const Row *>> byPort;
    for (const Row *row : rowsOf(table, MacKind::Static, wanted))
        byPort[row->second.port->number].push_back(row);

    std::vector<std::span<const Row *const>> contexts;
    for (const auto &[number, rows] : byPort) {
        for (size_t at = 0; at < rows.size(); at += kMost)
            contexts.push_back(std::span(rows).subspan(at, std::min(kMost, rows.size() - at)));
    }
    return countedList(call, 0, kStaticContext, contexts, [&](std::span<const Row *const> rows) {
        const Port &port = *rows.front()->second.port;
        Record record(kStaticContext);
        record.put(0, port.number).put(6, static_cast<uint16_t>(rows.size())).text(8, kPortIdField, port.id);
        record.put(4, static_cast<uint16_t>(learningFlags(*port.owner)));
        for (size_t i = 0; i < rows.size(); ++i) {
            const MacKey &key = rows[i]->first;
            record.bytes(kFirst + kEach * i, addressBytes(key.address)).put(kFirst + kEach * i + 6, key.vlan);
        }
        return record;
    });
}

Result getStaticLectx(const Call &call, const Portset &portset) {
    return staticContexts(call, [&](const Port &port) { return port.owner == portset.owner; });
}

Result getPortStaticLectx(const Call &call, const Port &wanted) {
    return staticContexts(call, [&](const Port &port) { return &port == &wanted; });
}

constexpr uint32_t kRequest = SwitchRequest::kSize;
constexpr Command kCommands[] = {
    {0x1017, kRequest, "GetMACTable", on<requestedPortset, getMacTable>},
    {0x1018, kRequest, "GetStaticLectx", on<requestedPortset, getStaticLectx>},
    {0x1019, kRequest, "GetPortMACTable", on<requestedDvPort<>, getPortMacTable>},
    {0x101a, kRequest, "GetPortStaticLectx", on<requestedDvPort<>, getPortStaticLectx>},
    {0x101b, kRequest, "GetTeamMACTable", on<requestedPortset, getTeamMacTable>},
    {0x2003, kRequest, "SetPortMACTable", setPortMacTable},
    {0x2004, kRequest, "ClearPortMACTable", clearPortMacTable},
};

// --- in a lab ---

void readMacLearning(Members &members, Model &model) {
    LearningProps props = learningProps(model);
    if (const auto aging = members.maybeNumber("aging")) props.aging = *aging;
    props.limit = static_cast<uint16_t>(members.maybeNumber("limit", 0, UINT16_MAX).value_or(props.limit));
    setLearningProps(model, props);
    if (const auto clock = members.maybeNumber("clock")) stopLearningClock(model, *clock);
}

void applyMacLearning(Members &lab, Model &model) {
    lab.object("macLearning", [&](Members &members) { readMacLearning(members, model); });
}

void applyMacEntry(Members &members, Model &model, MacTable &table) {
    const Port &port = portOf(members, model);
    const auto mac = members.maybeMac("mac");
    if (!mac) members.fail("mac", "is missing");
    const uint64_t first = addressAt({reinterpret_cast<const char *>(mac->data()), mac->size()}, 0);
    const uint16_t vlan = vlanOf(members);
    const uint32_t count = members.maybeNumber("count").value_or(1);
    constexpr const char *kKinds[] = {"learnt", "static"};
    const bool learnt = members.maybeChoice("kind", kKinds).value_or(0) == 0;
    const uint64_t now = learningClock(model);
    const uint64_t since = now - std::min<uint64_t>(members.maybeNumber("age").value_or(0), now);
    for (uint64_t address = first; address < first + count; ++address) {
        if (address > kAllOnes || !validAddress(address, vlan))
            members.fail("mac", "results in an address that is not unicast");
        if (!table.put(address, vlan, {&port, learnt, since}))
            members.fail("mac", "exceeds the address limit of the port or the switch");
    }
}

void applyMacEntries(Members &lab, Model &model) {
    MacTable table(model);
    lab.each("macEntries", [&](Members &members) { applyMacEntry(members, model, table); });
}

// The clock must be set before the entries, because their ages depend on it.
constexpr LabMember kLab[] = {
    {"macLearning", applyMacLearning},
    {"macEntries", applyMacEntries},
};

}  // namespace

constexpr DevicePart kVswitchMac = {.commands = kCommands, .lab = kLab, .tables = kMacTables};

}  // namespace qvs::kernel
