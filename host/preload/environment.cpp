// SPDX-License-Identifier: Apache-2.0
// The environment and the path of programs that this process starts.
#include "preload/environment.h"

#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "wire/kept_errno.h"
#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::preload {

namespace {

constexpr char kOwnName[] = "libqvs-host-preload";
constexpr size_t kMaxEntries = 4096;

// Whether this process was started on a host. Stored when the interposer is loaded, because a program can
// clear its environment later.
bool onHost;
// Shared with forks, so that a program that starts many children prints one warning.
std::atomic<bool> *complained;

__attribute__((constructor)) void remember() {
    onHost = wire::hostSocket() != nullptr;
    if (!onHost) return;
    void *page = mmap(nullptr, sizeof *complained, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page != MAP_FAILED) complained = static_cast<std::atomic<bool> *>(page);
}

// Returns the value of an entry if it has this name, or null.
const char *valueOf(const char *entry, const char *name) {
    const size_t length = strlen(name);
    return strncmp(entry, name, length) == 0 && entry[length] == '=' ? entry + length + 1 : nullptr;
}

// One of the two variables is sufficient. A program that removes the other one does so on purpose.
bool keepsHost(const char *entry) {
    if (valueOf(entry, wire::kSocketVariable) != nullptr) return true;
    const char *libraries = valueOf(entry, "LD_PRELOAD");
    return libraries != nullptr && strstr(libraries, kOwnName) != nullptr;
}

void complain(const char *path) {
    if (complained == nullptr || complained->exchange(true)) return;
    const wire::KeptErrno kept;
    const char *const words[] = {
        "qvs-host: ", path == nullptr ? "a program" : path,
        " is started without the environment of this host, and so without the host; keep QVS_HOST_SOCKET, "
        "QVS_HOST_TREESH, LD_PRELOAD and LD_LIBRARY_PATH, or start it with \"qvs-host run --state DIR "
        "--\"\n"};
    iovec parts[3];
    for (size_t i = 0; i < 3; ++i)
        parts[i] = {const_cast<char *>(words[i]), strlen(words[i])};
    [[maybe_unused]] const ssize_t written = writev(STDERR_FILENO, parts, 3);
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
