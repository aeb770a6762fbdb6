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
    return (bytes_.empty() || bytes_.back() == 0) && portsById_.size() == ports_.size() &&
           allBelow(lists_, properties_.size()) && allBelow(portsById_, ports_.size()) &&
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

const Switch *Snapshot::findSwitch(const char *id) const {
    const auto found = std::find_if(switches_.begin(), switches_.end(),
                                    [id](const Switch &sw) { return compare(sw.id(), id) == 0; });
    return found == switches_.end() ? nullptr : &*found;
}

// The alias is the value of its property up to a NUL, or the whole value if it has none.
const Switch *Snapshot::findAlias(std::string_view alias) const {
    for (const Switch &sw : switches_) {
        const Property *stored = findProperty(sw.globals(), kAliasKey);
        if (stored == nullptr) continue;
        const char *value = text(stored->value());
        if (std::string_view(value, strnlen(value, stored->length())) == alias) return &sw;
    }
    return nullptr;
}

const Port *Snapshot::findPort(const Switch &sw, const char *id) const {
    const auto order = portsById_.subspan(sw.ports().first(), sw.ports().count());
    const auto found = std::partition_point(order.begin(), order.end(), [this, id](uint32_t index) {
        return compare(ports_[index].id(), id) < 0;
    });
    if (found == order.end() || compare(ports_[*found].id(), id) != 0) return nullptr;
    return &ports_[*found];
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
