// SPDX-License-Identifier: Apache-2.0
// Counters in the answers of devices. They grow with every read, by amounts that depend on a seed.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace qvs::kernel {

// The counters of one object at one read.
class CounterRow {
  public:
    CounterRow(uint64_t seed, uint64_t look) : state_(seed), look_(look) {}

    // Returns the value of the next counter. It is the number of the read times the step of the counter, plus
    // a remainder below the step, so it grows with every read.
    uint64_t next();
    // Returns the step of the next counter: the amount by which it grows with every read.
    uint64_t nextStep();

  private:
    uint64_t state_;
    uint64_t look_;
};

// The counters of all objects. They restart when the host starts.
class Counters {
  public:
    void seed(uint64_t seed);
    // Reads the counters of an object, which is identified by a name.
    CounterRow read(std::string_view object);

  private:
    uint64_t seed_ = 1;
    std::map<std::string, uint64_t, std::less<>> looks_;
};

}  // namespace qvs::kernel
