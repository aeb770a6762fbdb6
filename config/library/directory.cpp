// SPDX-License-Identifier: Apache-2.0
#include "config/library/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.h"
#include "base/text.h"
#include "config/library/lock.h"

namespace qvs {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kPublicMode = 0644;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

// A descriptor that is closed at the end.
class Descriptor {
  public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return descriptor_; }
    // Returns the errno of closing it, or 0.
    int close() {
        const int result = ::close(descriptor_) == 0 ? 0 : errno;
        descriptor_ = -1;
        return result;
    }

  private:
    int descriptor_;
};

// Who may write to a directory or a file of another user could change it between two looks. Null: nobody.
const char *distrust(const struct stat &found) {
    if (found.st_uid != geteuid() && found.st_uid != 0) return "it belongs to another user";
    return (found.st_mode & kOthersWrite) != 0 ? "other users may write to it" : nullptr;
}

void makeDirectories(const std::string &path) {
    for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        // What cannot be made shows when the whole is opened.
        mkdir(path.substr(0, end).c_str(), kDirectoryMode);
        if (end == std::string::npos) return;
    }
}

// Writes everything to the disk. Returns the errno, or 0.
int store(Descriptor &file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file.get(), text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        text.remove_prefix(static_cast<size_t>(written));
    }
    const int synced = fsync(file.get()) == 0 ? 0 : errno;
    const int closed = file.close();
    return synced != 0 ? synced : closed;
}

std::string temporaryName(const std::string &name) {
    return fmt::format(".{}.{}", name, getpid());
}

}  // namespace

void writePublicFile(const std::string &path, std::string_view text) {
    const size_t slash = path.rfind('/');
    const std::string name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    const std::string parent = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string temporary = parent + "/" + temporaryName(name);
    struct stat found {};
    if (lstat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode))
        fail(Exit::Failed, "file {}: it exists and is no regular file; name another one", inQuotes(path));
    // A process of the same number may have died here.
    unlink(temporary.c_str());
    Descriptor file(
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kPublicMode));
    int error = file.get() < 0 ? errno : 0;
    // The mask of the process must not hide the file.
    if (error == 0 && fchmod(file.get(), kPublicMode) != 0) error = errno;
    if (error == 0) error = store(file, text);
    if (error == 0 && rename(temporary.c_str(), path.c_str()) != 0) error = errno;
    if (error == 0) return;
    unlink(temporary.c_str());
    fail(Exit::Failed, "file {}: {}", inQuotes(path), std::strerror(error));
}

PrivateDirectory::PrivateDirectory(std::string path, bool create, const DirectoryUse &use)
    : path_(std::move(path)), use_(use) {
    if (create) makeDirectories(path_);
    descriptor_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor_ < 0 && (create || errno != ENOENT)) failWhole(std::strerror(errno));
    struct stat found {};
    if (descriptor_ < 0 || fstat(descriptor_, &found) != 0) return;
    owner_ = found.st_uid;
    group_ = found.st_gid;
    const char *problem = use_.ofHost ? qvs::distrust(descriptor_, found) : distrust(found);
    if (problem == nullptr) return;
    ::close(descriptor_);
    failWhole(problem);
}

PrivateDirectory::~PrivateDirectory() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void PrivateDirectory::failWhole(std::string_view reason) const {
    fail(Exit::Failed, "directory {}: {}", inQuotes(path_), reason);
}

void PrivateDirectory::failAbout(const std::string &name, std::string_view reason) const {
    fail(Exit::Failed, "{} {}: {}", use_.file, inQuotes(path_ + "/" + name), reason);
}

void PrivateDirectory::failErrno(const std::string &name) const {
    if (errno == ELOOP) failAbout(name, fmt::format("it is a symbolic link{}", use_.advice));
    failAbout(name, std::strerror(errno));
}

// Why a file that was found is refused; null when it is not.
const char *PrivateDirectory::problemWith(const struct stat &found) const {
    if (!S_ISREG(found.st_mode)) return "it is not a file";
    if (use_.ofHost && found.st_nlink != 1) return "it is no file of its own";
    if (static_cast<uint64_t>(found.st_size) > use_.most) return "it is too large";
    struct stat trusted = found;
    if (use_.ofHost && found.st_uid == owner_) trusted.st_uid = geteuid();
    return distrust(trusted);
}

