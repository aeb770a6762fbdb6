// SPDX-License-Identifier: Apache-2.0
// A process that outlives the run.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace qvs::cli {

// Starts a process that waits until bootTime() reaches the given time, and then runs this program with these
// words. The process has no open files and no terminal. Throws when the process cannot be created.
void runAt(uint64_t time, std::initializer_list<const char *> words);

}  // namespace qvs::cli
