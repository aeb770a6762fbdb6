// SPDX-License-Identifier: Apache-2.0
// One file for a host. Its first eight bytes stand for the host, each eight that follow for the switches of
// one hash. A run locks the bytes of what it changes, and they hold the time of the last change, so that the
// next one knows whether its snapshot is older. Locks of the kernel go with their process, whatever ends it.
#include "config/library/lock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <thread>

#include "base/failure.h"
#include "base/text.h"
#include "config/library/hash.h"
#include "config/library/snapshot.h"

namespace qvs {
namespace {

constexpr uint32_t kDefaultPatience = 10;
constexpr const char *kPatienceVariable = "QVS_HOST_TIMEOUT";
constexpr const char *kSystemDirectory = "/run/lock/qvs";
constexpr const char *kLockName = "qvs.lock";
constexpr off_t kSlot = sizeof(uint64_t);
constexpr off_t kSwitchSlots = 65536;
// Stands in a slot while its change goes on, and for good when that was killed.
constexpr uint64_t kUnderWay = UINT64_MAX;

bool holding = false;

// Where the locks of the host lie.
std::string lockDirectory() {
    return emulatedHostDirectory().value_or(kSystemDirectory);
}

// The file belongs to whom the directory belongs to, even where root comes first.
int openIn(int directory, const struct stat &owner) {
    constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int file = openat(directory, kLockName, kFlags | O_CREAT | O_EXCL, 0600);
    if (file >= 0 && owner.st_uid != geteuid()) {
        [[maybe_unused]] int given = fchown(file, owner.st_uid, owner.st_gid);
    }
    if (file >= 0) return file;
    if (errno == EEXIST) file = openat(directory, kLockName, kFlags);
    struct stat found;
    if (file < 0 || (fstat(file, &found) == 0 && S_ISREG(found.st_mode) && found.st_nlink == 1)) return file;
    close(file);
    errno = EINVAL;
    return -1;
}

int openLockFile() {
    const std::string path = lockDirectory();
    if (path == kSystemDirectory && geteuid() == 0) mkdir(kSystemDirectory, 0755);
    const char *problem = nullptr;
    int file = -1;
    const int directory = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    struct stat owner;
    if (directory < 0) {
        problem = std::strerror(errno);
    } else if (problem = distrust(directory, owner); problem == nullptr) {
        file = openIn(directory, owner);
        if (file < 0) problem = std::strerror(errno);
    }
    if (directory >= 0) close(directory);
    if (file < 0) {
        warn("no lock in {}: {}; of changes that runs make side by side one may be lost", inQuotes(path),
             problem);
    }
    return file;
}

// Open to the end: closing it would give up all locks of the process.
int lockFile() {
    static const int file = openLockFile();
    return file;
}

off_t slotOf(std::string_view alias) {
    return kSlot * (1 + static_cast<off_t>(hashOf(alias) % kSwitchSlots));
}

struct flock range(short type, off_t at, off_t size) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = at;
    lock.l_len = size;
    return lock;
}

[[noreturn]] void failLocked(const std::string &subject, off_t at, off_t size) {
    struct flock other = range(F_WRLCK, at, size);
    std::string who = "another run";
    if (fcntl(lockFile(), F_GETLK, &other) == 0 && other.l_type != F_UNLCK && other.l_pid > 0)
        who += fmt::format(" (process {})", other.l_pid);
    fail(Exit::Locked, "{}: {} is at it and did not end within {} s; --timeout SECONDS waits longer", subject,
         who, patience());
}

// False when the file system has no locks.
bool take(const std::string &subject, off_t at, off_t size) {
    using namespace std::chrono;
    constexpr milliseconds kLongestPause(20);
    const auto deadline = steady_clock::now() + seconds(patience());
    for (milliseconds pause(1);; pause = std::min(2 * pause, kLongestPause)) {
        struct flock lock = range(F_WRLCK, at, size);
        if (fcntl(lockFile(), F_SETLK, &lock) == 0) return true;
        if (errno != EAGAIN && errno != EACCES && errno != EINTR) return false;
        if (steady_clock::now() >= deadline) failLocked(subject, at, size);
        std::this_thread::sleep_for(pause);
    }
}

uint64_t stampAt(off_t at) {
    uint64_t stamp = 0;
    return pread(lockFile(), &stamp, sizeof stamp, at) == sizeof stamp ? stamp : 0;
}

void putStamp(off_t at, uint64_t stamp) {
    // What cannot be stored costs others a look at an older snapshot; the lock holds all the same.
    [[maybe_unused]] ssize_t stored = pwrite(lockFile(), &stamp, sizeof stamp, at);
}

// The times that this process has put in, which tell nothing new.
std::map<off_t, uint64_t> own;

bool isNews(off_t at) {
    uint64_t stamp = stampAt(at);
    auto mine = own.find(at);
    return stamp >= snapshotTime && (mine == own.end() || mine->second != stamp);
}

std::optional<uint32_t> givenPatience;

}  // namespace

