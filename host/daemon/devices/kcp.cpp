// SPDX-License-Identifier: Apache-2.0
// The kernel control plane: eight lists and a status. Labs define the interfaces, the NICs of the hypervisor
// and the containers.
//
// Records in layouts/emulated.json: those that begin with kcp-.
//
// A list is a u32 count and its entries. In the list of containers, the word 0 follows the count.
#include <algorithm>
#include <array>
#include <cerrno>
#include <map>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"

namespace qvs::kernel {

namespace {

// A stored interface: u32 port number, u32 container, MAC at 8, u16 VLAN at 14, name at 16.
constexpr size_t kMacAt = 8;
constexpr size_t kVlanAt = 14;
constexpr size_t kNameAt = 16;
constexpr size_t kMaxName = 127;

bool isInterface(std::string_view kept) {
    return kept.size() >= kNameAt && kept.size() <= kNameAt + kMaxName;
}

// A stored container: u32 0 (no port), u32 number, u16 VLAN.
bool isContainer(std::string_view kept) {
    return kept.size() == 10 && u32At(kept, 0) == 0;
}

// The most interfaces of one kind, and the most containers.
constexpr size_t kRoom = 10000;
constexpr RecordTable interfaceTable(const char *name) {
    return {name, kRecordKey, kBytes<isInterface>, kRoom};
}
constexpr RecordTable kInterfaces = interfaceTable("kcp.interfaces");
constexpr RecordTable kContainerInterfaces = interfaceTable("kcp.containerInterfaces");
constexpr RecordTable kHypervisorInterfaces = interfaceTable("kcp.hypervisorInterfaces");
constexpr RecordTable kHypervisorNics = interfaceTable("kcp.hypervisorNics");
constexpr RecordTable kContainers("kcp.containers", kRecordKey, kBytes<isContainer>, kRoom);
constexpr Setting<std::string> kStatus("kcp", "status", kBytes<hasSize<3>>);
constexpr const AnyTable *kTables[] = {&kInterfaces,     &kContainerInterfaces, &kHypervisorInterfaces,
                                       &kHypervisorNics, &kContainers,          &kStatus};

// The start of each entry of a list. The rest of an entry is zero.
using Heads = std::vector<std::string>;

Heads switches(const Model &model) {
    Heads heads;
    for (const auto &[row, sw] : model.inventory.switches())
        heads.push_back(
            Record(2 * kSwitchIdField).text(0, kSwitchIdField, sw->id).text(64, 64, sw->alias()).take());
    return heads;
}

Heads portsets(const Model &model) {
    Heads heads;
    for (const auto &[number, portset] : model.inventory.portsets()) {
        Record head(208);
        head.put(0, number).put(4, portset->capacity).put(8, portset->mtu).text(16, 128, portset->name);
        if (const Switch *sw = portset->owner)
            head.put(12, static_cast<uint32_t>(sw->ports.size())).text(144, kSwitchIdField, sw->id);
        heads.push_back(head.take());
    }
    return heads;
}

Heads uplinks(const Model &model) {
    Heads heads;
    for (const auto &[row, sw] : model.inventory.switches()) {
        for (const Nic *nic : model.inventory.boundNics(*sw)) {
            Record head(166);
            head.text(0, 32, nic->name).put(32, nic->port->number).put(36, uint32_t{nic->up()});
            head.put(40, nic->speedMbps).put(44, nic->mtu).put(48, nic->mac);
            heads.push_back(
                head.text(54, kSwitchIdField, sw->id).text(118, kPortIdField, nic->port->id).take());
        }
    }
    return heads;
}

Record interfaceHead(const Model &model, uint32_t number, std::string_view kept, size_t size) {
    Record head(size);
    const Port *port = model.inventory.findPort(u32At(kept, 0));
    head.put(0, number)
        .put(4, uint32_t{port == nullptr || port->linkUp()})
        .text(8, 128, kept.substr(kNameAt));
    head.bytes(136, kept.substr(kMacAt, 6)).bytes(142, kept.substr(kVlanAt, 2));
    if (port != nullptr) {
        head.put(144, port->number)
            .text(148, kSwitchIdField, port->owner->id)
            .text(212, kPortIdField, port->id);
    }
    return head;
}

template <const RecordTable &table>
Heads interfaces(const Model &model) {
    constexpr size_t kHead = 260;
    Heads heads;
    eachRecord(model, table, [&](uint32_t number, std::string_view kept) {
        heads.push_back(interfaceHead(model, number, kept, kHead).take());
    });
    return heads;
}

Heads containerInterfaces(const Model &model) {
    constexpr size_t kContainerAt = 11441;
    Heads heads;
    eachRecord(model, kContainerInterfaces, [&](uint32_t number, std::string_view kept) {
        Record head = interfaceHead(model, number, kept, kContainerAt + 4);
        heads.push_back(head.put(kContainerAt, u32At(kept, 4)).take());
    });
    return heads;
}

Heads containers(const Model &model) {
    std::map<uint32_t, uint32_t> used;
    eachRecord(model, kContainerInterfaces, [&](uint32_t, std::string_view kept) { ++used[u32At(kept, 4)]; });
    Heads heads;
    eachRecord(model, kContainers, [&](uint32_t, std::string_view kept) {
        const uint32_t number = u32At(kept, 4);
        heads.push_back(Record(10).put(0, number).put(4, used[number]).bytes(8, kept.substr(8, 2)).take());
    });
    return heads;
}

struct List {
    uint32_t countCommand;  // the fetch command follows it
    uint32_t entrySize;
    size_t headerSize;
    Heads (*heads)(const Model &model);
};
constexpr List kLists[] = {
    {6, 128, 4, switches},
    {8, 11441, 4, interfaces<kInterfaces>},
    {10, 11689, 4, containerInterfaces},
    {12, 11441, 4, interfaces<kHypervisorInterfaces>},
    {14, 1108, 4, interfaces<kHypervisorNics>},
    {16, 1237, 4, uplinks},
    {18, 256, 4, portsets},
    {21, 10, 8, containers},
};

const List &listOf(uint32_t command) {
    return *std::find_if(std::begin(kLists), std::end(kLists), [&](const List &list) {
        return command == list.countCommand || command == list.countCommand + 1;
    });
}

Result count(const Call &call) {
    const auto entries = static_cast<uint32_t>(listOf(call.command).heads(call.model).size());
    return {0, Record(sizeof entries).put(0, entries).take()};
}

Result fetch(const Call &call) {
    const List &list = listOf(call.command);
    if (call.outLength < list.headerSize) return failure(EINVAL);
    const Heads heads = list.heads(call.model);
    const size_t entries =
        std::min<size_t>((call.outLength - list.headerSize) / list.entrySize, heads.size());
    Record answer(list.headerSize + entries * list.entrySize);
    answer.put(0, static_cast<uint32_t>(entries));
    for (size_t i = 0; i < entries; ++i)
        answer.bytes(list.headerSize + i * list.entrySize, heads[i]);
    return {0, answer.take()};
}

Result getStatus(const Call &call) {
    constexpr std::string_view kAsNew("\1\0\1", 3);
    return {0, call.model.tables.get(kStatus).value_or(std::string(kAsNew))};
}

constexpr Command kCommands[] = {
    {6, 0, "GetDVSCount", count},        {7, 0, "GetDVSList", fetch},        {8, 0, "GetVIFCount", count},
    {9, 0, "GetVIFList", fetch},         {10, 0, "GetCIFCount", count},      {11, 0, "GetCIFList", fetch},
    {12, 0, "GetHYPVIFCount", count},    {13, 0, "GetHYPVIFList", fetch},    {14, 0, "GetHYPNICCount", count},
    {15, 0, "GetHYPNICList", fetch},     {16, 0, "GetUplinkCount", count},   {17, 0, "GetUplinkList", fetch},
    {18, 0, "GetPSPropCount", count},    {19, 0, "GetPSPropList", fetch},    {20, 0, "GetStatus", getStatus},
    {21, 0, "GetContainerCount", count}, {22, 0, "GetContainerList", fetch},
};

void addInterfaces(Members &members, Model &model, const RecordTable &table) {
    const std::string name = members.text("name");
    const bool many = members.has("count");
    const uint32_t count = countOf(members, roomIn(model, table));
    if (name.size() + std::to_string(count).size() > kMaxName) members.fail("name", "is too long");
    const auto first = members.maybeMac("mac").value_or(std::array<uint8_t, 6>{2, 3, 0, 0, 0, 0});
    Record head(kNameAt);
    head.put(kVlanAt, vlanOf(members));
    if (members.has("port")) head.put(0, portOf(members, model).number);
    if (&table == &kContainerInterfaces) head.put(4, members.maybeNumber("container").value_or(0));
    uint32_t index = 0;
    eachAddress(members, count, first, [&](const std::array<uint8_t, 6> &mac) {
        if ((mac[0] & 1) != 0) members.fail("mac", "results in a multicast address");
        head.put(kMacAt, mac);
        appendRecord(model, table, head.view() + (many ? fmt::format("{}{}", name, index++) : name));
    });
}

void addContainers(Members &members, Model &model, const RecordTable &table) {
    const uint32_t count = countOf(members, roomIn(model, table));
    const uint32_t first = members.maybeNumber("number").value_or(1);
    if (uint64_t{first} + count > uint64_t{1} << 32) members.fail("count", "exceeds the last number");
    const uint16_t vlan = vlanOf(members);
    for (uint32_t i = 0; i < count; ++i)
        appendRecord(model, table, Record(10).put(4, first + i).put(8, vlan).view());
}

// The lists of a lab. A list in the lab replaces the existing one.
struct LabList {
    const char *member;
    const RecordTable *table;
    void (*add)(Members &members, Model &model, const RecordTable &table);
};
constexpr LabList kLabLists[] = {
    {"interfaces", &kInterfaces, addInterfaces},
    {"containerInterfaces", &kContainerInterfaces, addInterfaces},
    {"hypervisorInterfaces", &kHypervisorInterfaces, addInterfaces},
    {"hypervisorNics", &kHypervisorNics, addInterfaces},
    {"containers", &kContainers, addContainers},
};

void readStatus(Members &members, Model &model) {
    Record status(3);
    status.put(0, static_cast<uint8_t>(members.maybeFlag("running").value_or(true)))
        .put(1, static_cast<uint8_t>(members.maybeFlag("connected").value_or(false)))
        .put(2, uint8_t{1});
    model.tables.set(kStatus, status.take());
}

void readLab(Members &members, Model &model) {
    for (const LabList &list : kLabLists) {
        if (members.has(list.member)) clearTable(model, *list.table);
        members.each(list.member, [&](Members &entry) { list.add(entry, model, *list.table); });
    }
    members.object("status", [&](Members &status) { readStatus(status, model); });
}

void applyLab(Members &lab, Model &model) {
    lab.object("kcp", [&](Members &members) { readLab(members, model); });
}

constexpr LabMember kLab[] = {{"kcp", applyLab}};

}  // namespace

constexpr DevicePart kKcp = {.commands = kCommands, .lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
