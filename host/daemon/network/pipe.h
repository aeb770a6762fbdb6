// SPDX-License-Identifier: Apache-2.0
// The socket to the data path: messages in both directions, with descriptors, without waiting.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <asio/local/stream_protocol.hpp>

#include "wire/message.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

class Pipe : public std::enable_shared_from_this<Pipe>, private wire::Noncopyable {
  public:
    struct Events {
        // Called for each message. The receiver owns the descriptor, which is -1 if there is none.
        std::function<void(uint32_t kind, std::string_view payload, int file)> received;
        // Called once, when the other end has closed the socket or has sent an invalid message.
        std::function<void(const std::string &reason)> closed;
    };

    Pipe(asio::io_context &io, int socket, Events events);
    ~Pipe();

    void start();
    // Sends a message with a copy of the descriptor, as soon as the socket takes it.
    void send(std::string_view message, int file = -1);
    // Closes the socket. No event follows.
    void close();

  private:
    struct Outgoing {
        std::string bytes;
        int file = -1;
        size_t sent = 0;
    };

    void waitToRead();
    bool readSome();
    void waitToWrite();
    void flush();
    void fail(const std::string &reason);

    asio::local::stream_protocol::socket socket_;
    Events events_;
    // The message that is being received: first its head, then its payload.
    std::string incoming_;
    int file_ = -1;
    std::deque<Outgoing> outgoing_;
    bool writing_ = false;
};

}  // namespace qvs::kernel
