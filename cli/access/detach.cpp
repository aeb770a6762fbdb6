// SPDX-License-Identifier: Apache-2.0
#include "access/detach.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <vector>

#include "tool/failure.h"

namespace qvs::cli {
namespace {

constexpr uint64_t kSecond = 1'000'000'000;

void closeEverything() {
    const int null = open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(null, descriptor);
    close_range(STDERR_FILENO + 1, ~0u, 0);
}

[[noreturn]] void waitAndRun(uint64_t time, char **words) {
    setsid();
    // The second process is no leader of its session, so that no terminal becomes its own.
    if (fork() != 0) _exit(0);
    closeEverything();
    if (chdir("/") != 0) _exit(1);
    const timespec until = {static_cast<time_t>(time / kSecond), static_cast<long>(time % kSecond)};
    while (clock_nanosleep(CLOCK_BOOTTIME, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
    execv("/proc/self/exe", words);
    _exit(1);
}

}  // namespace

void runAt(uint64_t time, std::initializer_list<const char *> words) {
    std::vector<char *> arguments = {const_cast<char *>("qvs")};
    for (const char *word : words)
        arguments.push_back(const_cast<char *>(word));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) fail(Exit::Failed, "no process can be made: {}", std::strerror(errno));
    if (child == 0) waitAndRun(time, arguments.data());
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace qvs::cli
