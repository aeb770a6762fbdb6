// SPDX-License-Identifier: Apache-2.0
#include "base/natural.h"

#include <cstddef>

namespace qvs {

bool namedBefore(std::string_view left, std::string_view right) {
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    size_t i = 0;
    size_t j = 0;
    while (i < left.size() && j < right.size()) {
        if (!digit(left[i]) || !digit(right[j])) {
            if (left[i] != right[j])
                return static_cast<unsigned char>(left[i]) < static_cast<unsigned char>(right[j]);
            i++, j++;
            continue;
        }
        // Numbers by their value: without leading zeros, the longer one is the greater.
        while (i < left.size() && left[i] == '0')
            i++;
        while (j < right.size() && right[j] == '0')
            j++;
        size_t endLeft = i;
        size_t endRight = j;
        while (endLeft < left.size() && digit(left[endLeft]))
            endLeft++;
        while (endRight < right.size() && digit(right[endRight]))
            endRight++;
        if (endLeft - i != endRight - j) return endLeft - i < endRight - j;
        const int order = left.substr(i, endLeft - i).compare(right.substr(j, endRight - j));
        if (order != 0) return order < 0;
        i = endLeft;
        j = endRight;
    }
    if (i < left.size() || j < right.size()) return i == left.size();
    return left < right;
}

}  // namespace qvs
