// SPDX-License-Identifier: Apache-2.0
// Addresses behind ports: learning, limits, static entries, and frames of this switch that come back.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

// A frame from outside with an address that was learnt here comes back by another uplink if the port has just
// sent one. Later, the sender has moved away.
constexpr Time kReflectionTime = 3000;

}  // namespace

std::optional<Drop> Engine::learn(Port &from, const Passage &passage) {
    bool always = false;
    if (!from.learns || passage.source == from.address || isAdapterHere(passage, always)) return std::nullopt;
    LearntAddress *entry = table_.find(passage.source, passage.filing, now_);
    if (entry != nullptr && (entry->permanent || entry->port == from.index)) {
        table_.touch(*entry, now_);
        entry->vlan = passage.vlan;
        return std::nullopt;
    }
    expireAddresses();
    if (from.learnt >= from.policy->learning->limit || (entry == nullptr && learnt_ >= policy_->macLimit))
        return from.policy->learning->dropAtLimit ? std::optional(Drop::LearningLimit) : std::nullopt;
    if (entry != nullptr) {
        --ports_[entry->port].learnt;
        entry->port = from.index;
        entry->vlan = passage.vlan;
        table_.touch(*entry, now_);
        add(*from.slot, kMoved);
    } else {
        table_.insert({passage.source, passage.filing, passage.vlan, from.index, false, now_});
        ++learnt_;
        add(*from.slot, kLearnt);
    }
    ++from.learnt;
    if (surroundings_.learnt) surroundings_.learnt(passage.source, passage.vlan, from.number, true);
    return std::nullopt;
}

// Whether an adapter on this switch has the source address and sends in the VLAN of the frame; if so,
// `always` tells whether all such ports send by an uplink in any case.
bool Engine::isAdapterHere(const Passage &passage, bool &always) const {
    bool found = false;
    always = true;
    for (uint32_t index = adapters_.first(passage.source); index != kNone; index = adapters_.next(index)) {
        const Port &port = ports_[index];
        if (port.address != passage.source || !sendsIn(port, passage.vlan)) continue;
        found = true;
        always = always && port.policy->alwaysUplink;
    }
    return found;
}

bool Engine::isReflection(Passage &passage) {
    // What a port sends by an uplink in any case comes back for the other ports.
    bool always = false;
    if (isAdapterHere(passage, always)) {
        passage.returned = true;
        return !always;
    }
    const LearntAddress *entry = table_.find(passage.source, passage.filing, now_);
    if (entry == nullptr) return false;
    if (!entry->permanent && now_ - entry->seen >= kReflectionTime) {
        remove(*entry);
        return false;
    }
    passage.owner = entry->port;
    return !ports_[entry->port].policy->alwaysUplink;
}

bool Engine::ownsStatic(const Port &port, const Passage &passage) {
    const LearntAddress *entry = table_.find(passage.source, passage.filing, now_);
    return entry != nullptr && entry->permanent && entry->port == port.index;
}

void Engine::forget(const LearntAddress &entry) {
    --ports_[entry.port].learnt;
    --learnt_;
    if (surroundings_.learnt)
        surroundings_.learnt(entry.address, entry.vlan, ports_[entry.port].number, false);
}

void Engine::remove(LearntAddress entry) {
    table_.remove(entry.address, entry.filing);
    forget(entry);
}

void Engine::forget(uint32_t port, MacAddress address, uint16_t vlan, Time now) {
    now_ = now;
    const LearntAddress *entry = vlan < kVlans ? table_.find(address, filing_[vlan], now_) : nullptr;
    if (entry != nullptr && !entry->permanent && ports_[entry->port].number == port) remove(*entry);
}

void Engine::expireAddresses() {
    table_.expire(now_, [this](const LearntAddress &entry) {
        add(*ports_[entry.port].slot, kExpired);
        forget(entry);
    });
}

// Adds the static entries of the new policies, and then the entries of the earlier table that the policies
// still allow.
void Engine::restoreAddresses(const AddressTable &before, const std::vector<Port> &old) {
    table_ = AddressTable();
    table_.setAging(policy_->learnStatic ? 0 : Time{policy_->aging} * 1000);
    learnt_ = 0;
    for (const auto &entry : policy_->staticMacs) {
        const Port *port = entry->address != nullptr ? find(entry->port) : nullptr;
        if (port == nullptr || entry->vlan >= kVlans) continue;
        table_.insert({macOf(*entry->address), filing_[entry->vlan], entry->vlan, port->index, true, now_});
    }
    std::vector<LearntAddress> entries;
    before.forEach([&entries](const LearntAddress &entry) {
        if (!entry.permanent) entries.push_back(entry);
    });
    // The table expires its entries in the order in which they are inserted.
    std::sort(entries.begin(), entries.end(),
              [](const LearntAddress &left, const LearntAddress &right) { return left.seen < right.seen; });
    for (const LearntAddress &entry : entries) {
        const uint32_t number = old[entry.port].number;
        Port *port = find(number);
        LearntAddress kept = entry;
        kept.filing = filing_[entry.vlan];
        const bool keeps = port != nullptr && port->learns && sendsIn(*port, entry.vlan) &&
                           port->learnt < port->policy->learning->limit && learnt_ < policy_->macLimit &&
                           table_.find(kept.address, kept.filing, now_) == nullptr;
        if (!keeps) {
            if (surroundings_.learnt) surroundings_.learnt(entry.address, entry.vlan, number, false);
            continue;
        }
        kept.port = port->index;
        table_.insert(kept);
        ++port->learnt;
        ++learnt_;
    }
}

}  // namespace qvs::datapath
