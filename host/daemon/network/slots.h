// SPDX-License-Identifier: Apache-2.0
// The shared memory with the counters of the data path, and the slot of each object.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "daemon/model/facts.h"
#include "datapath/shared.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

class Slots : private wire::Noncopyable {
  public:
    // Creates the memory. Throws std::runtime_error if the system has none.
    explicit Slots(Facts &facts);
    ~Slots();

    int file() const { return file_; }
    // Returns the slot of an object, which is 0 if no slot is free. A new slot contains zeros.
    uint32_t of(const std::string &object);
    // `begin` starts a round of calls of `of`. `end` releases the slots of all other objects. They are used
    // again when the data path has the configuration with this generation and no longer counts in them.
    void begin() { used_.clear(); }
    void end(uint64_t generation);
    void inForce(uint64_t generation);

  private:
    uint32_t take();

    Facts &facts_;
    int file_ = -1;
    uint32_t next_ = 1;
    std::set<uint32_t> used_;
    std::vector<uint32_t> free_;
    std::multimap<uint64_t, uint32_t> released_;
};

}  // namespace qvs::kernel
