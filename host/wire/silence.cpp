// SPDX-License-Identifier: Apache-2.0
// Remembers a daemon that did not answer in time, so that each further request fails at once.
#include "wire/silence.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "wire/kept_errno.h"
#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::wire {

// Returns true if the daemon can answer, now or later.
bool Silence::ask(const char *path) {
    const int connection = moveAside(connectTo(path, SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    unasked_ = connection < 0 && errno == ETIMEDOUT;
    if (connection < 0) return unasked_;
    const Head ping = {0, static_cast<uint32_t>(Kind::Ping)};
    struct stat status;
    if (fstat(connection, &status) != 0 || !sendAll(connection, &ping, sizeof ping)) {
        close(connection);
        return false;
    }
    inode_ = status.st_ino;
    // Another thread can have stored a connection already.
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
