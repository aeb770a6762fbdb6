// SPDX-License-Identifier: Apache-2.0
// Counters of ports at one moment, and how they grew since another.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "access/counters.h"
#include "access/overview.h"

namespace qvs::cli {

// Growth per second, in the order of kCounters.
using RateValues = std::array<double, kCounters.size()>;

// Keeps what was counted at the last look at each port of a host.
class Rates {
  public:
    // Takes the counters of a look, at a time in nanoseconds. From then on rateOf tells how they grew since
    // the look before.
    void look(const std::vector<SwitchFacts> &switches, uint64_t time);
    // Nothing before the second look at a port, and when a counter has fallen: it was set back.
    std::optional<RateValues> rateOf(std::string_view switchId, std::string_view port) const;

  private:
    struct Counted {
        CounterValues values{};
        uint64_t time = 0;
        std::optional<RateValues> rates;
        uint64_t look = 0;
    };
    static std::string keyOf(std::string_view switchId, std::string_view port);

    std::unordered_map<std::string, Counted> counted_;
    uint64_t look_ = 0;
};

// A rate for a JSON document, with one decimal place, and nothing for none.
struct Rate {
    std::optional<double> perSecond;
};
void appendJson(fmt::memory_buffer &out, const Rate &rate);
// The same for people: "12.5k".
void appendText(fmt::memory_buffer &out, const Rate &rate);

}  // namespace qvs::cli
