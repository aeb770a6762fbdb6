// SPDX-License-Identifier: Apache-2.0
// The socket underneath a connection to the emulated kernel. No allocation, no C++ runtime, errno for
// failures: the interposer uses this inside arbitrary programs.
#pragma once

#include <sys/uio.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdint>

namespace qvs::wire {

// How long programs wait for an answer of the daemon, in milliseconds: $QVS_HOST_TIMEOUT seconds, which may
// have a fraction, or 10 seconds when that is not a time. Like the next one, not heeded in a program with
// privileges of its own.
int hostTimeout();
// The socket that $QVS_HOST_SOCKET names, or null.
const char *hostSocket();

// Fills in the address of the Unix socket at `path`. A path that does not fit is ENAMETOOLONG.
bool socketAddress(const char *path, sockaddr_un *address);

// Connects to the Unix socket at `path` and returns the descriptor, or -1. `flags` may hold SOCK_CLOEXEC and
// SOCK_NONBLOCK. Each wait of the functions below, on this socket, ends after the timeout, in milliseconds; 0
// is for ever.
int connectTo(const char *path, int flags, int timeoutMs);
void setTimeout(int socket, int timeoutMs);

// Waits that are longer by what the daemon announced, until this object goes.
class LongerWait {
  public:
    // Of a number that becomes negative when the socket is closed.
    explicit LongerWait(const int *socket) : socket_(socket) {}
    LongerWait(const LongerWait &) = delete;
    LongerWait &operator=(const LongerWait &) = delete;
    ~LongerWait();

    void extend(uint32_t milliseconds);

  private:
    const int *socket_;
    int before_ = 0;
};

// All or nothing: a signal does not interrupt, a vanished peer is EPIPE or ECONNRESET and raises no SIGPIPE,
// a silent one ETIMEDOUT. sendAll uses the vector up as it goes.
bool sendAll(int socket, iovec *parts, size_t count);
bool sendAll(int socket, const void *data, size_t size);
bool receiveAll(int socket, void *data, size_t size);

// Receives at least one byte; the number of bytes, or 0 on failure. A descriptor that comes along is stored
// in `file`, in place of one that is there already.
size_t receiveSome(int socket, void *data, size_t size);
size_t receiveSome(int socket, void *data, size_t size, int *file);

}  // namespace qvs::wire
