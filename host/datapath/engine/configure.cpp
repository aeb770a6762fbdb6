// SPDX-License-Identifier: Apache-2.0
// Converts policies to the tables that the engine uses for each frame.
#include <algorithm>
#include <utility>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

std::vector<MacAddress> sortedAddresses(const std::vector<policy::Mac> &list) {
    std::vector<MacAddress> addresses;
    addresses.reserve(list.size());
    for (const policy::Mac &mac : list)
        addresses.push_back(macOf(mac));
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

}  // namespace

MacAddress macOf(const policy::Mac &mac) {
    return readMac(mac.bytes()->data());
}

Engine::Engine(Surroundings surroundings)
    : surroundings_(std::move(surroundings)), policy_(std::make_unique<policy::SwitchT>()) {
    constexpr size_t kLongFrame = (64 << 10) + 256;
    for (std::vector<uint8_t> *bytes : {&plainBytes_, &tagBytes_, &copyBytes_})
        bytes->reserve(kLongFrame);
}

void Engine::configure(std::unique_ptr<policy::SwitchT> policy, Time now) {
    now_ = now;
    const std::unique_ptr<policy::SwitchT> formerPolicy = std::move(policy_);
    policy_ = std::move(policy);
    const std::vector<Port> former = std::move(ports_);
    const AddressTable formerTable = std::move(table_);
    slot_ = slotAt(policy_->slot);
    compilePrivateVlans();
    compilePorts(former);
    endMeters(former);
    compileTeams();
    compileBeacons();
    for (const Port &old : former)
        if (Port *port = find(old.number))
            port->keepsUplink = sameTeaming(*old.policy, *formerPolicy, *port->policy, *policy_);
    const bool linkChanged = std::any_of(former.begin(), former.end(), [this](const Port &old) {
        const Port *port = old.uplink ? find(old.number) : nullptr;
        return port != nullptr && port->up != old.up;
    });
    restoreAddresses(formerTable, former);
    compileMirrors();
    compileGroups(former);
    chooseUplinks(linkChanged);
    compileCheck(*formerPolicy, former);
    compileLldp(*formerPolicy);
}

// Uplinks, teams, groups, flows, learnt addresses, sessions to an address and the check of VLANs connect a
// port with others.
bool Engine::concernsOthers(const Port &port, const policy::PortT &policy) const {
    const policy::PortT &former = *port.policy;
    return port.uplink || policy.uplink || former.teaming || policy.teaming || !former.groups.empty() ||
           !policy.groups.empty() || former.ipfix || policy.ipfix || port.learnt != 0 ||
           policy.slot != former.slot || policy_->check ||
           std::any_of(policy_->mirrors.begin(), policy_->mirrors.end(),
                       [](const auto &session) { return session->type == policy::MirrorType::LogicalSpan; });
}

bool Engine::changePort(std::unique_ptr<policy::PortT> policy, Time now) {
    Port *port = find(policy->number);
    if (port == nullptr || concernsOthers(*port, *policy)) return false;
    now_ = now;
    const auto place = std::find_if(policy_->ports.begin(), policy_->ports.end(),
                                    [&](const auto &each) { return each.get() == port->policy; });
    const std::unique_ptr<policy::PortT> formerPolicy = std::exchange(*place, std::move(policy));
    adapters_.remove(port->address, port->index);
    std::erase(promiscuous_, port->index);
    std::erase(unknown_, port->index);
    const Port former = std::exchange(*port, {});
    keepState(*port, former);
    port->index = former.index;
    port->mirrorOnly = former.mirrorOnly;
    port->mirrorSilent = former.mirrorSilent;
    port->mirrorIn = former.mirrorIn;
    port->mirrorOut = former.mirrorOut;
    compilePort(*port, **place);
    std::ranges::sort(promiscuous_);
    std::ranges::sort(unknown_);
    chooseUplinks(false);
    return true;
}

Port *Engine::find(uint32_t number) {
    const auto found = indexes_.find(number);
    return found == indexes_.end() ? nullptr : &ports_[found->second];
}

Slot *Engine::slotAt(uint32_t index) {
    if (surroundings_.slots == nullptr || index == 0 || index >= kSlots) return &nobody_;
    return &surroundings_.slots[index];
}

void Engine::compilePrivateVlans() {
    for (uint16_t vlan = 0; vlan < kVlans; ++vlan)
        filing_[vlan] = vlan;
    for (const auto &entry : policy_->privateVlans)
        if (entry->type != policy::PrivateType::Promiscuous && entry->secondary < kVlans &&
            entry->primary < kVlans)
            filing_[entry->secondary] = entry->primary;
}

void Engine::compilePorts(const std::vector<Port> &former) {
    std::unordered_map<uint32_t, const Port *> formerByNumber;
    for (const Port &port : former)
        formerByNumber.emplace(port.number, &port);
    ports_.clear();
    indexes_.clear();
    promiscuous_.clear();
    unknown_.clear();
    ports_.reserve(policy_->ports.size());
    switchList_ = sortedAddresses(policy_->multicastList);
    portLists_.assign(policy_->ports.size(), {});
    adapters_.clear(policy_->ports.size());
    for (const auto &entry : policy_->ports) {
        const auto index = static_cast<uint32_t>(ports_.size());
        if (!indexes_.emplace(entry->number, index).second) continue;
        Port &port = ports_.emplace_back();
        port.index = index;
        const auto found = formerByNumber.find(entry->number);
        if (found != formerByNumber.end()) keepState(port, *found->second);
        compilePort(port, *entry);
        compileMeter(port, *entry, found != formerByNumber.end() ? found->second : nullptr);
    }
}