// Who else may write to the directory could put other files in the place of the lock.
const char *distrust(int directory, struct stat &owner) {
    if (fstat(directory, &owner) != 0) return std::strerror(errno);
    if (owner.st_uid != geteuid() && owner.st_uid != 0 && geteuid() != 0) return "it belongs to another user";
    return (owner.st_mode & S_IWOTH) != 0 ? "anybody may write to it" : nullptr;
}

std::optional<std::string> emulatedHostDirectory() {
    const char *socket = std::getenv("QVS_HOST_SOCKET");
    if (socket == nullptr || *socket == '\0') return std::nullopt;
    const std::string path = socket;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, std::max<size_t>(slash, 1));
}

LockPlace lockPlace() {
    LockPlace place{lockDirectory(), {}};
    const int directory = open(place.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (directory < 0) {
        // root creates it with the first change.
        const bool created = errno == ENOENT && place.directory == kSystemDirectory && geteuid() == 0;
        if (!created) place.problem = std::strerror(errno);
        return place;
    }
    struct stat owner;
    if (const char *problem = distrust(directory, owner); problem != nullptr) {
        place.problem = problem;
    } else if (faccessat(directory, kLockName, R_OK | W_OK, AT_EACCESS) != 0 &&
               (errno != ENOENT || faccessat(directory, ".", W_OK | X_OK, AT_EACCESS) != 0)) {
        place.problem = std::strerror(errno);
    }
    close(directory);
    return place;
}

uint32_t patience() {
    if (givenPatience) return *givenPatience;
    // May have a fraction.
    const char *set = std::getenv(kPatienceVariable);
    const double seconds = set != nullptr ? std::ceil(std::strtod(set, nullptr)) : 0;
    return seconds >= 1 && seconds <= kMostPatience ? static_cast<uint32_t>(seconds) : kDefaultPatience;
}

void setPatience(uint32_t seconds) {
    givenPatience = seconds;
    setenv(kPatienceVariable, fmt::to_string(seconds).c_str(), 1);
}

Lock::Lock(Guard guard, const std::string &alias) {
    if (guard == Guard::None || holding || lockFile() < 0) return;
    bool everything = guard == Guard::Everything;
    at_ = everything ? 0 : slotOf(alias);
    size_ = everything ? kSlot * (1 + kSwitchSlots) : kSlot;
    held_ = take(everything || alias.empty() ? std::string("this host") : named(alias), at_, size_);
    if (!held_) return;
    holding = true;
    behind_ = everything || isNews(0) || isNews(at_);
    putStamp(at_, kUnderWay);
}

Lock::~Lock() {
    if (!held_) return;
    own[at_] = bootTime();
    putStamp(at_, own[at_]);
    struct flock lock = range(F_UNLCK, at_, size_);
    fcntl(lockFile(), F_SETLK, &lock);
    holding = false;
}

void awaitOtherRuns(const std::string &alias) {
    if (holding || lockFile() < 0) return;
    if (!take(named(alias), slotOf(alias), kSlot)) return;
    struct flock lock = range(F_UNLCK, slotOf(alias), kSlot);
    fcntl(lockFile(), F_SETLK, &lock);
}

}  // namespace qvs
