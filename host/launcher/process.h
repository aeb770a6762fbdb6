// SPDX-License-Identifier: Apache-2.0
// Child processes of the launcher.
#pragma once

#include <sys/types.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <vector>

namespace qvs::launcher {

// Returns the words as the functions that execute programs take them. The words must outlive the result.
inline std::vector<char *> argumentsOf(const std::vector<std::string> &words) {
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    return arguments;
}

// Waits until a process ends and returns its status.
inline int waitForProcess(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace qvs::launcher
