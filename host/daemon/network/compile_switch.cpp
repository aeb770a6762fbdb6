// SPDX-License-Identifier: Apache-2.0
// Compiles the policies of a switch: private VLANs, teaming, learning, multicast; and the attachments.
#include "daemon/devices/attachments.h"
#include "daemon/devices/device_request.h"
#include "daemon/devices/mac_table.h"
#include "daemon/devices/multicast_groups.h"
#include "daemon/model/text.h"
#include "daemon/network/compile.h"

namespace qvs::kernel {

const Port *portNamed(const Model &model, const Switch &sw, std::string_view name) {
    if (name.empty()) return nullptr;
    if (const Port *port = sw.port(name)) return port;
    if (const Port *served = model.inventory.findServedBy(sw, name)) return served;
    const auto found = std::find_if(sw.ports.begin(), sw.ports.end(),
                                    [&](const auto &port) { return port.second->client == name; });
    return found == sw.ports.end() ? nullptr : found->second.get();
}

// A map of a wrong size counts as empty. Entries of unknown types count as isolated, the most restrictive
// type.
std::vector<std::unique_ptr<policy::PrivateVlanT>> compilePrivateVlans(const Switch &sw) {
    constexpr size_t kEntry = 8;
    constexpr size_t kMost = 4096;  // there are no more VLANs
    std::vector<std::unique_ptr<policy::PrivateVlanT>> map;
    const Property *stored = sw.global.find("com.quillon.vswitch.pvlanMap");
    if (stored == nullptr || stored->value.size() % kEntry != 0 || stored->value.size() > kMost * kEntry)
        return map;
    for (size_t at = 0; at < stored->value.size(); at += kEntry) {
        auto &entry = map.emplace_back(std::make_unique<policy::PrivateVlanT>());
        entry->primary = u16At(stored->value, at);
        entry->secondary = u16At(stored->value, at + 2);
        const uint8_t type = u8At(stored->value, at + 4);
        const bool known = type >= static_cast<uint8_t>(policy::PrivateType::MIN) &&
                           type <= static_cast<uint8_t>(policy::PrivateType::MAX);
        entry->type = known ? policy::PrivateType{type} : policy::PrivateType::Isolated;
    }
    return map;
}

// The record: u32 balance, u32 checks, u32 unused, u32 behaviour, u32 active and u32 standby uplinks, and
// their names in fields of 81 bytes. A malformed record, and names that are no uplinks, are ignored.
std::unique_ptr<policy::TeamingT> compileTeaming(const Model &model, const Switch &sw,
                                                 const Property *stored) {
    constexpr size_t kSize = 2616;
    constexpr size_t kNamesAt = 24;
    constexpr size_t kName = 81;
    constexpr uint64_t kMostNames = 32;
    if (stored == nullptr || stored->value.size() != kSize) return nullptr;
    const std::string_view record = stored->value;
    const uint32_t balance = u32At(record, 0);
    const uint64_t active = u32At(record, 16);
    const uint64_t names = active + u32At(record, 20);
    if (balance > static_cast<uint32_t>(policy::Balance::MAX) || names > kMostNames) return nullptr;
    auto teaming = std::make_unique<policy::TeamingT>();
    teaming->balance = static_cast<policy::Balance>(balance);
    for (uint64_t i = 0; i < names; ++i) {
        const Port *port = portNamed(model, sw, textAt(record, kNamesAt + i * kName, kName));
        if (port != nullptr && sw.uplinkSet.contains(port->id))
            (i < active ? teaming->active : teaming->standby).push_back(port->number);
    }
    const uint32_t checks = u32At(record, 4);
    teaming->checkLink = (checks & 0x80) != 0;
    teaming->checkBeacon = (checks & 0x20) != 0;
    const uint32_t behaviour = u32At(record, 12);
    teaming->notify = (behaviour & 0x20) != 0;
    teaming->rolling = (behaviour & 8) != 0;
    teaming->bestEffort = (behaviour & 4) != 0;
    teaming->shotgun = (behaviour & 0x10) != 0;
    return teaming;
}

// A malformed list counts as none.
bool compileMulticastList(const Property *stored, std::vector<policy::Mac> *list) {
    constexpr size_t kMacSize = 6;
    if (stored == nullptr || stored->value.size() != 1 + kMacSize * u8At(stored->value, 0)) return false;
    for (size_t at = 1; at < stored->value.size(); at += kMacSize)
        list->push_back(macFrom(std::string_view(stored->value).substr(at, kMacSize)));
    return true;
}

std::vector<std::unique_ptr<policy::GroupT>> compileGroups(const Model &model, const Port &port,
                                                           Slots &slots) {
    std::vector<std::unique_ptr<policy::GroupT>> groups;
    forEachGroup(model, port, [&](std::string_view group, std::string_view sources) {
        auto &compiled = groups.emplace_back(std::make_unique<policy::GroupT>());
        compiled->address = bytesFrom(group);
        compiled->slot = slots.of(groupSlot(port.number, hexDigits(group)));
        for (size_t at = 0; at < sources.size(); at += group.size()) {
            compiled->sources.push_back(std::make_unique<policy::GroupSourceT>());
            compiled->sources.back()->address = bytesFrom(sources.substr(at, group.size()));
        }
    });
    return groups;
}

StaticMacs compileStaticMacs(Model &model) {
    StaticMacs macs;
    const MacTable table(model);
    for (const auto &[key, entry] : table.entries()) {
        if (entry.learnt || entry.port->owner->portset == nullptr) continue;
        policy::StaticMacT &mac = macs[entry.port->owner->portset->number].emplace_back();
        mac.address = std::make_unique<policy::Mac>(macFrom(key.address));
        mac.vlan = key.vlan;
        mac.port = entry.port->number;
    }
    return macs;
}

std::unique_ptr<policy::SwitchT> compileSwitch(const Model &model, const Switch &sw, const StaticMacs &macs,
                                               const std::string &directory, Slots &slots) {
    auto compiled = std::make_unique<policy::SwitchT>();
    compiled->number = sw.portset->number;
    compiled->name = sw.alias();
    compiled->slot = slots.of(switchSlot(sw.portset->number));
    compiled->mtu = sw.portset->mtu;
    compiled->mac = std::make_unique<policy::Mac>(macFrom(hostMac(model, sw.portset->number)));
    compiled->aging = static_cast<uint32_t>(std::min<uint64_t>(agingOf(model, sw), UINT32_MAX));
    compiled->macLimit = macLimitOf(sw);
    compiled->learnStatic = (learningFlags(sw) & kLearnStatic) != 0;
    compiled->staticAllowed = (learningFlags(sw) & kStaticAllowed) != 0;
    compiled->privateVlans = compilePrivateVlans(sw);
    if (const auto found = macs.find(sw.portset->number); found != macs.end()) {
        for (const policy::StaticMacT &mac : found->second)
            compiled->staticMacs.push_back(std::make_unique<policy::StaticMacT>(mac));
    }
    compiled->teaming = compileTeaming(model, sw, sw.global.find("com.quillon.vswitch.teaming"));
    compiled->mirrors = compileMirrors(model, sw, slots);
    compiled->multicast =
        filterModeOf(sw) == FilterMode::Snooping ? policy::Multicast::Snooping : policy::Multicast::Legacy;
    compiled->hasMulticastList = compileMulticastList(
        sw.host.find("com.quillon.vswitch.mcast.user.addresses"), &compiled->multicastList);
    compileControl(sw, directory, compiled.get());
    return compiled;
}

std::vector<std::unique_ptr<policy::AttachmentT>> compileAttachments(const Model &model,
                                                                     const std::string &directory) {
    const auto absolute = [&](const std::string &path) {
        return path.empty() || path.front() == '/' ? path : directory + '/' + path;
    };
    std::vector<std::unique_ptr<policy::AttachmentT>> list;
    forEachAttachment(model, [&](const Port &port, const Attachment &attachment) {
        if (port.owner->portset == nullptr) return;
        auto compiled = std::make_unique<policy::AttachmentT>();
        compiled->port = port.number;
        // The kinds of the data path begin with sessions, which are not stored.
        compiled->kind = static_cast<policy::AttachmentKind>(static_cast<uint8_t>(attachment.kind) + 1);
        compiled->name = attachment.name;
        compiled->path = absolute(attachment.path);
        compiled->peer = absolute(attachment.peer);
        if (attachment.kind == Attachment::Kind::Host) {
            compiled->path = fmt::format("{}/wire-{}", directory, port.clientName());
            compiled->peer = fmt::format("{}/wire-{}", absolute(attachment.path), attachment.peer);
        }
        compiled->mac = std::make_unique<policy::Mac>(macFrom(adapterMac(model, port)));
        const uint32_t mtu = port.nic != nullptr ? port.nic->mtu : port.owner->portset->mtu;
        compiled->mtu = attachment.mtu != 0 ? attachment.mtu : mtu;
        compiled->noOffloads = !attachment.offloads;
        list.push_back(std::move(compiled));
    });
    std::sort(list.begin(), list.end(), [](const auto &a, const auto &b) { return a->port < b->port; });
    return list;
}

}  // namespace qvs::kernel