void Engine::keepState(Port &port, const Port &former) {
    port.carrier = former.carrier;
    port.asksPromiscuous = former.asksPromiscuous;
    port.changedTo = former.changedTo;
    port.lastUplink = former.lastUplink;
    port.routerUntil = former.routerUntil;
    port.heard = former.heard;
    port.silent = former.silent;
    port.lldpDue = former.lldpDue;
}

void Engine::compilePort(Port &port, const policy::PortT &policy) {
    port.number = policy.number;
    port.policy = &policy;
    port.slot = slotAt(policy.slot);
    port.uplink = policy.uplink;
    port.checksSource = policy.security != nullptr && !policy.security->forgedTransmits;
    port.learns = !policy.uplink && policy.learning != nullptr && policy.learning->enabled;
    compileVlan(port);
    compileFilter(port);
    updateState(port);
    useAddress(port);
}

void Engine::compileVlan(Port &port) {
    const policy::VlanT none;
    const policy::VlanT &policy = port.policy->vlan != nullptr ? *port.policy->vlan : none;
    port.trunk = policy.trunk || port.uplink;
    port.nested = policy.nested && !port.trunk;
    port.vlan = policy.id & kVlanMask;
    if (port.trunk) {
        for (const policy::VlanRange &range : policy.ranges)
            for (uint32_t vlan = range.first(); vlan <= range.last() && vlan < kVlans - 1; ++vlan)
                port.carries.set(vlan);
        if (port.uplink) port.carries.set(0).set(port.vlan);
        return;
    }
    port.inPrivateMap = policy.inPrivateMap;
    if (!port.inPrivateMap) {
        port.carries.set(port.vlan);
        return;
    }
    port.hasVlan = false;
    for (const auto &entry : policy_->privateVlans) {
        if (entry->primary >= kVlans || entry->secondary >= kVlans) continue;
        const bool isolated = entry->type == policy::PrivateType::Isolated;
        if (entry->primary == port.vlan) {
            port.carries.set(entry->primary).set(entry->secondary);
        } else if (entry->secondary == port.vlan && entry->type != policy::PrivateType::Promiscuous) {
            port.carries.set(entry->primary);
            if (!isolated) port.carries.set(entry->secondary);
        } else {
            continue;
        }
        port.hasVlan = true;
    }
}

void Engine::compileFilter(Port &port) {
    const policy::PortT &policy = *port.policy;
    if (policy.hasMulticastList) {
        portLists_[port.index] = sortedAddresses(policy.multicastList);
        port.multicastList = &portLists_[port.index];
    } else if (policy_->hasMulticastList) {
        port.multicastList = &switchList_;
    }
    if (port.uplink) return;
    const policy::ReceiveFilterT none;
    const policy::ReceiveFilterT &filter = policy.filter != nullptr ? *policy.filter : none;
    port.allGroups = filter.allMulticast;
    if (filter.multicast) port.filterGroups = sortedAddresses(filter.addresses);
    if (filter.sink || (port.learns && policy.learning->flooding)) unknown_.push_back(port.index);
    const bool asks = filter.promiscuous || port.asksPromiscuous;
    port.promiscuous = asks && policy.security != nullptr && policy.security->promiscuous;
    if (port.promiscuous) promiscuous_.push_back(port.index);
}

// Enters the port under the current address of its adapter.
void Engine::useAddress(Port &port) {
    if (port.uplink) return;
    adapters_.remove(port.address, port.index);
    const MacAddress given = port.policy->mac != nullptr ? macOf(*port.policy->mac) : 0;
    port.address = port.changedTo != 0 ? port.changedTo : given;
    const bool denies = port.policy->security != nullptr && !port.policy->security->macChange;
    port.deniedAddress = denies && given != 0 && port.address != given;
    adapters_.add(port.address, port.index);
}

void Engine::updateState(Port &port) {
    port.up = port.policy->link && port.carrier && !port.policy->blocked;
}

void Engine::setCarrier(uint32_t number, bool up, Time now) {
    now_ = now;
    Port *port = find(number);
    if (port == nullptr || port->carrier == up) return;
    port->carrier = up;
    updateState(*port);
    // An uplink that comes up has some time to hear the others.
    port->heard = now_;
    port->silent = false;
    if (!port->uplink) return;
    chooseUplinks(true);
    beginCheck();
}

void Engine::setAddress(uint32_t number, MacAddress address, Time now) {
    now_ = now;
    Port *port = find(number);
    if (port == nullptr) return;
    port->changedTo = address;
    useAddress(*port);
    chooseUplinks(false);
}

void Engine::setPromiscuous(uint32_t number, bool asked) {
    Port *port = find(number);
    if (port == nullptr || port->asksPromiscuous == asked) return;
    port->asksPromiscuous = asked;
    std::erase(promiscuous_, port->index);
    std::erase(unknown_, port->index);
    compileFilter(*port);
}

Time Engine::tick(Time now) {
    constexpr Time kLongest = 1000;
    now_ = now;
    expireAddresses();
    expireMembers();
    expireFlows();
    return std::min({now + kLongest, sendBeacons(), repeatAnnouncements(), continueControl()});
}

}  // namespace qvs::datapath
