// SPDX-License-Identifier: Apache-2.0
// Checks the state directory and its files.
#include "daemon/model/state_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fmt/format.h>

namespace qvs::kernel {

namespace {

template <typename... Values>
[[noreturn]] void refuse(fmt::format_string<Values...> format, Values &&...values) {
    throw std::runtime_error(fmt::format(format, std::forward<Values>(values)...));
}

void requireOwn(const std::string &path, const struct stat &file) {
    if (!S_ISREG(file.st_mode)) refuse("{} is not a regular file; move it away", path);
    if (file.st_uid != geteuid())
        refuse("{} belongs to user {}, and this is user {}; move it away", path, file.st_uid, geteuid());
}

}  // namespace

void prepareDirectory(const std::string &directory) {
    std::error_code failure;
    std::filesystem::create_directories(directory, failure);
    struct stat found {};
    if (failure || stat(directory.c_str(), &found) != 0) {
        refuse("cannot create the state directory {}: {}", directory,
               failure ? failure.message() : std::strerror(errno));
    }
    if (found.st_uid != geteuid()) {
        refuse(
            "the state directory {} belongs to user {}, and this is user {}; start the host as that user, or "
            "use another directory",
            directory, found.st_uid, geteuid());
    }
    // The primary group of the user is accepted.
    const bool shared = (found.st_mode & S_IWGRP) != 0 && found.st_gid != getegid();
    if (shared || (found.st_mode & S_IWOTH) != 0) {
        refuse(
            "other users can write to the state directory {0}; run \"chmod go-w {0}\" or use another "
            "directory",
            directory);
    }
}

std::string identityOf(const std::string &directory) {
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::weakly_canonical(directory, failure);
    return failure ? directory : path.string();
}

int openOwnFile(const std::string &path, int flags) {
    const int file =
        open(path.c_str(), flags | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0666);
    if (file < 0 && errno == ELOOP) refuse("{} is a symbolic link; move it away", path);
    if (file < 0) refuse("cannot write {}: {}", path, std::strerror(errno));
    struct stat found {};
    if (fstat(file, &found) != 0) refuse("cannot write {}: {}", path, std::strerror(errno));
    requireOwn(path, found);
    return file;
}

void requireOwnFile(const std::string &path) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        if (errno == ENOENT) return;
        refuse("cannot use {}: {}", path, std::strerror(errno));
    }
    if (S_ISLNK(found.st_mode)) refuse("{} is a symbolic link; move it away", path);
    requireOwn(path, found);
}

}  // namespace qvs::kernel
