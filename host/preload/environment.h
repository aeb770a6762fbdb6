// SPDX-License-Identifier: Apache-2.0
// What a program that this process starts gets of the host.
#pragma once

#include <alloca.h>

#include <cstddef>

namespace qvs::preload {

// The shell lives under a fixed name that this machine does not have: its real one, and any other path as it
// is.
const char *program(const char *path);

// True when an environment holds nothing of the host that this process was started on. Says so on standard
// error, once in this process and its forks.
bool losesHost(char *const *environment, const char *path);

// Room for a copy with one entry more, or 0 when that would be too large for a stack.
size_t markedSize(char *const *environment);
// Fills the copy in: its entry more tells the program that there was a host.
char *const *mark(char *const *environment, char **copy);

// Calls `start` with the environment for the program at `path`. Nothing is allocated: this may be a child
// that shares its memory.
template <typename Start>
int startWith(char *const *environment, const char *path, Start start) {
    if (!losesHost(environment, path)) return start(environment);
    const size_t size = markedSize(environment);
    if (size == 0) return start(environment);
    return start(mark(environment, static_cast<char **>(alloca(size))));
}

}  // namespace qvs::preload
