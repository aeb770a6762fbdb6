// SPDX-License-Identifier: Apache-2.0
// Teaming: selects the uplink of each port, and moves ports when an uplink fails or recovers.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

using policy::Balance;

constexpr Time kRepeats[] = {100, 1000};  // after the move

bool contains(const std::vector<uint32_t> &list, uint32_t value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

uint32_t fold(MacAddress address) {
    uint32_t folded = 0;
    for (int shift = 0; shift < 48; shift += 8)
        folded ^= static_cast<uint32_t>(address >> shift & 0xff);
    return folded;
}

uint32_t foldAddresses(const IpHeader &ip) {
    uint32_t folded = 0;
    for (const Bytes &address : {ip.source, ip.destination})
        for (const uint8_t byte : address)
            folded ^= byte;
    return folded;
}

uint32_t pick(const std::vector<uint32_t> &candidates, uint32_t value) {
    return candidates.empty() ? kNone : candidates[value % candidates.size()];
}

bool same(const policy::TeamingT *left, const policy::TeamingT *right) {
    if (left == nullptr || right == nullptr) return left == right;
    return left->balance == right->balance && left->active == right->active &&
           left->standby == right->standby && left->rolling == right->rolling &&
           left->checkLink == right->checkLink && left->checkBeacon == right->checkBeacon;
}

}  // namespace

const policy::TeamingT *Engine::teamingOf(const policy::PortT &port, const policy::SwitchT &policy) {
    return port.teaming != nullptr ? port.teaming.get() : policy.teaming.get();
}

bool Engine::sameTeaming(const policy::PortT &formerPort, const policy::SwitchT &former,
                         const policy::PortT &port, const policy::SwitchT &policy) {
    return same(teamingOf(formerPort, former), teamingOf(port, policy));
}

void Engine::compileTeams() {
    teams_.clear();
    addTeam(policy_->teaming.get());
    for (Port &port : ports_)
        if (port.policy->teaming != nullptr && !port.uplink) {
            port.team = static_cast<uint32_t>(teams_.size());
            addTeam(port.policy->teaming.get());
        }
}

void Engine::addTeam(const policy::TeamingT *policy) {
    Team &team = teams_.emplace_back();
    if (policy == nullptr) {
        for (const Port &port : ports_)
            if (port.uplink) team.active.push_back(port.index);
        return;
    }
    team.balance = policy->balance;
    team.checkLink = policy->checkLink;
    team.rolling = policy->rolling;
    team.notify = policy->notify;
    team.bestEffort = policy->bestEffort;
    team.shotgun = policy->shotgun;
    const auto resolve = [this](const std::vector<uint32_t> &numbers, std::vector<uint32_t> &indexes) {
        for (const uint32_t number : numbers) {
            const Port *port = find(number);
            if (port != nullptr && port->uplink) indexes.push_back(port->index);
        }
    };
    resolve(policy->active, team.active);
    resolve(policy->standby, team.standby);
    // A single uplink hears nobody.
    team.checkBeacon = policy->checkBeacon && team.active.size() + team.standby.size() > 1;
}

// Whether the uplink can be used as far as its link tells.
bool Engine::reachable(const Team &team, uint32_t uplink) const {
    return team.checkLink ? ports_[uplink].up : !ports_[uplink].policy->blocked;
}

bool Engine::usable(const Team &team, uint32_t uplink) const {
    if (!reachable(team, uplink)) return false;
    if (!team.checkBeacon || !ports_[uplink].silent) return true;
    return team.deaf && (team.bestEffort || team.shotgun);
}

// All active uplinks that can be used, or else the first such standby uplink.
void Engine::updateTeam(Team &team) const {
    team.candidates.clear();
    const auto hears = [&](uint32_t uplink) { return reachable(team, uplink) && !ports_[uplink].silent; };
    team.deaf = team.checkBeacon && std::none_of(team.active.begin(), team.active.end(), hears) &&
                std::none_of(team.standby.begin(), team.standby.end(), hears);
    if (team.balance == Balance::Drop) return;
    for (const uint32_t uplink : team.active)
        if (usable(team, uplink)) team.candidates.push_back(uplink);
    for (const uint32_t uplink : team.standby)
        if (team.candidates.empty() && usable(team, uplink)) team.candidates.push_back(uplink);
}

uint32_t Engine::choose(const Port &port) const {
    const Team &team = teams_[port.team];
    if (team.balance == Balance::SourceMac || team.balance == Balance::SourceIp)
        return pick(team.candidates, fold(port.address));
    if (team.rolling && port.keepsUplink && port.lastUplink != 0 && team.balance != Balance::Drop) {
        const auto last = indexes_.find(port.lastUplink);
        if (last != indexes_.end() && usable(team, last->second) &&
            (contains(team.active, last->second) || contains(team.standby, last->second)))
            return last->second;
    }
    return pick(team.candidates, team.balance == Balance::Explicit ? 0 : port.number);
}

