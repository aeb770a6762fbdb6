// SPDX-License-Identifier: Apache-2.0
// Replaces the functions of the C library that open devices and start programs. Each one serves the devices
// and the shell of the host, and passes all other calls to the next library.
#include <fcntl.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "preload/device.h"
#include "preload/environment.h"
#include "preload/next.h"

// An open without O_LARGEFILE is the same function as open64.
static_assert(O_LARGEFILE == 0);

namespace {

using Arguments = char *const[];

// Tells whether the kernel serves a request for every descriptor, without the device.
bool concernsDescriptor(unsigned long request) {
    return request == FIOCLEX || request == FIONCLEX;
}

}  // namespace

// The headers declare these functions with attributes of their own (a path that is "never null"). The
// functions here therefore have other names in C++ and get their symbols from the assembler. Where a header
// says "...", the one argument that can follow arrives in its register and is passed on unread.
#pragma GCC visibility push(default)
extern "C" {
int interposedOpen(const char *path, int flags, mode_t mode) __asm__("open");
int interposedOpenat(int directory, const char *path, int flags, mode_t mode) __asm__("openat");
int interposedCheckedOpen(const char *path, int flags) __asm__("__open_2");
int interposedCheckedOpenat(int directory, const char *path, int flags) __asm__("__openat_2");
int interposedOpen64(const char *, int, mode_t) __asm__("open64") __attribute__((alias("open")));
int interposedOpenat64(int, const char *, int, mode_t) __asm__("openat64") __attribute__((alias("openat")));
int interposedCheckedOpen64(const char *, int) __asm__("__open64_2") __attribute__((alias("__open_2")));
int interposedCheckedOpenat64(int, const char *, int) __asm__("__openat64_2")
    __attribute__((alias("__openat_2")));
int interposedIoctl(int descriptor, unsigned long request, void *argument) __asm__("ioctl");
int interposedExecve(const char *path, Arguments arguments, Arguments environment) __asm__("execve");
int interposedExecv(const char *path, Arguments arguments) __asm__("execv");
int interposedExecvp(const char *path, Arguments arguments) __asm__("execvp");
int interposedExecvpe(const char *path, Arguments arguments, Arguments environment) __asm__("execvpe");
qvs::preload::Spawn interposedSpawn __asm__("posix_spawn");
qvs::preload::Spawn interposedSpawnp __asm__("posix_spawnp");
}
#pragma GCC visibility pop

using qvs::preload::controlDevice;
using qvs::preload::deviceOf;
using qvs::preload::next;
using qvs::preload::openDevice;
using qvs::preload::program;
using qvs::preload::startWith;

int interposedOpen(const char *path, int flags, mode_t mode) {
    const int device = deviceOf(path);
    return device >= 0 ? openDevice(device, flags) : next().open(path, flags, mode);
}

// The path of a device is absolute, so the directory does not matter.
int interposedOpenat(int directory, const char *path, int flags, mode_t mode) {
    const int device = deviceOf(path);
    return device >= 0 ? openDevice(device, flags) : next().openat(directory, path, flags, mode);
}

int interposedCheckedOpen(const char *path, int flags) {
    const int device = deviceOf(path);
    return device >= 0 ? openDevice(device, flags) : next().checkedOpen(path, flags);
}

int interposedCheckedOpenat(int directory, const char *path, int flags) {
    const int device = deviceOf(path);
    return device >= 0 ? openDevice(device, flags) : next().checkedOpenat(directory, path, flags);
}

int interposedIoctl(int descriptor, unsigned long request, void *argument) {
    if (concernsDescriptor(request) || deviceOf(descriptor) < 0)
        return next().ioctl(descriptor, request, argument);
    return controlDevice(descriptor, request, reinterpret_cast<uint64_t>(argument));
}

int interposedExecve(const char *path, Arguments arguments, Arguments environment) {
    return startWith(environment, path,
                     [&](char *const *given) { return next().execve(program(path), arguments, given); });
}

int interposedExecv(const char *path, Arguments arguments) {
    return startWith(environ, path, [&](char *const *given) {
        return given == environ ? next().execv(program(path), arguments)
                                : next().execve(program(path), arguments, given);
    });
}

int interposedExecvp(const char *path, Arguments arguments) {
    return startWith(environ, path, [&](char *const *given) {
        return given == environ ? next().execvp(program(path), arguments)
                                : next().execvpe(program(path), arguments, given);
    });
}

int interposedExecvpe(const char *path, Arguments arguments, Arguments environment) {
    return startWith(environment, path,
                     [&](char *const *given) { return next().execvpe(program(path), arguments, given); });
}

int interposedSpawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                    const posix_spawnattr_t *attributes, char *const *arguments, char *const *environment) {
    return startWith(environment, path, [&](char *const *given) {
        return next().spawn(pid, program(path), actions, attributes, arguments, given);
    });
}

int interposedSpawnp(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                     const posix_spawnattr_t *attributes, char *const *arguments, char *const *environment) {
    return startWith(environment, path, [&](char *const *given) {
        return next().spawnp(pid, program(path), actions, attributes, arguments, given);
    });
}
