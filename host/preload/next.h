// SPDX-License-Identifier: Apache-2.0
// The functions of the C library that the interposer replaces.
#pragma once

#include <spawn.h>
#include <sys/stat.h>
#include <sys/types.h>

// One row for each function: its member in Next, its symbol, its type. The symbols that begin with two
// underscores are for programs that were compiled with buffer checks or linked with a C library before 2.33.
#define QVS_REPLACED_FUNCTIONS(row)                                                                          \
    row(open, "open", int(const char *, int, ...)) row(openat, "openat", int(int, const char *, int, ...))   \
        row(checkedOpen, "__open_2", int(const char *, int))                                                 \
            row(checkedOpenat, "__openat_2", int(int, const char *, int)) row(ioctl, "ioctl",                \
                                                                              int(int, unsigned long, ...))  \
                row(execve, "execve", int(const char *, char *const *, char *const *)) row(                  \
                    execv, "execv", int(const char *, char *const *)) row(execvp, "execvp",                  \
                                                                          int(const char *, char *const *))  \
                    row(execvpe, "execvpe", int(const char *, char *const *, char *const *)) row(            \
                        spawn, "posix_spawn", qvs::preload::Spawn) row(spawnp, "posix_spawnp",               \
                                                                       qvs::preload::Spawn)                  \
                        row(stat, "stat", int(const char *, struct stat *)) row(                             \
                            lstat, "lstat", int(const char *, struct stat *))                                \
                            row(fstatat, "fstatat", int(int, const char *, struct stat *, int)) row(         \
                                fstat, "fstat", int(int, struct stat *))                                     \
                                row(oldStat, "__xstat", int(int, const char *, struct stat *)) row(          \
                                    oldLstat, "__lxstat", int(int, const char *, struct stat *))             \
                                    row(oldFstatat, "__fxstatat",                                            \
                                        int(int, int, const char *, struct stat *,                           \
                                            int)) row(oldFstat, "__fxstat", int(int, int, struct stat *))    \
                                        row(access, "access", int(const char *, int))                        \
                                            row(euidaccess, "euidaccess", int(const char *, int)) row(       \
                                                faccessat, "faccessat", int(int, const char *, int, int))    \
                                                row(getxattr, "getxattr",                                    \
                                                    ssize_t(const char *, const char *, void *, size_t))     \
                                                    row(lgetxattr, "lgetxattr",                              \
                                                        ssize_t(const char *, const char *, void *, size_t)) \
                                                        row(statx, "statx",                                  \
                                                            int(int, const char *, int, unsigned,            \
                                                                struct statx *))

namespace qvs::preload {

using Spawn = int(pid_t *, const char *, const posix_spawn_file_actions_t *, const posix_spawnattr_t *,
                  char *const *, char *const *);

template <typename Type>
using Function = Type *;

// The functions that follow the interposer in the order of libraries.
struct Next {
#define QVS_MEMBER(member, symbol, ...) Function<__VA_ARGS__> member;
    QVS_REPLACED_FUNCTIONS(QVS_MEMBER)
#undef QVS_MEMBER
};
const Next &next();

}  // namespace qvs::preload
