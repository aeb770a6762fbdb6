// SPDX-License-Identifier: Apache-2.0
// Programs that look at a file before they open or run it: the host's devices and its shell are there for
// them like for those that open and run.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "preload/device.h"
#include "preload/environment.h"
#include "preload/next.h"
#include "wire/stream.h"

using qvs::preload::deviceOf;

static_assert(sizeof(struct stat) == sizeof(struct stat64));

namespace {

using Stat = int(const char *, struct stat *);
using StatAt = int(int, const char *, struct stat *, int);
using StatDescriptor = int(int, struct stat *);
// What programs call that were linked with a C library older than 2.33.
using OldStat = int(int, const char *, struct stat *);
using OldStatAt = int(int, int, const char *, struct stat *, int);
using OldStatDescriptor = int(int, int, struct stat *);
using Access = int(const char *, int);
using Attribute = ssize_t(const char *, const char *, void *, size_t);

struct Next {
    Stat *stat, *lstat;
    StatAt *fstatat;
    StatDescriptor *fstat;
    OldStat *oldStat, *oldLstat;
    OldStatAt *oldFstatat;
    OldStatDescriptor *oldFstat;
    Access *access, *euidaccess;
    Attribute *getxattr, *lgetxattr;
    int (*faccessat)(int, const char *, int, int);
    int (*statx)(int, const char *, int, unsigned, struct statx *);
};
Next found;
std::atomic<bool> searched;

// The 64-bit forms are the same functions here.
__attribute__((constructor)) void findAll() {
    using qvs::preload::find;
    find(found.stat, "stat");
    find(found.lstat, "lstat");
    find(found.fstatat, "fstatat");
    find(found.fstat, "fstat");
    find(found.oldStat, "__xstat");
    find(found.oldLstat, "__lxstat");
    find(found.oldFstatat, "__fxstatat");
    find(found.oldFstat, "__fxstat");
    find(found.access, "access");
    find(found.euidaccess, "euidaccess");
    find(found.faccessat, "faccessat");
    find(found.getxattr, "getxattr");
    find(found.lgetxattr, "lgetxattr");
    find(found.statx, "statx");
    searched.store(true, std::memory_order_release);
}

const Next &next() {
    if (!searched.load(std::memory_order_acquire)) findAll();
    return found;
}

// The file whose owner, times and permissions are shown for a path: a device is there when the host's socket
// is, for whoever may use that.
const char *shownFor(const char *path, int device) {
    return device >= 0 ? qvs::wire::hostSocket() : qvs::preload::program(path);
}

// For a path and for a descriptor alike.
constexpr unsigned kMajor = 240;  // of those for local use
constexpr mode_t modeOf(mode_t socket) {
    return S_IFCHR | (socket & (S_IRUSR | S_IWUSR));
}

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

// The device that a path names, or the descriptor when the path is empty and that is allowed.
int deviceAt(int directory, const char *path, int flags) {
    const int device = deviceOf(path);
    const bool itself = (flags & AT_EMPTY_PATH) != 0 && (path == nullptr || *path == '\0');
    return device < 0 && itself ? deviceOf(directory) : device;
}

// The empty path stays what it is.
const char *shownAt(const char *path) {
    return shownFor(path, deviceOf(path));
}

bool isSocket(int result, const struct stat *status) {
    return result == 0 && S_ISSOCK(status->st_mode);
}

// A device has none; ls, for one, asks for lists of access rights.
ssize_t attribute(Attribute *function, const char *path, const char *name, void *value, size_t size) {
    const int device = deviceOf(path);
    if (device < 0) return function(shownFor(path, device), name, value, size);
    errno = ENOTSUP;
    return -1;
}

template <typename Function>
int look(Function *function, const char *path, struct stat *status) {
    const int device = deviceOf(path);
    return disguise(function(shownFor(path, device), status), status, device);
}

}  // namespace

