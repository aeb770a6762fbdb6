// SPDX-License-Identifier: Apache-2.0
// Messages of a program on standard error.
#pragma once

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "base/failure.h"

namespace qvs::cli {

// Prints lines on standard error, each behind the name of the program. A failure to print them is ignored.
void complainLines(std::string_view lines);
template <typename... Values>
void complain(fmt::format_string<Values...> format, Values &&...values) {
    complainLines(fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace qvs::cli
