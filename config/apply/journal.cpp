// SPDX-License-Identifier: Apache-2.0
#include "config/apply/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/failure.h"
#include "base/text.h"
#include "config/apply/journal_text.h"
#include "config/library/lock.h"

namespace qvs::config {
namespace {

// Outlives a restart of the machine, as what is stored does.
constexpr const char *kSystemDirectory = "/var/lib/qvs";
constexpr const char *kName = "qvs.journal";
constexpr const char *kNewName = "qvs.journal.new";
constexpr uint64_t kSecond = 1'000'000'000;

std::string directoryPath() {
    return emulatedHostDirectory().value_or(kSystemDirectory);
}

class File {
  public:
    explicit File(int descriptor) : descriptor_(descriptor) {}
    ~File() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    int get() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }

  private:
    int descriptor_;
};

[[noreturn]] void failBecause(const std::string &path, std::string_view reason) {
    fail(Exit::Failed, "journal {}: {}", inQuotes(path), reason);
}
[[noreturn]] void failErrno(const std::string &path) {
    failBecause(path, std::strerror(errno));
}

// The directory, which only its owner can write to.
class Directory {
  public:
    Directory() : path_(directoryPath()), file_(openIt(path_)) {
        if (!file_.isOpen()) failErrno(path_);
        if (const char *reason = distrust(file_.get(), owner_)) failBecause(path_, reason);
    }

    int get() const { return file_.get(); }
    const struct stat &owner() const { return owner_; }
    void sync() const {
        if (fsync(get()) != 0) failErrno(path_);
    }

  private:
    static int openIt(const std::string &path) {
        if (path == kSystemDirectory) mkdir(kSystemDirectory, 0700);
        return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    }

    std::string path_;
    File file_;
    struct stat owner_ {};
};

// Why a file that was found is not taken for a journal; null when it is.
const char *distrustFile(int file, const struct stat &directory, struct stat &found) {
    if (fstat(file, &found) != 0) return std::strerror(errno);
    if (!S_ISREG(found.st_mode) || found.st_nlink != 1) return "it is no file of its own; move it away";
    if (found.st_uid != directory.st_uid && found.st_uid != geteuid())
        return "it belongs to another user; move it away";
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) return "other users can write to it; move it away";
    return nullptr;
}

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) failErrno(journalPath());
        text.remove_prefix(static_cast<size_t>(written));
    }
}

std::string readAll(int file) {
    std::string text;
    char buffer[65536];
    for (;;) {
        const ssize_t length = read(file, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) failErrno(journalPath());
        if (length == 0) return text;
        text.append(buffer, static_cast<size_t>(length));
    }
}

std::string bootId() {
    const File file(open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) return {};
    std::string id = readAll(file.get());
    return id.substr(0, id.find('\n'));
}

}  // namespace

bool Journal::expired() const {
    return waits() && (bootId != config::bootId() || bootTime() >= deadline);
}

uint64_t Journal::secondsLeft() const {
    const uint64_t now = bootTime();
    return expired() || now >= deadline ? 0 : (deadline - now + kSecond - 1) / kSecond;
}

std::string journalPath() {
    return directoryPath() + "/" + kName;
}

bool journalExists() {
    struct stat found;
    return lstat(journalPath().c_str(), &found) == 0;
}

Journal readJournal() {
    const std::string path = journalPath();
    const Directory directory;
    const File file(openat(directory.get(), kName, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.isOpen() && errno == ELOOP) failBecause(path, "it is a symbolic link; move it away");
    if (!file.isOpen()) failErrno(path);
    struct stat found;
    if (const char *reason = distrustFile(file.get(), directory.owner(), found)) failBecause(path, reason);
    try {
        return parseJournal(readAll(file.get()));
    } catch (Failure &failure) {
        failure.message = fmt::format("journal {}: {}", inQuotes(path), failure.message);
        throw;
    }
}

void writeJournal(const Journal &journal) {
    const Directory directory;
    // What a run that was killed has left.
    unlinkat(directory.get(), kNewName, 0);
    const File file(
        openat(directory.get(), kNewName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) failErrno(journalPath());
    if (directory.owner().st_uid != geteuid()) {
        [[maybe_unused]] const int given =
            fchown(file.get(), directory.owner().st_uid, directory.owner().st_gid);
    }
    writeAll(file.get(), textOf(journal));
    if (fsync(file.get()) != 0 || renameat(directory.get(), kNewName, directory.get(), kName) != 0)
        failErrno(journalPath());
    directory.sync();
}

void removeJournal() {
    const Directory directory;
    if (unlinkat(directory.get(), kName, 0) != 0 && errno != ENOENT) failErrno(journalPath());
    directory.sync();
}

Journal waiting(Before before, uint32_t seconds) {
    return {bootTime() + seconds * kSecond, bootId(), std::move(before)};
}

}  // namespace qvs::config
