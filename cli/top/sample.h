// SPDX-License-Identifier: Apache-2.0
// What `qvs top` tells its screen through a pipe: the ports of one look with their rates, or that the host is
// gone. Lines of fields with tabs between; names are escaped, so that they hold neither tabs nor line ends.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::top {

// The rates of a port, per second.
enum RateKind : size_t { BitsIn, BitsOut, PacketsIn, PacketsOut, Dropped, kRateKinds };

struct Port {
    std::string owner;  // its switch
    std::string id;
    std::string client;
    std::string vlan;
    std::string state;  // "up", "down", "free", "blocked"
    // Nothing before the second look at a port, and after its counters were set back.
    std::optional<std::array<double, kRateKinds>> rates;

    bool idle() const { return total() == 0 && (!rates || (*rates)[Dropped] == 0); }
    double total() const { return rates ? (*rates)[BitsIn] + (*rates)[BitsOut] : 0; }
};

struct Sample {
    std::string time;  // of the look, as people read it
    std::vector<Port> ports;
    std::string gone;  // why there is no look; empty otherwise
};

// Appends the lines of a sample, with its names escaped.
void appendSample(std::string &out, const Sample &sample);

// Puts samples together from what comes through the pipe, in pieces of any size.
class SampleReader {
  public:
    // Takes a piece. True when a sample is complete; the last one is then in sample().
    bool take(std::string_view piece);
    const Sample &sample() const { return last_; }

  private:
    bool takeLine(std::string_view line);

    std::string rest_;
    Sample open_;
    Sample last_;
};

}  // namespace qvs::top
