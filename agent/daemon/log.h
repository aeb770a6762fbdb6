// SPDX-License-Identifier: Apache-2.0
// The log of the agent on standard error: one line of text or JSON per event.
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

// Notifies the service manager, if there is one, that the agent is ready or alive ("READY=1", "WATCHDOG=1").
void notify(std::string_view state);

}  // namespace qvs::fleet
