// SPDX-License-Identifier: Apache-2.0
// Functions for the sockets of connections to the emulated kernel. They do not allocate memory, need no C++
// runtime and report failures in errno, because the interposer uses them inside arbitrary programs.
#pragma once

#include <sys/uio.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "wire/noncopyable.h"
#include "wire/protocol.h"

namespace qvs::wire {

// Returns the time in milliseconds that programs wait for an answer: $QVS_HOST_TIMEOUT seconds, which can
// have a fraction, or 10 seconds by default. Programs with special privileges ignore the variable.
int hostTimeout();
// Returns the path in $QVS_HOST_SOCKET, or null. Programs with special privileges ignore the variable.
const char *hostSocket();

// Fills in the address of the Unix socket at `path`. Fails with ENAMETOOLONG if the path does not fit.
bool socketAddress(const char *path, sockaddr_un *address);

// Connects to the Unix socket at `path` and returns the descriptor, or -1. `flags` can contain SOCK_CLOEXEC
// and SOCK_NONBLOCK. The timeout in milliseconds limits each wait of the functions below on this socket. 0
// means no limit.
int connectTo(const char *path, int flags, int timeoutMs);
// Moves a descriptor out of the low numbers, which programs use for their own files. Returns the new
// descriptor, or the given one if it cannot be moved.
int moveAside(int descriptor);
void setTimeout(int socket, int timeoutMs);

// Extends the timeout of a socket by the time that the daemon announced. The destructor restores the timeout.
class LongerWait : private Noncopyable {
  public:
    // `*socket` becomes negative when the socket is closed.
    explicit LongerWait(const int *socket) : socket_(socket) {}
    ~LongerWait();

    void extend(uint32_t milliseconds);

  private:
    const int *socket_;
    int before_ = 0;
};

// Send or receive all bytes. Signals do not interrupt these functions. They fail with EPIPE or ECONNRESET,
// without SIGPIPE, if the peer has closed the connection, and with ETIMEDOUT if it does not answer. sendAll
// changes the vector.
bool sendAll(int socket, iovec *parts, size_t count);
bool sendAll(int socket, const void *data, size_t size);
bool receiveAll(int socket, void *data, size_t size);

// Receives at least one byte. Returns the number of bytes, or 0 on failure. A received descriptor is stored
// in `file`, and a descriptor that is already there is closed.
size_t receiveSome(int socket, void *data, size_t size);
size_t receiveSome(int socket, void *data, size_t size, int *file);

// Receives the head of the next message with `receive`. Delay messages before it extend the wait.
template <typename Receive>
bool receiveHead(Head *head, LongerWait *wait, Receive receive) {
    for (;;) {
        if (!receive(head, sizeof *head)) return false;
        if (head->kind != static_cast<uint32_t>(Kind::Delay)) return true;
        uint32_t milliseconds = 0;
        if (head->length != sizeof milliseconds) {
            errno = EPROTO;
            return false;
        }
        if (!receive(&milliseconds, sizeof milliseconds)) return false;
        wait->extend(milliseconds);
    }
}

// Writes all bytes to a file.
bool writeAll(int file, const void *data, size_t size);

}  // namespace qvs::wire
