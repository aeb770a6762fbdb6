// SPDX-License-Identifier: Apache-2.0
// What the screen shows of a sample: which ports, in which order, in which columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "top/sample.h"

namespace qvs::top {

enum class Sort { Total, BitsIn, BitsOut, PacketsIn, PacketsOut, Dropped, Name };

struct Choice {
    Sort sort = Sort::Total;
    bool reverse = false;
    bool idle = true;    // ports without traffic are shown, too
    std::string filter;  // ports with this text in one of their names
};

// "total", "bits in", ...
std::string_view nameOf(Sort sort);

// The ports that are shown, in their order.
std::vector<const Port *> chosenPorts(const Sample &sample, const Choice &choice);

// The text in exactly so many columns: cut with "~" at its end, or padded.
std::string fitted(std::string_view text, size_t columns, bool right = false);

struct Lines {
    std::string heading;
    std::vector<std::string> rows;
};
// The ports from `first` on, at most `count`, in lines of at most so many columns. Columns for which there is
// no room are left out, the less important first.
Lines tableOf(const std::vector<const Port *> &ports, size_t first, size_t count, size_t columns, Sort sort);

// "64 ports: in 12.5 Mbit/s, 3.1 kp/s; ..."
std::string sumsOf(const std::vector<const Port *> &ports);

}  // namespace qvs::top
