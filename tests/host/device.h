// SPDX-License-Identifier: Apache-2.0
// A device, the shell and a child of the process, as the tests of the host use them.
#pragma once

#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

namespace qvs::test {

constexpr unsigned long kGetUplinks = 0x100b;

// What a device request's argument points at.
struct Frame {
    uint32_t inLength, outLength;
    const void *in;
    void *out;
};

// errno of a request, 0 for success.
inline int requestError(int device, unsigned long command, const void *frame) {
    return ioctl(device, command, frame) == 0 ? 0 : errno;
}

// What a line of the shell prints, with its exit status behind.
inline std::string shellOutput(const char *line) {
    FILE *pipe = popen(line, "r");
    char text[256] = {};
    const size_t size = fread(text, 1, sizeof text, pipe);
    return std::string(text, size) + std::to_string(WEXITSTATUS(pclose(pipe)));
}

// The wait status of a child that ends with what `action` returns.
template <typename Action>
int inChild(const Action &action) {
    const pid_t child = fork();
    if (child == 0) _exit(action());
    int status = -1;
    return waitpid(child, &status, 0) == child ? status : -1;
}

}  // namespace qvs::test
