// SPDX-License-Identifier: Apache-2.0
// Replaces the functions of the C library that examine files, so that the devices and the shell of the host
// exist for programs that examine a file before they open or run it.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>

#include "preload/device.h"
#include "preload/environment.h"
#include "preload/next.h"
#include "wire/stream.h"

using qvs::preload::deviceOf;
using qvs::preload::next;

// The functions for 64-bit file sizes are the same functions.
static_assert(sizeof(struct stat) == sizeof(struct stat64));

namespace {

using Stat = int(const char *, struct stat *);
using StatAt = int(int, const char *, struct stat *, int);
using StatDescriptor = int(int, struct stat *);
using OldStat = int(int, const char *, struct stat *);
using OldStatAt = int(int, int, const char *, struct stat *, int);
using OldStatDescriptor = int(int, int, struct stat *);
using Access = int(const char *, int);
using Attribute = ssize_t(const char *, const char *, void *, size_t);

// Returns the file whose owner, times and permissions are shown for a path. For a device, this is the socket
// of the host.
const char *shownFor(const char *path, int device) {
    return device >= 0 ? qvs::wire::hostSocket() : qvs::preload::program(path);
}

constexpr unsigned kMajor = 240;  // one of the numbers for local use
constexpr mode_t modeOf(mode_t socket) {
    return S_IFCHR | (socket & (S_IRUSR | S_IWUSR));
}

// Makes the status of the socket look like that of a device.
int disguise(int result, struct stat *status, int device) {
    if (result != 0 || device < 0) return result;
    status->st_mode = modeOf(status->st_mode);
    status->st_dev = makedev(0, kMajor);
    status->st_ino = static_cast<ino_t>(device) + 1;
    status->st_rdev = makedev(kMajor, static_cast<unsigned>(device));
    status->st_nlink = 1;
    status->st_size = 0;
    status->st_blocks = 0;
    return result;
}

int disguise(int result, struct statx *status, int device) {
    if (result != 0 || device < 0) return result;
    status->stx_mode = static_cast<uint16_t>(modeOf(status->stx_mode));
    status->stx_dev_major = 0;
    status->stx_dev_minor = kMajor;
    status->stx_ino = static_cast<uint64_t>(device) + 1;
    status->stx_rdev_major = kMajor;
    status->stx_rdev_minor = static_cast<uint32_t>(device);
    status->stx_nlink = 1;
    status->stx_size = 0;
    status->stx_blocks = 0;
    return result;
}

// Returns the device that a path names, or the device of the descriptor if the path is empty and
// AT_EMPTY_PATH is given.
int deviceAt(int directory, const char *path, int flags) {
    const int device = deviceOf(path);
    const bool itself = (flags & AT_EMPTY_PATH) != 0 && (path == nullptr || *path == '\0');
    return device < 0 && itself ? deviceOf(directory) : device;
}

const char *shownAt(const char *path) {
    return shownFor(path, deviceOf(path));
}

bool isSocket(int result, const struct stat *status) {
    return result == 0 && S_ISSOCK(status->st_mode);
}

// Reads an extended attribute. A device has none (ls asks for access control lists).
ssize_t attribute(Attribute *function, const char *path, const char *name, void *value, size_t size) {
    const int device = deviceOf(path);
    if (device < 0) return function(shownFor(path, device), name, value, size);
    errno = ENOTSUP;
    return -1;
}

// Examines the file that is shown for a path.
template <typename Look>
int look(const char *path, struct stat *status, Look examine) {
    const int device = deviceOf(path);
    return disguise(examine(shownFor(path, device)), status, device);
}

}  // namespace

