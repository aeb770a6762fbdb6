// SPDX-License-Identifier: Apache-2.0
// Counters in the answers of devices: they grow from one look to the next, by amounts that a seed decides.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace qvs::kernel {

// The counters of one object at one look, taken one after the other.
class CounterRow {
  public:
    CounterRow(uint64_t seed, uint64_t look) : state_(seed), look_(look) {}

    // Counter n stands at look * step(n) + a remainder below step(n): it never falls, and always grows.
    uint64_t next();
    // What counter n grows by from one look to the next.
    uint64_t nextStep();

  private:
    uint64_t state_;
    uint64_t look_;
};

// Anew with every start of the host, as on a real one.
class Counters {
  public:
    void seed(uint64_t seed);
    CounterRow read(std::string_view object);

  private:
    uint64_t seed_ = 1;
    std::map<std::string, uint64_t, std::less<>> looks_;
};

}  // namespace qvs::kernel
