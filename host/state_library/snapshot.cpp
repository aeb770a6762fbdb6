// SPDX-License-Identifier: Apache-2.0
// The snapshot of the process.
#include "state_library/snapshot.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "state_library/block.h"
#include "state_library/property_list.h"

namespace qvs::mesh {
namespace {

template <typename T>
std::span<const T> entries(const flatbuffers::Vector<const T *> *vector) {
    if (vector == nullptr) return {};
    return {reinterpret_cast<const T *>(vector->Data()), vector->size()};
}

template <typename T>
std::span<const T> scalars(const flatbuffers::Vector<T> *vector) {
    if (vector == nullptr) return {};
    return {vector->data(), vector->size()};
}

bool within(const Range &range, size_t size) {
    return uint64_t{range.first()} + range.count() <= size;
}

bool allBelow(std::span<const uint32_t> indices, size_t limit) {
    uint32_t largest = 0;
    for (const uint32_t index : indices)
        largest = std::max(largest, index);
    return indices.empty() || largest < limit;
}

template <typename Field>
bool terminated(const Field &id) {
    return (*id)[id->size() - 1] == 0;
}

template <typename Field>
int compare(const Field &id, const char *text) {
    return std::strncmp(reinterpret_cast<const char *>(id->data()), text, id->size());
}

template <typename T>
const T *own(std::span<const T> all, const void *handle) {
    const auto *entry = static_cast<const T *>(handle);
    // std::less is also defined for pointers to different objects.
    const std::less<const T *> before;
    if (all.empty() || before(entry, &all.front()) || before(&all.back(), entry)) return nullptr;
    return entry;
}

}  // namespace

Snapshot::Result Snapshot::load(const void *blob, uint32_t length) {
    reset();
    if (length == 0) return Result::Malformed;
    blob_ = allocateBlock(length);
    if (blob_ == nullptr) return Result::NoMemory;
    std::memcpy(blob_, blob, length);
    if (read(static_cast<const uint8_t *>(blob_), length) && consistent()) return Result::Loaded;
    reset();
    return Result::Malformed;
}

void Snapshot::reset() {
    std::free(blob_);
    const uint64_t next = generation_ + 1;
    *this = Snapshot();
    generation_ = next;
}

bool Snapshot::read(const uint8_t *blob, uint32_t length) {
    flatbuffers::Verifier verifier(blob, length);
    if (!VerifyStateBuffer(verifier)) return false;
    const State *state = GetState(blob);
    bytes_ = scalars(state->bytes());
    properties_ = entries(state->properties());
    lists_ = scalars(state->lists());
    ports_ = entries(state->ports());
    portsById_ = scalars(state->portsById());
    switches_ = entries(state->switches());
    switchesById_ = scalars(state->switchesById());
    aliases_ = entries(state->aliases());
    return true;
}

// Checks the indices, ranges and terminators, because lookups do not check them.
bool Snapshot::consistent() const {
    const auto goodProperty = [this](const Property &property) { return wellFormed(property, bytes_); };
    const auto goodPort = [this](const Port &port) {
        return terminated(port.id()) && within(port.properties(), lists_.size());
    };
    const auto goodSwitch = [this](const Switch &sw) {
        return terminated(sw.id()) && sw.className() < bytes_.size() && within(sw.globals(), lists_.size()) &&
               within(sw.hosts(), lists_.size()) && within(sw.ports(), ports_.size());
    };
    const auto goodAlias = [this](const Alias &alias) {
        return uint64_t{alias.text()} + alias.length() <= bytes_.size() && alias.owner() < switches_.size();
    };
    return (bytes_.empty() || bytes_.back() == 0) && portsById_.size() == ports_.size() &&
           switchesById_.size() == switches_.size() && allBelow(lists_, properties_.size()) &&
           allBelow(portsById_, ports_.size()) && allBelow(switchesById_, switches_.size()) &&
           std::all_of(aliases_.begin(), aliases_.end(), goodAlias) &&
           std::all_of(properties_.begin(), properties_.end(), goodProperty) &&
           std::all_of(ports_.begin(), ports_.end(), goodPort) &&
           std::all_of(switches_.begin(), switches_.end(), goodSwitch);
}

std::span<const Port> Snapshot::ports(const Switch &sw) const {
    return ports_.subspan(sw.ports().first(), sw.ports().count());
}

std::span<const uint32_t> Snapshot::list(const Range &range) const {
    return lists_.subspan(range.first(), range.count());
}

template <typename Entry>
const Entry *Snapshot::findById(std::span<const uint32_t> order, std::span<const Entry> entries,
                                const char *id) const {
    const auto found = std::partition_point(
        order.begin(), order.end(), [&](uint32_t index) { return compare(entries[index].id(), id) < 0; });
    if (found == order.end() || compare(entries[*found].id(), id) != 0) return nullptr;
    return &entries[*found];
}

const Switch *Snapshot::findSwitch(const char *id) const {
    return findById(switchesById_, switches_, id);
}

// Several switches can have one alias. The first of them is found.
const Switch *Snapshot::findAlias(std::string_view alias) const {
    const auto textOf = [this](const Alias &entry) {
        return std::string_view(text(entry.text()), entry.length());
    };
    const auto found = std::partition_point(aliases_.begin(), aliases_.end(),
                                            [&](const Alias &entry) { return textOf(entry) < alias; });
    return found == aliases_.end() || textOf(*found) != alias ? nullptr : &switches_[found->owner()];
}

const Port *Snapshot::findPort(const Switch &sw, const char *id) const {
    return findById(portsById_.subspan(sw.ports().first(), sw.ports().count()), ports_, id);
}

const Property *Snapshot::findProperty(const Range &range, std::string_view key) const {
    for (const uint32_t index : list(range)) {
        const Property &candidate = properties_[index];
        if (text(candidate.key()) == key) return &candidate;
    }
    return nullptr;
}

const Switch *Snapshot::ownSwitch(const void *handle) const {
    return own(switches_, handle);
}

const Port *Snapshot::ownPort(const void *handle) const {
    return own(ports_, handle);
}

const Property *Snapshot::ownProperty(const void *handle) const {
    return own(properties_, handle);
}

}  // namespace qvs::mesh
