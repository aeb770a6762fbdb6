// SPDX-License-Identifier: Apache-2.0
// Functions for the sockets of connections to the emulated kernel.
#include "wire/stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "wire/kept_errno.h"
#include "wire/protocol.h"

namespace qvs::wire {

bool socketAddress(const char *path, sockaddr_un *address) {
    const size_t length = strlen(path);
    if (length >= sizeof address->sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    memcpy(address->sun_path, path, length);
    return true;
}

namespace {

timeval timevalOf(int milliseconds) {
    return {milliseconds / 1000, suseconds_t{milliseconds % 1000} * 1000};
}

// Returns the timeout of a socket. It is an option of the socket, so processes that inherit the descriptor
// have it too.
int timeoutOf(int socket) {
    timeval timeout = {};
    socklen_t size = sizeof timeout;
    if (getsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, &size) != 0) return 0;
    return static_cast<int>(timeout.tv_sec * 1000 + timeout.tv_usec / 1000);
}

// The end of one wait. Interruptions do not extend it.
class Deadline {
  public:
    explicit Deadline(int timeoutMs) : end_(timeoutMs == 0 ? 0 : now() + timeoutMs) {}

    // Returns the rest in milliseconds for poll. -1 means no limit.
    int left() const {
        if (end_ == 0) return -1;
        const int64_t left = end_ - now();
        return left > 0 ? static_cast<int>(left) : 0;
    }

  private:
    static int64_t now() {
        timespec time;
        clock_gettime(CLOCK_MONOTONIC, &time);
        return int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
    }

    int64_t end_;
};

// Waits until a socket is ready. Returns false after a failure, with ETIMEDOUT if it was not ready in time.
bool waitFor(int socket, short events, const Deadline &deadline) {
    for (;;) {
        pollfd wanted = {socket, events, 0};
        const int ready = poll(&wanted, 1, deadline.left());
        if (ready > 0) return true;
        if (ready < 0 && errno == EINTR) continue;
        if (ready == 0) errno = ETIMEDOUT;
        return false;
    }
}

bool waitFor(int socket, short events) {
    return waitFor(socket, events, Deadline(timeoutOf(socket)));
}

int digit(char character) {
    return character >= '0' && character <= '9' ? character - '0' : -1;
}

}  // namespace

int hostTimeout() {
    constexpr int kDefault = 10'000;
    constexpr int kMost = 86'400'000;
    const char *text = secure_getenv(kTimeoutVariable);
    if (text == nullptr) return kDefault;
    // strtod would use the decimal point of the locale.
    int time = 0;
    for (; digit(*text) >= 0; ++text)
        time = time < kMost / 10 ? time * 10 + digit(*text) * 1000 : kMost;
    if (*text == '.') ++text;
    for (int weight = 100; digit(*text) >= 0; ++text, weight /= 10)
        time += digit(*text) * weight;
    if (*text != '\0' || time == 0) return kDefault;
    return time < kMost ? time : kMost;
}

const char *hostSocket() {
    const char *path = secure_getenv(kSocketVariable);
    return path == nullptr || *path == '\0' ? nullptr : path;
}

void setTimeout(int socket, int timeoutMs) {
    const timeval timeout = timevalOf(timeoutMs);
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
}

LongerWait::~LongerWait() {
    if (before_ == 0) return;
    const KeptErrno kept;
    setTimeout(*socket_, before_);
}

void LongerWait::extend(uint32_t milliseconds) {
    constexpr uint32_t kMost = 86'400'000;
    if (before_ == 0) before_ = timeoutOf(*socket_);
    if (before_ == 0) return;
    setTimeout(*socket_, before_ + static_cast<int>(milliseconds < kMost ? milliseconds : kMost));
}

int connectTo(const char *path, int flags, int timeoutMs) {
    sockaddr_un address;
    if (!socketAddress(path, &address)) return -1;
    const int connection = socket(AF_UNIX, SOCK_STREAM | flags, 0);
    if (connection < 0) return -1;

    setTimeout(connection, timeoutMs);
    // A daemon that hangs does not accept connections, so the wait for a place in its queue is limited too.
    const Deadline deadline(timeoutMs);
    int result = 0;
    do {
        const int left = deadline.left();
        const timeval timeout = timevalOf(left < 0 ? 0 : left > 0 ? left : 1);
        setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
        result = connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    } while (result < 0 && errno == EINTR && deadline.left() != 0);
    if (result == 0) return connection;

    const int reason = errno == EAGAIN || errno == EINTR ? ETIMEDOUT : errno;
    close(connection);
    errno = reason;
    return -1;
}

int moveAside(int descriptor) {
    constexpr int kLowest = 200;
    const KeptErrno kept;
    const int moved = descriptor < 0 ? -1 : fcntl(descriptor, F_DUPFD_CLOEXEC, kLowest);
    if (moved < 0) return descriptor;
    close(descriptor);
    return moved;
}

bool sendAll(int socket, iovec *parts, size_t count) {
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = count;
    while (message.msg_iovlen != 0) {
        if (message.msg_iov->iov_len == 0) {
            ++message.msg_iov;
            --message.msg_iovlen;
            continue;
        }
        ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && errno == EAGAIN && waitFor(socket, POLLOUT)) continue;
        if (sent < 0) return false;
        while (sent > 0) {
            iovec &part = *message.msg_iov;
            const size_t step =
                part.iov_len < static_cast<size_t>(sent) ? part.iov_len : static_cast<size_t>(sent);
            part.iov_base = static_cast<char *>(part.iov_base) + step;
            part.iov_len -= step;
            sent -= static_cast<ssize_t>(step);
            if (part.iov_len == 0) {
                ++message.msg_iov;
                --message.msg_iovlen;
            }
        }
    }
    return true;
}

bool sendAll(int socket, const void *data, size_t size) {
    iovec part = {const_cast<void *>(data), size};
    return sendAll(socket, &part, 1);
}

size_t receiveSome(int socket, void *data, size_t size) {
    int file = -1;
    const size_t received = receiveSome(socket, data, size, &file);
    if (file >= 0) close(file);
    return received;
}

size_t receiveSome(int socket, void *data, size_t size, int *file) {
    // Most answers arrive before a sleeping thread could be woken.
    int looks = 100;
    iovec part = {data, size};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    for (;;) {
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t received = recvmsg(socket, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
        if (received > 0) {
            const cmsghdr *beside = CMSG_FIRSTHDR(&message);
            if (beside != nullptr && beside->cmsg_type == SCM_RIGHTS) {
                if (*file >= 0) close(*file);
                memcpy(file, CMSG_DATA(beside), sizeof *file);
            }
            return static_cast<size_t>(received);
        }
        if (received < 0 && errno == EINTR) continue;
        if (received < 0 && errno == EAGAIN && looks-- > 0) {
            sched_yield();
            continue;
        }
        if (received < 0 && errno == EAGAIN && waitFor(socket, POLLIN)) continue;
        if (received == 0) errno = ECONNRESET;
        return 0;
    }
}

bool writeAll(int file, const void *data, size_t size) {
    const auto *bytes = static_cast<const char *>(data);
    while (size != 0) {
        const ssize_t written = write(file, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool receiveAll(int socket, void *data, size_t size) {
    auto *bytes = static_cast<char *>(data);
    while (size != 0) {
        const size_t received = receiveSome(socket, bytes, size);
        if (received == 0) return false;
        bytes += received;
        size -= received;
    }
    return true;
}

}  // namespace qvs::wire
