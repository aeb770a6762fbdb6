// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/check.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "base/text.h"

namespace qvs::fleet {

std::string runCheck(std::vector<std::string> words, std::chrono::seconds limit,
                     const std::function<void()> &meanwhile) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kStep(50);
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    // The command gets its own process group, so that its children end with it.
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, pointers[0], &actions, &attributes, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (failure != 0) return fmt::format("{}: {}", inQuotes(words[0]), std::strerror(failure));

    int status = 0;
    for (const auto end = Clock::now() + limit; waitpid(child, &status, WNOHANG) == 0;) {
        if (Clock::now() >= end) {
            kill(-child, SIGKILL);
            waitpid(child, &status, 0);
            return fmt::format("{} takes longer than {} s", inQuotes(words[0]), limit.count());
        }
        meanwhile();
        std::this_thread::sleep_for(kStep);
    }
    if (WIFSIGNALED(status))
        return fmt::format("{} was ended by {}", inQuotes(words[0]), strsignal(WTERMSIG(status)));
    if (WEXITSTATUS(status) != 0)
        return fmt::format("{} has the exit status {}", inQuotes(words[0]), WEXITSTATUS(status));
    return {};
}

}  // namespace qvs::fleet
