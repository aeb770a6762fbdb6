// SPDX-License-Identifier: Apache-2.0
// What a program that this process starts gets of the host.
#include "preload/environment.h"

#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::preload {

namespace {

constexpr char kOwnName[] = "libqvs-host-preload";
constexpr size_t kMaxEntries = 4096;

// The environment may be cleared before a program is started, so what it was is looked at when we are loaded.
bool onHost;
// Shared with forks, so that a program that makes a thousand children complains once.
std::atomic<bool> *complained;

__attribute__((constructor)) void remember() {
    onHost = wire::hostSocket() != nullptr;
    if (!onHost) return;
    void *page = mmap(nullptr, sizeof *complained, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page != MAP_FAILED) complained = static_cast<std::atomic<bool> *>(page);
}

// The value of an entry by that name, or null.
const char *valueOf(const char *entry, const char *name) {
    const size_t length = strlen(name);
    return strncmp(entry, name, length) == 0 && entry[length] == '=' ? entry + length + 1 : nullptr;
}

// Somebody who takes one of the two away does so on purpose.
bool keepsHost(const char *entry) {
    if (valueOf(entry, wire::kSocketVariable) != nullptr) return true;
    const char *libraries = valueOf(entry, "LD_PRELOAD");
    return libraries != nullptr && strstr(libraries, kOwnName) != nullptr;
}

void complain(const char *path) {
    if (complained == nullptr || complained->exchange(true)) return;
    const int savedErrno = errno;
    const char *const words[] = {
        "qvs-host: ", path == nullptr ? "a program" : path,
        " is started without the environment of this host, and so without the host; keep QVS_HOST_SOCKET, "
        "QVS_HOST_TREESH, LD_PRELOAD and LD_LIBRARY_PATH, or start it with \"qvs-host run --state DIR "
        "--\"\n"};
    iovec parts[3];
    for (size_t i = 0; i < 3; ++i)
        parts[i] = {const_cast<char *>(words[i]), strlen(words[i])};
    [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, parts, 3);
    errno = savedErrno;
}

}  // namespace

const char *program(const char *path) {
    if (path == nullptr || strcmp(path, "/bin/treesh") != 0) return path;
    const char *shell = secure_getenv(wire::kTreeshVariable);
    return shell == nullptr || *shell == '\0' ? path : shell;
}

bool losesHost(char *const *environment, const char *path) {
    if (!onHost) return false;
    for (char *const *entry = environment; entry != nullptr && *entry != nullptr; ++entry) {
        if (keepsHost(*entry)) return false;
    }
    complain(path);
    return true;
}

size_t markedSize(char *const *environment) {
    size_t entries = 0;
    while (environment != nullptr && environment[entries] != nullptr)
        ++entries;
    return entries > kMaxEntries ? 0 : (entries + 2) * sizeof(char *);
}

char *const *mark(char *const *environment, char **copy) {
    char **end = copy;
    for (char *const *entry = environment; entry != nullptr && *entry != nullptr; ++entry)
        *end++ = *entry;
    *end++ = const_cast<char *>(wire::kLostEntry);
    *end = nullptr;
    return copy;
}

}  // namespace qvs::preload
