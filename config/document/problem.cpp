// SPDX-License-Identifier: Apache-2.0
#include "config/document/problem.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace qvs::config {

void sortByPlace(std::vector<Problem> &problems) {
    std::ranges::stable_sort(problems, {},
                             [](const Problem &problem) { return std::pair(problem.line, problem.column); });
}

std::string messageOf(const Problem &problem) {
    std::string message = shown(problem.origin);
    if (problem.line > 0) message += fmt::format(":{}:{}", problem.line, problem.column);
    if (!problem.path.empty()) message += ": " + problem.path;
    return message + ": " + problem.text;
}

}  // namespace qvs::config
