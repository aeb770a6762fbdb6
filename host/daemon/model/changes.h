// SPDX-License-Identifier: Apache-2.0
// Records what changed, so that data derived from the model can be updated.
#pragma once

#include <array>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "daemon/model/inventory.h"

namespace qvs::kernel {

class Changes {
  public:
    explicit Changes(const Inventory &inventory) : inventory_(inventory) {}

    // Returns a number that grows with every change. Data derived from the model is outdated when the number
    // differs.
    uint64_t generation() const { return generation_; }

    // Those who update derived data, each at its own times.
    enum class Reader { Snapshot, Network };

    // A port that was added or removed.
    struct Moved {
        const Switch *owner;
        uint32_t number;
    };
    // The changes since the last call of `take`: properties of these objects, ports, or anything.
    struct Touched {
        bool anything = true;
        std::vector<const Switch *> switches;
        std::vector<const Port *> ports;
        std::vector<Moved> moved;
    };
    Touched take(Reader reader) {
        return std::exchange(of(reader),
                             Touched{.anything = false, .switches = {}, .ports = {}, .moved = {}});
    }

    // Records a change of anything.
    void all() {
        ++generation_;
        touched_ = {};
    }
    // Record a change of the properties of one object.
    void properties(const Switch &sw) { touch(&Touched::switches, &sw); }
    void properties(const Port &port) { touch(&Touched::ports, &port); }

    // Records that a port was added, or that it will be removed.
    void moved(const Port &port) {
        // Each takes much longer than a change of properties.
        constexpr size_t kFew = 16;
        ++generation_;
        for (Touched &touched : touched_) {
            std::erase(touched.ports, &port);
            note(touched, touched.moved, Moved{port.owner, port.number});
            if (touched.moved.size() > kFew) touched = {};
        }
    }

  private:
    static constexpr size_t kReaders = 2;

    Touched &of(Reader reader) { return touched_[static_cast<size_t>(reader)]; }

    // Adds an entry. Without memory for it, anything may have changed: the change itself is done, and must
    // not fail any more.
    template <typename Entry>
    static void note(Touched &touched, std::vector<Entry> &list, const Entry &entry) {
        if (touched.anything) return;
        try {
            list.push_back(entry);
        } catch (const std::bad_alloc &) {
            touched = {};
        }
    }

    template <typename Entity>
    void touch(std::vector<const Entity *> Touched::*list, const Entity *entity) {
        constexpr size_t kFew = 16;
        ++generation_;
        for (Touched &touched : touched_) {
            note(touched, touched.*list, entity);
            // With this many objects, updating everything is as fast as updating each one.
            if (touched.switches.size() + touched.ports.size() > kFew + inventory_.portCount() / 4)
                touched = {};
        }
    }

    const Inventory &inventory_;
    uint64_t generation_ = 0;
    std::array<Touched, kReaders> touched_;
};

}  // namespace qvs::kernel
