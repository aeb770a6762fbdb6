// qvs: the command-line tool.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

#include "access/snapshot.h"
#include "tool/run.h"

namespace {

// A closed standard descriptor would be given to the next file or device that is opened, and what is printed
// would go there. It is filled with one that cannot be written, before any library has run.
void fillStandardDescriptors(int, char **, char **) {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; fd++) {
        if (fcntl(fd, F_GETFD) < 0) (void)open("/dev/null", O_RDONLY);
    }
}

// The environment variable by which the clients of an emulated host know how long to wait. They ask before
// main.
constexpr char kVariable[] = "QVS_HOST_TIMEOUT=";
constexpr char kSocketVariable[] = "QVS_HOST_SOCKET=";
constexpr size_t kMostVariables = 4000;

// The value of --timeout, or null; whether it makes sense is for main to say.
const char *timeoutWord(char **argv) {
    constexpr char kOption[] = "--timeout";
    constexpr size_t kLength = sizeof kOption - 1;
    const char *value = nullptr;
    for (char **word = argv + 1; *argv != nullptr && *word != nullptr && std::strcmp(*word, "--") != 0;
         ++word) {
        if (std::strncmp(*word, kOption, kLength) != 0) continue;
        if ((*word)[kLength] == '=') value = *word + kLength + 1;
        if ((*word)[kLength] == '\0') value = word[1];
    }
    return value;
}

const char *valueOf(char **environment, const char *variable) {
    const size_t length = std::strlen(variable);
    for (char **entry = environment; *entry != nullptr; ++entry)
        if (std::strncmp(*entry, variable, length) == 0) return *entry + length;
    return nullptr;
}

// The environment cannot be changed yet, so the program begins anew with another one. Where that fails, the
// first wait is as long as without the option.
void applyTimeout(int, char **argv, char **environment) {
    static char entry[sizeof kVariable + 16];
    static char *changed[kMostVariables + 2];
    static char path[4096];
    const char *seconds = timeoutWord(argv);
    if (seconds == nullptr || std::strlen(seconds) > 5 || seconds[std::strspn(seconds, "0123456789")] != '\0')
        return;
    const char *socket = valueOf(environment, kSocketVariable);
    const char *before = valueOf(environment, kVariable);
    if (socket == nullptr || *socket == '\0' || (before != nullptr && std::strcmp(before, seconds) == 0))
        return;

    std::strcpy(entry, kVariable);
    std::strcat(entry, seconds);
    size_t count = 0;
    changed[count++] = entry;
    for (char **old = environment; *old != nullptr; ++old) {
        if (count > kMostVariables) return;
        if (std::strncmp(*old, kVariable, sizeof kVariable - 1) != 0) changed[count++] = *old;
    }
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length > 0) syscall(SYS_execve, path, argv, changed);
}

void noteStart(int, char **, char **) {
    qvs::cli::snapshotTime = qvs::cli::bootTime();
}

using Preinit = void (*)(int, char **, char **);
[[gnu::section(".preinit_array"), gnu::used]] const Preinit kPreinit[] = {fillStandardDescriptors,
                                                                          applyTimeout, noteStart};

}  // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN);
    return qvs::cli::run(argc, argv);
}
