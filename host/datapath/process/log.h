// SPDX-License-Identifier: Apache-2.0
// Messages for the log of the host, on standard error: the level and the text on one line.
#pragma once

#include <cstdio>
#include <string>

#include <fmt/format.h>

#include "wire/escape.h"

namespace qvs::datapath {

inline void logLine(const char *level, const std::string &text) {
    const std::string line = fmt::format("{} data path: {}\n", level, wire::escaped(text));
    fwrite(line.data(), 1, line.size(), stderr);
}

template <typename... Values>
void warn(fmt::format_string<Values...> format, Values &&...values) {
    logLine("warning", fmt::format(format, std::forward<Values>(values)...));
}

template <typename... Values>
void inform(fmt::format_string<Values...> format, Values &&...values) {
    logLine("info", fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace qvs::datapath
