// SPDX-License-Identifier: Apache-2.0
// A hash table with linear probing.
#include "daemon/model/port_index.h"

#include <functional>
#include <utility>

#include "daemon/model/entities.h"

namespace qvs::kernel {

namespace {

uint32_t hashOf(std::string_view id) {
    return static_cast<uint32_t>(std::hash<std::string_view>()(id));
}

}  // namespace

Port *PortIndex::find(std::string_view id) const {
    if (slots_.empty()) return nullptr;
    const Slot wanted{hashOf(id)};
    for (size_t at = home(wanted); slots_[at].port != nullptr; at = next(at)) {
        if (slots_[at].hash == wanted.hash && slots_[at].port->id == id) return slots_[at].port;
    }
    return nullptr;
}

void PortIndex::place(const Slot &slot) {
    size_t at = home(slot);
    while (slots_[at].port != nullptr)
        at = next(at);
    slots_[at] = slot;
}

void PortIndex::insert(Port &port) {
    constexpr size_t kLeast = 8;
    if (3 * ++count_ > 2 * slots_.size()) {
        const std::vector<Slot> before =
            std::exchange(slots_, std::vector<Slot>(slots_.empty() ? kLeast : 2 * slots_.size()));
        for (const Slot &slot : before) {
            if (slot.port != nullptr) place(slot);
        }
    }
    place({hashOf(port.id), &port});
}

// The entries behind the removed one move up, as far as they may, so that probing still finds them.
void PortIndex::erase(const Port &port) {
    size_t hole = home(Slot{hashOf(port.id)});
    while (slots_[hole].port != &port)
        hole = next(hole);
    for (size_t at = next(hole); slots_[at].port != nullptr; at = next(at)) {
        const size_t mask = slots_.size() - 1;
        if (((at - home(slots_[at])) & mask) < ((at - hole) & mask)) continue;
        slots_[hole] = slots_[at];
        hole = at;
    }
    slots_[hole] = {};
    --count_;
}

}  // namespace qvs::kernel
