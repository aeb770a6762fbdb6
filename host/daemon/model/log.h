// SPDX-License-Identifier: Apache-2.0
// The log of the daemon. Each message is one line that begins with its level.
#pragma once

#include <fmt/core.h>

namespace qvs::kernel {

enum class Level { Info, Warning, Error };

// Writes the log to this file. Before the first call, messages are discarded.
void logTo(int file);

void logArguments(Level level, fmt::string_view format, fmt::format_args values);

template <typename... Values>
void logLine(Level level, fmt::format_string<Values...> format, Values &&...values) {
    logArguments(level, format, fmt::make_format_args(values...));
}

}  // namespace qvs::kernel