// Named like in interpose.cpp.
#pragma GCC visibility push(default)
extern "C" {
Stat interposedStat __asm__("stat"), interposedStat64 __asm__("stat64");
Stat interposedLstat __asm__("lstat"), interposedLstat64 __asm__("lstat64");
StatAt interposedFstatat __asm__("fstatat"), interposedFstatat64 __asm__("fstatat64");
StatDescriptor interposedFstat __asm__("fstat"), interposedFstat64 __asm__("fstat64");
OldStat interposedXstat __asm__("__xstat"), interposedXstat64 __asm__("__xstat64");
OldStat interposedLxstat __asm__("__lxstat"), interposedLxstat64 __asm__("__lxstat64");
OldStatAt interposedFxstatat __asm__("__fxstatat"), interposedFxstatat64 __asm__("__fxstatat64");
OldStatDescriptor interposedFxstat __asm__("__fxstat"), interposedFxstat64 __asm__("__fxstat64");
Access interposedAccess __asm__("access");
Attribute interposedGetxattr __asm__("getxattr"), interposedLgetxattr __asm__("lgetxattr");
Access interposedEuidaccess __asm__("euidaccess"), interposedEaccess __asm__("eaccess");
int interposedFaccessat(int directory, const char *path, int mode, int flags) __asm__("faccessat");
int interposedStatx(int directory, const char *path, int flags, unsigned mask,
                    struct statx *status) __asm__("statx");
}
#pragma GCC visibility pop

int interposedStat(const char *path, struct stat *status) {
    return look(next().stat, path, status);
}

int interposedStat64(const char *path, struct stat *status) {
    return look(next().stat, path, status);
}

int interposedLstat(const char *path, struct stat *status) {
    return look(next().lstat, path, status);
}

int interposedLstat64(const char *path, struct stat *status) {
    return look(next().lstat, path, status);
}

int interposedFstatat(int directory, const char *path, struct stat *status, int flags) {
    const int device = deviceAt(directory, path, flags);
    return disguise(next().fstatat(directory, shownAt(path), status, flags), status, device);
}

int interposedFstatat64(int directory, const char *path, struct stat *status, int flags) {
    return interposedFstatat(directory, path, status, flags);
}

int interposedFstat(int descriptor, struct stat *status) {
    const int result = next().fstat(descriptor, status);
    return isSocket(result, status) ? disguise(result, status, deviceOf(descriptor)) : result;
}

int interposedFstat64(int descriptor, struct stat *status) {
    return interposedFstat(descriptor, status);
}

int interposedXstat(int version, const char *path, struct stat *status) {
    const int device = deviceOf(path);
    return disguise(next().oldStat(version, shownFor(path, device), status), status, device);
}

int interposedXstat64(int version, const char *path, struct stat *status) {
    return interposedXstat(version, path, status);
}

int interposedLxstat(int version, const char *path, struct stat *status) {
    const int device = deviceOf(path);
    return disguise(next().oldLstat(version, shownFor(path, device), status), status, device);
}

int interposedLxstat64(int version, const char *path, struct stat *status) {
    return interposedLxstat(version, path, status);
}

int interposedFxstatat(int version, int directory, const char *path, struct stat *status, int flags) {
    const int device = deviceAt(directory, path, flags);
    return disguise(next().oldFstatat(version, directory, shownAt(path), status, flags), status, device);
}

int interposedFxstatat64(int version, int directory, const char *path, struct stat *status, int flags) {
    return interposedFxstatat(version, directory, path, status, flags);
}

int interposedFxstat(int version, int descriptor, struct stat *status) {
    const int result = next().oldFstat(version, descriptor, status);
    return isSocket(result, status) ? disguise(result, status, deviceOf(descriptor)) : result;
}

int interposedFxstat64(int version, int descriptor, struct stat *status) {
    return interposedFxstat(version, descriptor, status);
}

int interposedAccess(const char *path, int mode) {
    return next().access(shownAt(path), mode);
}

int interposedEuidaccess(const char *path, int mode) {
    return next().euidaccess(shownAt(path), mode);
}

int interposedEaccess(const char *path, int mode) {
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
