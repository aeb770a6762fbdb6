// SPDX-License-Identifier: Apache-2.0
// The addresses of a switch: two hash tables with chains of indexes.
#include "datapath/engine/addresses.h"

#include <bit>

namespace qvs::datapath {
namespace {

size_t hash(uint64_t key) {
    key *= 0x9e3779b97f4a7c15;
    return static_cast<size_t>(key ^ key >> 32);
}

}  // namespace

void AdapterAddresses::clear(size_t ports) {
    heads_.assign(std::bit_ceil(2 * ports + 1), kNone);
    next_.assign(ports, kNone);
}

size_t AdapterAddresses::slotOf(MacAddress address) const {
    return hash(address) & (heads_.size() - 1);
}

void AdapterAddresses::add(MacAddress address, uint32_t port) {
    if (address == 0) return;
    uint32_t &head = heads_[slotOf(address)];
    next_[port] = head;
    head = port;
}

void AdapterAddresses::remove(MacAddress address, uint32_t port) {
    if (address == 0) return;
    for (uint32_t *link = &heads_[slotOf(address)]; *link != kNone; link = &next_[*link])
        if (*link == port) {
            *link = next_[port];
            return;
        }
}

size_t AddressTable::slotOf(MacAddress address, uint16_t filing) const {
    return hash(address << 16 | filing) & (heads_.size() - 1);
}

uint32_t AddressTable::indexOf(MacAddress address, uint16_t filing) const {
    uint32_t index = heads_[slotOf(address, filing)];
    while (index != kNone && (nodes_[index].entry.address != address || nodes_[index].entry.filing != filing))
        index = nodes_[index].chain;
    return index;
}

bool AddressTable::expired(const LearntAddress &entry, uint64_t now) const {
    return !entry.permanent && aging_ != 0 && now - entry.seen >= aging_;
}

LearntAddress *AddressTable::find(MacAddress address, uint16_t filing, uint64_t now) {
    if (used_ == 0) return nullptr;
    const uint32_t index = indexOf(address, filing);
    if (index == kNone || expired(nodes_[index].entry, now)) return nullptr;
    return &nodes_[index].entry;
}

void AddressTable::insert(const LearntAddress &entry) {
    remove(entry.address, entry.filing);
    if (used_ >= heads_.size()) grow();
    uint32_t index = 0;
    if (free_.empty()) {
        index = static_cast<uint32_t>(nodes_.size());
        nodes_.emplace_back();
    } else {
        index = free_.back();
        free_.pop_back();
    }
    uint32_t &head = heads_[slotOf(entry.address, entry.filing)];
    Node &node = nodes_[index];
    node = {entry, head, kNone, kNone, true};
    node.entry.place = index;
    head = index;
    ++used_;
    if (!entry.permanent) append(index);
}

void AddressTable::touch(LearntAddress &entry, uint64_t now) {
    entry.seen = now;
    if (entry.permanent || entry.place == newest_) return;
    unlink(entry.place);
    append(entry.place);
}

void AddressTable::remove(MacAddress address, uint16_t filing) {
    uint32_t *link = &heads_[slotOf(address, filing)];
    while (*link != kNone && (nodes_[*link].entry.address != address || nodes_[*link].entry.filing != filing))
        link = &nodes_[*link].chain;
    if (*link == kNone) return;
    const uint32_t index = *link;
    *link = nodes_[index].chain;
    if (!nodes_[index].entry.permanent) unlink(index);
    nodes_[index].used = false;
    free_.push_back(index);
    --used_;
}

void AddressTable::expire(uint64_t now, const std::function<void(const LearntAddress &)> &gone) {
    while (oldest_ != kNone && expired(nodes_[oldest_].entry, now)) {
        const LearntAddress entry = nodes_[oldest_].entry;
        gone(entry);
        remove(entry.address, entry.filing);
    }
}

void AddressTable::forEach(const std::function<void(const LearntAddress &)> &visit) const {
    for (const Node &node : nodes_)
        if (node.used) visit(node.entry);
}

void AddressTable::append(uint32_t index) {
    nodes_[index].older = newest_;
    nodes_[index].newer = kNone;
    (newest_ == kNone ? oldest_ : nodes_[newest_].newer) = index;
    newest_ = index;
}

void AddressTable::unlink(uint32_t index) {
    const Node &node = nodes_[index];
    (node.older == kNone ? oldest_ : nodes_[node.older].newer) = node.newer;
    (node.newer == kNone ? newest_ : nodes_[node.newer].older) = node.older;
}

void AddressTable::grow() {
    heads_.assign(heads_.size() * 2, kNone);
    for (uint32_t index = 0; index < nodes_.size(); ++index) {
        Node &node = nodes_[index];
        if (!node.used) continue;
        uint32_t &head = heads_[slotOf(node.entry.address, node.entry.filing)];
        node.chain = head;
        head = index;
    }
}

}  // namespace qvs::datapath
