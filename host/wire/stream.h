// The socket underneath a connection to the emulated kernel. No allocation, no C++ runtime, errno for
// failures: the interposer uses this inside arbitrary programs.
#pragma once

#include <sys/uio.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdint>

namespace qvs::wire {

// A daemon that stays silent for this long is treated as gone, so that nothing hangs for ever.
constexpr int kTimeoutSeconds = 60;

// Fills in the address of the Unix socket at `path`. A path that does not fit is ENAMETOOLONG.
bool socketAddress(const char *path, sockaddr_un *address);

// Connects to the Unix socket at `path` and returns the descriptor, or -1. `flags` may hold SOCK_CLOEXEC. A
// timeout of 0 waits for ever.
int connectTo(const char *path, int flags, int timeoutSeconds = kTimeoutSeconds);

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