std::vector<std::string> PrivateDirectory::names() const {
    std::vector<std::string> names;
    if (descriptor_ < 0) return names;
    // The walk has a descriptor of its own, so that each begins at the first file.
    const int own = openat(descriptor_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR *)> walk(own < 0 ? nullptr : fdopendir(own), closedir);
    if (!walk) failWhole(std::strerror(errno));
    while (const struct dirent *entry = readdir(walk.get()))
        if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> PrivateDirectory::read(const std::string &name) const {
    const int opened =
        descriptor_ < 0 ? -1
                        : openat(descriptor_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (opened < 0) {
        if (descriptor_ < 0 || errno == ENOENT) return std::nullopt;
        failErrno(name);
    }
    const Descriptor file(opened);
    struct stat found;
    if (fstat(file.get(), &found) != 0) failErrno(name);
    if (const char *problem = problemWith(found)) failAbout(name, fmt::format("{}{}", problem, use_.advice));
    std::string text(static_cast<size_t>(found.st_size), '\0');
    size_t taken = 0;
    while (taken < text.size()) {
        const ssize_t got = ::read(file.get(), text.data() + taken, text.size() - taken);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failErrno(name);
        if (got == 0) break;
        taken += static_cast<size_t>(got);
    }
    text.resize(taken);
    return text;
}

// Returns false when there is a file of the new name and `replace` is not set.
bool PrivateDirectory::rename(const std::string &from, const std::string &to, bool replace) const {
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    int result = renameat2(descriptor_, from.c_str(), descriptor_, to.c_str(), flags);
    if (result != 0 && errno == EINVAL && !replace) {
        // A file system that cannot refuse; two runs at the same moment may then both succeed.
        if (faccessat(descriptor_, to.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) return false;
        result = renameat(descriptor_, from.c_str(), descriptor_, to.c_str());
    }
    if (result != 0 && errno == EEXIST) return false;
    if (result != 0) failErrno(to);
    return true;
}

std::string PrivateDirectory::temporaryOf(const std::string &name) const {
    return use_.ofHost ? name + ".new" : temporaryName(name);
}

int PrivateDirectory::openNew(const std::string &temporary, const std::string &name) const {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    if (descriptor_ < 0) failWhole(std::strerror(ENOENT));
    // What a process that was killed has left.
    if (unlinkat(descriptor_, temporary.c_str(), 0) != 0 && errno != ENOENT) failErrno(temporary);
    const int file = openat(descriptor_, temporary.c_str(), kFlags, kFileMode);
    if (file < 0) failErrno(name);
    if (use_.ofHost && owner_ != geteuid()) {
        [[maybe_unused]] const int given = fchown(file, owner_, group_);
    }
    return file;
}

bool PrivateDirectory::write(const std::string &name, std::string_view text, bool replace) const {
    if (text.size() > use_.most) failAbout(name, "it is too large");
    const std::string temporary = temporaryOf(name);
    Descriptor file(openNew(temporary, name));
    try {
        errno = store(file, text);
        if (errno != 0) failErrno(name);
        if (rename(temporary, name, replace)) {
            sync();
            return true;
        }
    } catch (...) {
        unlinkat(descriptor_, temporary.c_str(), 0);
        throw;
    }
    unlinkat(descriptor_, temporary.c_str(), 0);
    return false;
}

bool PrivateDirectory::remove(const std::string &name) const {
    if (descriptor_ < 0) return false;
    if (unlinkat(descriptor_, name.c_str(), 0) == 0) {
        sync();
        return true;
    }
    if (errno == ENOENT) return false;
    failErrno(name);
}

void PrivateDirectory::removeUnfinished(const std::string &name) const {
    // What cannot be removed is told when the file is written.
    if (descriptor_ >= 0 && use_.ofHost) unlinkat(descriptor_, temporaryOf(name).c_str(), 0);
}

// Some file systems have nothing to do for a directory, and say EINVAL.
void PrivateDirectory::sync() const {
    if (fsync(descriptor_) != 0 && errno != EINVAL) failWhole(std::strerror(errno));
}

}  // namespace qvs
