// SPDX-License-Identifier: Apache-2.0
#include "config/library/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.h"
#include "base/text.h"

namespace qvs {
namespace {

constexpr mode_t kDirectoryMode = 0700;
constexpr mode_t kFileMode = 0600;
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
const char *problemWith(const struct stat &found) {
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

}  // namespace

PrivateDirectory::PrivateDirectory(std::string path, bool create) : path_(std::move(path)) {
    if (create) makeDirectories(path_);
    descriptor_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor_ < 0 && (create || errno != ENOENT))
        fail(Exit::Failed, "directory {}: {}", inQuotes(path_), std::strerror(errno));
    struct stat found;
    if (descriptor_ < 0 || fstat(descriptor_, &found) != 0) return;
    const char *problem = problemWith(found);
    if (problem == nullptr) return;
    ::close(descriptor_);
    fail(Exit::Failed, "directory {}: {}", inQuotes(path_), problem);
}

PrivateDirectory::~PrivateDirectory() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void PrivateDirectory::failAbout(const std::string &name, int error) const {
    fail(Exit::Failed, "file {}: {}", inQuotes(path_ + "/" + name),
         error == ELOOP ? "it is a symbolic link" : std::strerror(error));
}

std::vector<std::string> PrivateDirectory::names() const {
    std::vector<std::string> names;
    if (descriptor_ < 0) return names;
    // The walk has a descriptor of its own, so that each begins at the first file.
    const int own = openat(descriptor_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR *)> walk(own < 0 ? nullptr : fdopendir(own), closedir);
    if (!walk) fail(Exit::Failed, "directory {}: {}", inQuotes(path_), std::strerror(errno));
    while (const struct dirent *entry = readdir(walk.get()))
        if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> PrivateDirectory::read(const std::string &name, size_t most) const {
    const int opened =
        descriptor_ < 0 ? -1
                        : openat(descriptor_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (opened < 0) {
        if (descriptor_ < 0 || errno == ENOENT) return std::nullopt;
        failAbout(name, errno);
    }
    const Descriptor file(opened);
    struct stat found;
    if (fstat(file.get(), &found) != 0) failAbout(name, errno);
    const char *problem = S_ISREG(found.st_mode) ? problemWith(found) : "it is not a file";
    if (problem == nullptr && static_cast<uint64_t>(found.st_size) > most) problem = "it is too large";
    if (problem != nullptr) fail(Exit::Failed, "file {}: {}", inQuotes(path_ + "/" + name), problem);
    std::string text(static_cast<size_t>(found.st_size), '\0');
    size_t taken = 0;
    while (taken < text.size()) {
        const ssize_t got = ::read(file.get(), text.data() + taken, text.size() - taken);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failAbout(name, errno);
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
    if (result != 0) failAbout(to, errno);
    return true;
}

bool PrivateDirectory::write(const std::string &name, std::string_view text, bool replace) const {
    const std::string temporary = fmt::format(".{}.{}", name, getpid());
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    // A process of the same number may have died here.
    unlinkat(descriptor_, temporary.c_str(), 0);
    Descriptor file(openat(descriptor_, temporary.c_str(), kFlags, kFileMode));
    if (file.get() < 0) failAbout(name, errno);
    try {
        if (const int error = store(file, text); error != 0) failAbout(name, error);
        if (rename(temporary, name, replace)) {
            fsync(descriptor_);
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
        fsync(descriptor_);
        return true;
    }
    if (errno == ENOENT) return false;
    failAbout(name, errno);
}

}  // namespace qvs
