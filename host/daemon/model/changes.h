// SPDX-License-Identifier: Apache-2.0
// Records what changed, so that data derived from the model can be updated.
#pragma once

#include <cstdint>
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

    // The changes since the last call of `take`: properties of these objects, or anything.
    struct Touched {
        bool anything = true;
        std::vector<const Switch *> switches;
        std::vector<const Port *> ports;
    };
    Touched take() {
        return std::exchange(touched_, Touched{.anything = false, .switches = {}, .ports = {}});
    }

    // Records a change of anything.
    void all() {
        ++generation_;
        touched_ = {};
    }
    // Record a change of the properties of one object.
    void properties(const Switch &sw) { touch(&touched_.switches, &sw); }
    void properties(const Port &port) { touch(&touched_.ports, &port); }

  private:
    template <typename Entity>
    void touch(std::vector<const Entity *> *touched, const Entity *entity) {
        constexpr size_t kFew = 16;
        ++generation_;
        if (!touched_.anything) touched->push_back(entity);
        // With this many objects, updating everything is as fast as updating each one.
        if (touched_.switches.size() + touched_.ports.size() > kFew + inventory_.portCount() / 4) all();
    }

    const Inventory &inventory_;
    uint64_t generation_ = 0;
    Touched touched_;
};

}  // namespace qvs::kernel
