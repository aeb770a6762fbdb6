// SPDX-License-Identifier: Apache-2.0
// What has changed since somebody looked: whoever derives something from the model sees what of it is stale.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "daemon/model/inventory.h"

namespace qvs::kernel {

class Changes {
  public:
    explicit Changes(const Inventory &inventory) : inventory_(inventory) {}

    // Grows with every change: what was derived from the model is stale when this differs.
    uint64_t generation() const { return generation_; }

    // What was changed since this was last asked for: properties of these alone, or anything.
    struct Touched {
        bool anything = true;
        std::vector<const Switch *> switches;
        std::vector<const Port *> ports;
    };
    Touched take() {
        return std::exchange(touched_, Touched{.anything = false, .switches = {}, .ports = {}});
    }

    void all() {
        ++generation_;
        touched_ = {};
    }
    void properties(const Switch &sw) { touch(&touched_.switches, &sw); }
    void properties(const Port &port) { touch(&touched_.ports, &port); }

  private:
    template <typename Entity>
    void touch(std::vector<const Entity *> *touched, const Entity *entity) {
        constexpr size_t kFew = 16;
        ++generation_;
        if (!touched_.anything) touched->push_back(entity);
        // To look at so many one by one is no less than to look at everything.
        if (touched_.switches.size() + touched_.ports.size() > kFew + inventory_.portCount() / 4) all();
    }

    const Inventory &inventory_;
    uint64_t generation_ = 0;
    Touched touched_;
};

}  // namespace qvs::kernel
