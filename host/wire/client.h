// SPDX-License-Identifier: Apache-2.0
// A blocking client of the emulated kernel, for the state library, the shell, the launcher and the tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "wire/message.h"
#include "wire/noncopyable.h"
#include "wire/stream.h"

namespace qvs::wire {

// One connection, for one thread at a time. A failure closes the connection and sets errno: ENOENT if no
// socket is named, EPROTO for an invalid answer, ETIMEDOUT if there is no answer in time, or the error of the
// socket.
class Client : private Noncopyable {
  public:
    ~Client() { close(); }

    // Connects to the socket at `path`, or to the one that $QVS_HOST_SOCKET names. The timeout limits each
    // wait for an answer.
    bool connect(const char *path, int timeoutMs = hostTimeout());
    bool connectToHost();
    // Changes the timeout. 0 means no limit.
    void setTimeout(int timeoutMs);
    bool connected() const { return socket_ >= 0; }
    int socket() const { return socket_; }
    void close();
    // Forgets the descriptor without closing it, because the program uses the number for another file.
    void abandon();
    // Moves the descriptor out of the low numbers.
    void moveAside() { socket_ = wire::moveAside(socket_); }

    bool send(Writer &message);
    // Receives a message of this kind with at most kMaxRequest bytes and replaces the payload.
    bool receive(Kind kind, std::string *payload);
    // Sends a request and receives its reply.
    bool call(Writer &request, std::string *payload) {
        return send(request) && receive(Kind::Reply, payload);
    }

    // Receive a message in parts: the head first, and then exactly `length` bytes.
    bool receiveHead(Kind kind, uint32_t *length);
    bool receiveBytes(void *data, size_t size);
    // Returns the descriptor that was received with the message, or -1. The caller must close it.
    int takeFile() { return std::exchange(file_, -1); }

  private:
    bool fail(int reason);

    int socket_ = -1;
    int timeoutMs_ = 0;
    int file_ = -1;
    // With this buffer, a small answer needs one system call.
    size_t begin_ = 0;
    size_t end_ = 0;
    char buffered_[2048];
};

}  // namespace qvs::wire
