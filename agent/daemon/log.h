// SPDX-License-Identifier: Apache-2.0
// What the agent tells on standard error: a line of text, or of JSON, for each event.
#pragma once

#include <fmt/format.h>

#include <string_view>
#include <utility>

namespace qvs::fleet {

enum class Level { Info, Warning, Error };

inline bool logsJson = false;
void logLine(Level level, std::string_view text);

template <typename... Values>
void log(Level level, fmt::format_string<Values...> format, Values &&...values) {
    logLine(level, fmt::format(format, std::forward<Values>(values)...));
}

// Tells the service manager that the agent is ready or alive ("READY=1", "WATCHDOG=1"), where there is one.
void notify(std::string_view state);

}  // namespace qvs::fleet
