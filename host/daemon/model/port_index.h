// SPDX-License-Identifier: Apache-2.0
// Finds the ports of a switch by their identifiers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qvs::kernel {

struct Port;

// A hash table in one block of memory. A table with a node for each port takes most of the time of a start
// with a million ports, because each node is another access to distant memory.
class PortIndex {
  public:
    Port *find(std::string_view id) const;
    // The identifier must not be in the table.
    void insert(Port &port);
    void erase(const Port &port);

  private:
    struct Slot {
        uint32_t hash = 0;
        Port *port = nullptr;
    };

    size_t next(size_t slot) const { return (slot + 1) & (slots_.size() - 1); }
    size_t home(const Slot &slot) const { return slot.hash & (slots_.size() - 1); }
    void place(const Slot &slot);

    std::vector<Slot> slots_;  // a power of two, at least a third of them free
    size_t count_ = 0;
};

}  // namespace qvs::kernel
