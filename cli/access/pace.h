// SPDX-License-Identifier: Apache-2.0
// Commands that look at the host again and again: how often, and how they end.
#pragma once

#include <chrono>

#include "tool/command.h"

namespace qvs::cli {

// The value of --interval, in seconds.
std::chrono::milliseconds intervalGiven(const Arguments &arguments, std::chrono::milliseconds absent);

// Makes SIGINT and SIGTERM end the program with exit status 0. What it has printed must be written out by
// then.
void endOnSignals();

// Waits, or ends as a writer does whose reader is gone: without a change there is nothing to write that would
// show it.
void pause(std::chrono::milliseconds time);

}  // namespace qvs::cli
