// SPDX-License-Identifier: Apache-2.0
// Commands that look at the host again and again: how often, and how they end.
#pragma once

#include <chrono>

#include "tool/command.h"

namespace qvs::cli {

// The option --interval with its default in the summary.
void checkInterval(std::string_view name, const std::string &text);
constexpr Option intervalOption(const char *summary, const char *needs = nullptr) {
    return {
        .name = "--interval", .value = "SECONDS", .summary = summary, .needs = needs, .check = checkInterval};
}
// The value of --interval, in seconds.
std::chrono::milliseconds intervalGiven(const Arguments &arguments, std::chrono::milliseconds absent);

// Makes SIGINT and SIGTERM end the program with exit status 0. What it has printed must be written out by
// then.
void endOnSignals();

// Waits. Ends the program when the reader of its output is gone, because without a change it writes nothing
// and would not notice.
void pause(std::chrono::milliseconds time);

}  // namespace qvs::cli
