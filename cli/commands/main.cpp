// SPDX-License-Identifier: Apache-2.0
// qvs: the command-line tool.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <ctime>

#include "commands/nouns.h"
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

// libqvs loads the first snapshot in its initialiser, before main. There it would wait for an emulated host
// that hangs, even when only help is asked for. The variable that names the host is hidden until main, so
// that the first command that needs the host loads the snapshot (requireHost).
constexpr char kSocketVariable[] = "QVS_HOST_SOCKET=";
char **hiddenEntry = nullptr;
char *hiddenText = nullptr;
char replacement[] = "QVS_HOST_HIDDEN=";

// Code that runs before the initialisers of libraries must not call the C library: a sanitizer has not
// prepared its functions yet.

[[gnu::no_sanitize_address]] bool begins(const char *text, const char *with) {
    while (*with != '\0')
        if (*text++ != *with++) return false;
    return true;
}

[[gnu::no_sanitize_address]] void hideHost(char **environment) {
    for (char **entry = environment; *entry != nullptr; ++entry) {
        if (!begins(*entry, kSocketVariable)) continue;
        hiddenEntry = entry;
        hiddenText = *entry;
        *entry = replacement;
        return;
    }
}

void showHost() {
    if (hiddenEntry != nullptr) *hiddenEntry = hiddenText;
}

[[gnu::no_sanitize_address]] void noteStart() {
    struct timespec now {};
    syscall(SYS_clock_gettime, CLOCK_BOOTTIME, &now);
    qvs::snapshotTime =
        static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

[[gnu::no_sanitize_address]] void prepare(int, char **, char **environment) {
    fillStandardDescriptors();
    hideHost(environment);
    noteStart();
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const kPreinit)(int, char **, char **) = prepare;

}  // namespace

int main(int argc, char **argv) {
    showHost();
    std::signal(SIGPIPE, SIG_IGN);
    if (qvs::cli::namesFleet(argc, argv)) return qvs::cli::startFleet(argv);
    return qvs::cli::run(argc, argv);
}
