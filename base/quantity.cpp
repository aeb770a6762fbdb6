// SPDX-License-Identifier: Apache-2.0
#include "base/quantity.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <string_view>

namespace qvs {

std::string quantityText(double quantity) {
    constexpr std::string_view kSteps = " kMGTPE";
    // What would be rounded to 1000 belongs to the next step.
    constexpr double kMost = 999.5;
    size_t step = 0;
    for (; quantity >= kMost && step + 1 < kSteps.size(); step++)
        quantity /= 1000;
    const bool whole = quantity >= 99.95 || quantity == std::floor(quantity);
    std::string text = whole ? fmt::format("{:.0f}", quantity) : fmt::format("{:.1f}", quantity);
    if (step > 0) text += kSteps[step];
    return text;
}

}  // namespace qvs
