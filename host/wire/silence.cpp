// SPDX-License-Identifier: Apache-2.0
// A daemon that did not answer in time, remembered so that each further request fails at once.
#include "wire/silence.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::wire {

namespace {

class KeptErrno {
  public:
    KeptErrno() = default;
    KeptErrno(const KeptErrno &) = delete;
    KeptErrno &operator=(const KeptErrno &) = delete;
    ~KeptErrno() { errno = value_; }

  private:
    int value_ = errno;
};

}  // namespace

// True when an answer can be waited for, now or later.
bool Silence::ask(const char *path) {
    // Out of the low numbers, which programs take for their own.
    constexpr int kOutOfTheWay = 200;
    const int low = connectTo(path, SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    unasked_ = low < 0 && errno == ETIMEDOUT;
    if (low < 0) return unasked_;
    const int high = fcntl(low, F_DUPFD_CLOEXEC, kOutOfTheWay);
    if (high >= 0) close(low);
    const int connection = high >= 0 ? high : low;
    const Head ping = {0, static_cast<uint32_t>(Kind::Ping)};
    struct stat status;
    if (fstat(connection, &status) != 0 || !sendAll(connection, &ping, sizeof ping)) {
        close(connection);
        return false;
    }
    inode_ = status.st_ino;
    // Another thread may have been as quick.
    int none = 0;
    if (!socketAndOne_.compare_exchange_strong(none, connection + 1)) close(connection);
    return true;
}

bool Silence::isOurs(int socket) const {
    struct stat status;
    return fstat(socket, &status) == 0 && S_ISSOCK(status.st_mode) && status.st_ino == inode_;
}

void Silence::begin(const char *path) {
    const KeptErrno kept;
    if (socketAndOne_ == 0) ask(path);
}

bool Silence::lasts(const char *path) {
    if (!begun()) return false;
    const KeptErrno kept;
    int current = socketAndOne_;
    if (current == 0) return ask(path);
    const int socket = current - 1;
    const bool ours = isOurs(socket);
    pollfd answer = {socket, POLLIN, 0};
    if (ours && poll(&answer, 1, 0) == 0) return true;
    if (socketAndOne_.compare_exchange_strong(current, 0) && ours) close(socket);
    return false;
}

}  // namespace qvs::wire
