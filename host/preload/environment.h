// SPDX-License-Identifier: Apache-2.0
// The environment and the path of programs that this process starts.
#pragma once

#include <alloca.h>

#include <cstddef>

namespace qvs::preload {

// Returns the path of the emulated shell for /bin/treesh, and any other path unchanged.
const char *program(const char *path);

// Returns true if an environment has lost the variables of the host. Prints a warning once for this process
// and its forks.
bool losesHost(char *const *environment, const char *path);

// Returns the size of a copy with one more entry, or 0 if the copy is too large for a stack.
size_t markedSize(char *const *environment);
// Fills in the copy. The additional entry tells the program that there was a host.
char *const *mark(char *const *environment, char **copy);

// Calls `start` with the environment for the program at `path`. Does not allocate memory, because this can be
// a child that shares the memory of its parent.
template <typename Start>
int startWith(char *const *environment, const char *path, Start start) {
    if (!losesHost(environment, path)) return start(environment);
    const size_t size = markedSize(environment);
    if (size == 0) return start(environment);
    return start(mark(environment, static_cast<char **>(alloca(size))));
}

}  // namespace qvs::preload
