// SPDX-License-Identifier: Apache-2.0
// qvs: the command-line tool.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>

#include "config/library/snapshot.h"
#include "tool/run.h"

namespace {

// Opens the standard descriptors that are closed. Otherwise the next file or device that is opened would get
// the number, and output would be written to it. This runs before the constructors of libraries.
void fillStandardDescriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; fd++) {
        if (fcntl(fd, F_GETFD) < 0) (void)open("/dev/null", O_RDONLY);
    }
}

// The environment variable that tells the clients of an emulated host how long to wait. They read it before
// main.
constexpr char kVariable[] = "QVS_HOST_TIMEOUT=";
constexpr char kSocketVariable[] = "QVS_HOST_SOCKET=";
constexpr size_t kMostVariables = 4000;

// Code that runs before the constructors of libraries must not call the C library: a sanitizer has not
// prepared its functions yet.

[[gnu::no_sanitize_address]] size_t lengthOf(const char *text) {
    size_t length = 0;
    while (text[length] != '\0')
        length++;
    return length;
}

[[gnu::no_sanitize_address]] bool begins(const char *text, const char *with) {
    while (*with != '\0')
        if (*text++ != *with++) return false;
    return true;
}

[[gnu::no_sanitize_address]] bool isNumber(const char *text) {
    while (*text >= '0' && *text <= '9')
        text++;
    return *text == '\0';
}

// The value of --timeout, or null. main checks it.
[[gnu::no_sanitize_address]] const char *timeoutWord(char **argv) {
    constexpr char kOption[] = "--timeout";
    constexpr size_t kLength = sizeof kOption - 1;
    const char *value = nullptr;
    for (char **word = argv + 1; *argv != nullptr && *word != nullptr; ++word) {
        if (begins(*word, "--") && (*word)[2] == '\0') break;
        if (!begins(*word, kOption)) continue;
        if ((*word)[kLength] == '=') value = *word + kLength + 1;
        if ((*word)[kLength] == '\0') value = word[1];
    }
    return value;
}

[[gnu::no_sanitize_address]] const char *valueOf(char **environment, const char *variable) {
    for (char **entry = environment; *entry != nullptr; ++entry)
        if (begins(*entry, variable)) return *entry + lengthOf(variable);
    return nullptr;
}

// The environment cannot be changed at this point, so the program starts itself again with another
// environment. If that fails, the first wait is as long as without the option.
[[gnu::no_sanitize_address]] void applyTimeout(char **argv, char **environment) {
    constexpr size_t kMostDigits = 5;
    static char entry[sizeof kVariable + kMostDigits];
    static char *changed[kMostVariables + 2];
    static char path[4096];
    const char *seconds = timeoutWord(argv);
    if (seconds == nullptr || lengthOf(seconds) > kMostDigits || !isNumber(seconds)) return;
    const char *socket = valueOf(environment, kSocketVariable);
    if (socket == nullptr || *socket == '\0') return;
    const char *before = valueOf(environment, kVariable);
    if (before != nullptr && begins(before, seconds) && lengthOf(before) == lengthOf(seconds)) return;

    size_t end = 0;
    for (const char *part : {kVariable, seconds})
        while (*part != '\0')
            entry[end++] = *part++;
    size_t count = 0;
    changed[count++] = entry;
    for (char **old = environment; *old != nullptr; ++old) {
        if (count > kMostVariables) return;
        if (!begins(*old, kVariable)) changed[count++] = *old;
    }
    if (syscall(SYS_readlink, "/proc/self/exe", path, sizeof path - 1) > 0)
        syscall(SYS_execve, path, argv, changed);
}

[[gnu::no_sanitize_address]] void noteStart() {
    struct timespec now {};
    syscall(SYS_clock_gettime, CLOCK_BOOTTIME, &now);
    qvs::snapshotTime =
        static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

[[gnu::no_sanitize_address]] void prepare(int, char **argv, char **environment) {
    fillStandardDescriptors();
    applyTimeout(argv, environment);
    noteStart();
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const kPreinit)(int, char **, char **) = prepare;

}  // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN);
    return qvs::cli::run(argc, argv);
}