// The names are explained in interpose.cpp.
#pragma GCC visibility push(default)
extern "C" {
Stat interposedStat __asm__("stat");
Stat interposedStat64 __asm__("stat64") __attribute__((alias("stat")));
Stat interposedLstat __asm__("lstat");
Stat interposedLstat64 __asm__("lstat64") __attribute__((alias("lstat")));
StatAt interposedFstatat __asm__("fstatat");
StatAt interposedFstatat64 __asm__("fstatat64") __attribute__((alias("fstatat")));
StatDescriptor interposedFstat __asm__("fstat");
StatDescriptor interposedFstat64 __asm__("fstat64") __attribute__((alias("fstat")));
OldStat interposedXstat __asm__("__xstat");
OldStat interposedXstat64 __asm__("__xstat64") __attribute__((alias("__xstat")));
OldStat interposedLxstat __asm__("__lxstat");
OldStat interposedLxstat64 __asm__("__lxstat64") __attribute__((alias("__lxstat")));
OldStatAt interposedFxstatat __asm__("__fxstatat");
OldStatAt interposedFxstatat64 __asm__("__fxstatat64") __attribute__((alias("__fxstatat")));
OldStatDescriptor interposedFxstat __asm__("__fxstat");
OldStatDescriptor interposedFxstat64 __asm__("__fxstat64") __attribute__((alias("__fxstat")));
Access interposedAccess __asm__("access");
Access interposedEuidaccess __asm__("euidaccess");
Access interposedEaccess __asm__("eaccess") __attribute__((alias("euidaccess")));
Attribute interposedGetxattr __asm__("getxattr");
Attribute interposedLgetxattr __asm__("lgetxattr");
int interposedFaccessat(int directory, const char *path, int mode, int flags) __asm__("faccessat");
int interposedStatx(int directory, const char *path, int flags, unsigned mask,
                    struct statx *status) __asm__("statx");
}
#pragma GCC visibility pop

int interposedStat(const char *path, struct stat *status) {
    return look(path, status, [&](const char *shown) { return next().stat(shown, status); });
}

int interposedLstat(const char *path, struct stat *status) {
    return look(path, status, [&](const char *shown) { return next().lstat(shown, status); });
}

int interposedFstatat(int directory, const char *path, struct stat *status, int flags) {
    const int device = deviceAt(directory, path, flags);
    return disguise(next().fstatat(directory, shownAt(path), status, flags), status, device);
}

int interposedFstat(int descriptor, struct stat *status) {
    const int result = next().fstat(descriptor, status);
    return isSocket(result, status) ? disguise(result, status, deviceOf(descriptor)) : result;
}

int interposedXstat(int version, const char *path, struct stat *status) {
    return look(path, status, [&](const char *shown) { return next().oldStat(version, shown, status); });
}

int interposedLxstat(int version, const char *path, struct stat *status) {
    return look(path, status, [&](const char *shown) { return next().oldLstat(version, shown, status); });
}

int interposedFxstatat(int version, int directory, const char *path, struct stat *status, int flags) {
    const int device = deviceAt(directory, path, flags);
    return disguise(next().oldFstatat(version, directory, shownAt(path), status, flags), status, device);
}

int interposedFxstat(int version, int descriptor, struct stat *status) {
    const int result = next().oldFstat(version, descriptor, status);
    return isSocket(result, status) ? disguise(result, status, deviceOf(descriptor)) : result;
}

int interposedAccess(const char *path, int mode) {
    return next().access(shownAt(path), mode);
}

int interposedEuidaccess(const char *path, int mode) {
    return next().euidaccess(shownAt(path), mode);
}

int interposedFaccessat(int directory, const char *path, int mode, int flags) {
    return next().faccessat(directory, shownAt(path), mode, flags);
}

ssize_t interposedGetxattr(const char *path, const char *name, void *value, size_t size) {
    return attribute(next().getxattr, path, name, value, size);
}

ssize_t interposedLgetxattr(const char *path, const char *name, void *value, size_t size) {
    return attribute(next().lgetxattr, path, name, value, size);
}

int interposedStatx(int directory, const char *path, int flags, unsigned mask, struct statx *status) {
    const int device = deviceAt(directory, path, flags);
    return disguise(next().statx(directory, shownAt(path), flags, mask, status), status, device);
}
