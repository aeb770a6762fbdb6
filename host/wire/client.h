// SPDX-License-Identifier: Apache-2.0
// A blocking client of the emulated kernel: what the state library, the shell, the launcher and the tests
// use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "wire/message.h"
#include "wire/stream.h"

namespace qvs::wire {

// One connection, one thread at a time. Failures leave their reason in errno: ENOENT when no socket is named,
// EPROTO for an answer that makes no sense, ETIMEDOUT for none in time, else what the socket said; after one
// the connection is closed.
class Client {
  public:
    Client() = default;
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;
    Client(Client &&other) noexcept;
    Client &operator=(Client &&other) noexcept;
    ~Client() { close(); }

    // Connects to the socket at `path`, or to the one that $QVS_HOST_SOCKET names. Each wait for an answer
    // then ends after so many milliseconds.
    bool connect(const char *path, int timeoutMs = hostTimeout());
    bool connectToHost();
    // For the waits from now on; 0 waits without a bound.
    void setTimeout(int timeoutMs);
    bool connected() const { return socket_ >= 0; }
    int socket() const { return socket_; }
    void close();
    // Forgets the descriptor without closing it: it is somebody else's by now.
    void abandon();
    // Moves the descriptor out of the low numbers, which programs take for their own. Best effort.
    void moveAbove(int lowest);

    bool send(Writer &message);
    // Receives a whole message of the given kind, of at most kMaxRequest bytes. The payload is replaced.
    bool receive(Kind kind, std::string *payload);
    // A request and its reply.
    bool call(Writer &request, std::string *payload) {
        return send(request) && receive(Kind::Reply, payload);
    }

    // Receiving piece by piece, into memory of the caller's choice: first the head, then exactly `length`
    // bytes.
    bool receiveHead(Kind kind, uint32_t *length);
    bool receiveBytes(void *data, size_t size);
    // The descriptor that came along with what was received, now the caller's; -1 when there was none.
    int takeFile() { return std::exchange(file_, -1); }

  private:
    bool fail(int reason);

    int socket_ = -1;
    int timeoutMs_ = 0;
    int file_ = -1;
    // Small answers arrive whole in one system call.
    size_t begin_ = 0;
    size_t end_ = 0;
    char buffered_[2048];
};

}  // namespace qvs::wire