// Gives each port the uplink that it uses from now on.
void Engine::chooseUplinks(bool linkChanged) {
    for (Team &team : teams_)
        updateTeam(team);
    std::vector<uint32_t> movedPorts;
    for (Port &port : ports_) {
        if (port.uplink) continue;
        port.current = choose(port);
        port.keepsUplink = true;
        const uint32_t number = port.current == kNone ? 0 : ports_[port.current].number;
        port.slot->values[kUplinkNow].store(number, std::memory_order_relaxed);
        if (number == 0 || number == port.lastUplink) continue;
        if (port.lastUplink != 0) {
            add(*port.slot, kUplinkMoves);
            const auto last = indexes_.find(port.lastUplink);
            const bool failed = last == indexes_.end() || !usable(teams_[port.team], last->second);
            if (linkChanged) add(*slot_, failed ? kFailovers : kFailbacks);
            if (teams_[port.team].notify) movedPorts.push_back(port.index);
        }
        port.lastUplink = number;
    }
    if (!movedPorts.empty()) announceMoves(movedPorts);
}

uint32_t Engine::uplinkFor(const Port &port, const Passage &passage) const {
    const Team &team = teams_[port.team];
    if (team.balance == Balance::SourceMac) return pick(team.candidates, fold(passage.source));
    if (team.balance != Balance::SourceIp) return port.current;
    IpHeader ip;
    const bool isIp = readIp(passage.frame->bytes, passage.body + 2, passage.type, ip);
    return pick(team.candidates, isIp ? foldAddresses(ip) : fold(passage.source));
}

bool Engine::acceptsUnicast(const Port &port, uint32_t uplink) const {
    const Team &team = teams_[port.team];
    return port.current == uplink || (team.balance != Balance::Drop && contains(team.active, uplink));
}

// Announces to the physical network, by reverse ARP, that the addresses of these ports moved to another
// uplink.
void Engine::announceMoves(const std::vector<uint32_t> &ports) {
    std::vector<bool> isMoved(ports_.size());
    for (const uint32_t index : ports) {
        const Port &port = ports_[index];
        isMoved[index] = true;
        uint16_t vlan = port.vlan;
        if (port.trunk)
            for (vlan = 0; vlan < kVlans - 1 && !port.carries[vlan];)
                ++vlan;
        if (port.address != 0 && port.hasVlan) announce(port, port.address, vlan);
    }
    table_.forEach([&](const LearntAddress &entry) {
        if (isMoved[entry.port]) announce(ports_[entry.port], entry.address, entry.vlan);
    });
}

void Engine::announce(const Port &port, MacAddress address, uint16_t vlan) {
    const Announcement announcement = {now_, port.number, address, vlan};
    sendReverseArp(announcement);
    for (const Time later : kRepeats)
        announcements_.push_back({now_ + later, port.number, address, vlan});
}

void Engine::sendReverseArp(const Announcement &announcement) {
    constexpr size_t kShortest = 60;
    constexpr uint8_t kArp[] = {0x00, 0x01, 0x08, 0x00, 6, 4, 0x00, 3};  // Ethernet, IPv4, reverse request
    std::array<uint8_t, kShortest> bytes{};
    writeMac(bytes.data(), kBroadcast);
    writeMac(bytes.data() + 6, announcement.address);
    write16(bytes.data() + kAddresses, kReverseArpType);
    uint8_t *arp = std::copy(std::begin(kArp), std::end(kArp), bytes.data() + kHeaderSize);
    writeMac(arp, announcement.address);
    writeMac(arp + 10, announcement.address);

    const Port *port = find(announcement.port);
    if (port == nullptr) return;
    const Frame frame = {bytes};
    Passage passage;
    passage.id = ++lastFrame_;
    passage.frame = &frame;
    passage.destination = kBroadcast;
    passage.source = announcement.address;
    passage.type = kReverseArpType;
    passage.vlan = announcement.vlan;
    passage.packet = kShortest - kHeaderSize;
    const bool sent = port->current != kNone && deliver(ports_[port->current], passage);
    add(*slot_, sent ? kReverseArpSent : kReverseArpFailed);
}

// Returns when the next one is due.
Time Engine::repeatAnnouncements() {
    std::vector<Announcement> due;
    std::erase_if(announcements_, [&](const Announcement &announcement) {
        if (announcement.due > now_) return false;
        due.push_back(announcement);
        return true;
    });
    for (const Announcement &announcement : due)
        sendReverseArp(announcement);
    Time next = kNever;
    for (const Announcement &announcement : announcements_)
        next = std::min(next, announcement.due);
    return next;
}

}  // namespace qvs::datapath
