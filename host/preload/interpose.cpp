// SPDX-License-Identifier: Apache-2.0
// The functions of the C library that the interposer stands in for. Each does its own work for the host's
// devices and for its shell, and passes everything else to the next library's function of that name.
#include <fcntl.h>
#include <spawn.h>
#include <sys/ioctl.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "preload/device.h"
#include "preload/environment.h"
#include "preload/next.h"

namespace {

using Arguments = char *const[];
using SpawnFunction = int(pid_t *, const char *, const posix_spawn_file_actions_t *,
                          const posix_spawnattr_t *, char *const *, char *const *);

// What comes after us in the order of libraries.
struct Next {
    int (*open)(const char *, int, ...);
    int (*open64)(const char *, int, ...);
    int (*openat)(int, const char *, int, ...);
    int (*openat64)(int, const char *, int, ...);
    int (*open2)(const char *, int);
    int (*open642)(const char *, int);
    int (*openat2)(int, const char *, int);
    int (*openat642)(int, const char *, int);
    int (*ioctl)(int, unsigned long, ...);
    int (*execve)(const char *, char *const *, char *const *);
    int (*execv)(const char *, char *const *);
    int (*execvp)(const char *, char *const *);
    int (*execvpe)(const char *, char *const *, char *const *);
    SpawnFunction *spawn;
    SpawnFunction *spawnp;
};
Next found;
std::atomic<bool> searched;

// At load, or at the first call from a library that is initialised earlier; racing threads find the same.
__attribute__((constructor)) void findAll() {
    using qvs::preload::find;
    find(found.open, "open");
    find(found.open64, "open64");
    find(found.openat, "openat");
    find(found.openat64, "openat64");
    find(found.open2, "__open_2");
    find(found.open642, "__open64_2");
    find(found.openat2, "__openat_2");
    find(found.openat642, "__openat64_2");
    find(found.ioctl, "ioctl");
    find(found.execve, "execve");
    find(found.execv, "execv");
    find(found.execvp, "execvp");
    find(found.execvpe, "execvpe");
    find(found.spawn, "posix_spawn");
    find(found.spawnp, "posix_spawnp");
    searched.store(true, std::memory_order_release);
}

const Next &next() {
    if (!searched.load(std::memory_order_acquire)) findAll();
    return found;
}

// Requests that the kernel serves itself for every descriptor, before any device sees them.
bool concernsDescriptor(unsigned long request) {
    return request == FIOCLEX || request == FIONCLEX;
}

}  // namespace

// The headers declare these functions with attributes and redirections of their own (a path that is "never
// null"), so ours have other names here and get theirs from the assembler. Where the headers say "...", the
// one argument that may follow arrives in its register like any other, and is passed on unread.
#pragma GCC visibility push(default)
extern "C" {
int interposedOpen(const char *path, int flags, mode_t mode) __asm__("open");
int interposedOpen64(const char *path, int flags, mode_t mode) __asm__("open64");
int interposedOpenat(int directory, const char *path, int flags, mode_t mode) __asm__("openat");
int interposedOpenat64(int directory, const char *path, int flags, mode_t mode) __asm__("openat64");
int interposedOpen2(const char *path, int flags) __asm__("__open_2");
int interposedOpen642(const char *path, int flags) __asm__("__open64_2");
int interposedOpenat2(int directory, const char *path, int flags) __asm__("__openat_2");
int interposedOpenat642(int directory, const char *path, int flags) __asm__("__openat64_2");
int interposedIoctl(int descriptor, unsigned long request, void *argument) __asm__("ioctl");
int interposedExecve(const char *path, Arguments arguments, Arguments environment) __asm__("execve");
int interposedExecv(const char *path, Arguments arguments) __asm__("execv");
int interposedExecvp(const char *path, Arguments arguments) __asm__("execvp");
int interposedExecvpe(const char *path, Arguments arguments, Arguments environment) __asm__("execvpe");
SpawnFunction interposedSpawn __asm__("posix_spawn");
SpawnFunction interposedSpawnp __asm__("posix_spawnp");
}
#pragma GCC visibility pop

using qvs::preload::controlDevice;
using qvs::preload::deviceOf;
using qvs::preload::openDevice;
using qvs::preload::program;
using qvs::preload::startWith;

int interposedOpen(const char *path, int flags, mode_t mode) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().open(path, flags, mode);
}

int interposedOpen64(const char *path, int flags, mode_t mode) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().open64(path, flags, mode);
}

// A device path is absolute, so the directory does not matter.
int interposedOpenat(int directory, const char *path, int flags, mode_t mode) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().openat(directory, path, flags, mode);
}

int interposedOpenat64(int directory, const char *path, int flags, mode_t mode) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().openat64(directory, path, flags, mode);
}

// What programs call that were compiled with buffer checks.
int interposedOpen2(const char *path, int flags) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().open2(path, flags);
}

int interposedOpen642(const char *path, int flags) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().open642(path, flags);
}

int interposedOpenat2(int directory, const char *path, int flags) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().openat2(directory, path, flags);
}

int interposedOpenat642(int directory, const char *path, int flags) {
    if (const int device = deviceOf(path); device >= 0) return openDevice(device, flags);
    return next().openat642(directory, path, flags);
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
