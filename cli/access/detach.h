// SPDX-License-Identifier: Apache-2.0
// A process that outlives the run.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace qvs::cli {

// Starts this program again with these words when the clock of bootTime() has come so far. The process that
// waits for that has nothing open, and no terminal. Throws when there can be no process.
void runAt(uint64_t time, std::initializer_list<const char *> words);

}  // namespace qvs::cli
