// The socket underneath a connection to the emulated kernel.
#include "wire/stream.h"

#include <sched.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

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

int connectTo(const char *path, int flags, int timeoutSeconds) {
    sockaddr_un address;
    if (!socketAddress(path, &address)) return -1;
    const int connection = socket(AF_UNIX, SOCK_STREAM | flags, 0);
    if (connection < 0) return -1;

    const timeval timeout = {timeoutSeconds, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    int result = 0;
    do {
        result = connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    } while (result < 0 && errno == EINTR);
    if (result == 0) return connection;

    const int reason = errno;
    close(connection);
    errno = reason;
    return -1;
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
        ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) {
            if (errno == EAGAIN) errno = ETIMEDOUT;
            return false;
        }
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
    // Most answers come sooner than who sleeps can be woken.
    int looks = 100;
    iovec part = {data, size};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    for (;;) {
        msghdr message = {};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t received = recvmsg(socket, &message, MSG_CMSG_CLOEXEC | (looks > 0 ? MSG_DONTWAIT : 0));
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
        if (received == 0) errno = ECONNRESET;
        if (received < 0 && errno == EAGAIN) errno = ETIMEDOUT;
        return 0;
    }
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
