// SPDX-License-Identifier: Apache-2.0
// Receives the messages of one client one after the other, and sends messages to it.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <asio/local/stream_protocol.hpp>

#include "daemon/model/snapshot.h"
#include "wire/message.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

class Server;

class Channel : public std::enable_shared_from_this<Channel>, private wire::Noncopyable {
  public:
    using Socket = asio::local::stream_protocol::socket;

    virtual ~Channel() = default;

    void start();
    // Writes the reason to the log and closes the connection.
    void drop(std::string_view reason);

  protected:
    using Kind = wire::Kind;

    Channel(Socket socket, Server &server);

    // Handles a complete message.
    virtual void handle(Kind kind, std::string payload) = 0;
    // Answers a request that failed with an unexpected error. `between` is false in the middle of a message,
    // when no answer is possible. Returns false if it sent no answer.
    virtual bool answerFailure(const std::exception &error, bool between) = 0;
    // Called when the connection ends.
    virtual void ended() = 0;

    // Runs work for the event loop. An unexpected error becomes the answer to the request.
    template <typename Work>
    void guarded(const Work &work) {
        try {
            work();
        } catch (const std::exception &error) {
            answer(error);
        }
    }
    // Handles the next message, or waits for it.
    void next();

    // Sends a message and then calls `then`, or handles the next message if `then` is empty.
    void send(wire::Writer message, std::function<void()> then = {});
    // Sends a message followed by a blob. The message contains the length of the blob.
    void sendWith(wire::Writer message, Blob tail);
    // Sends a short message without waiting, with a descriptor unless `file` is -1. Returns false if it was
    // not sent.
    bool sendAtOnce(wire::Writer &message, int file = -1);
    // Sends bytes that are no answer to a request.
    void sendLoose(std::string bytes, std::function<void(bool sent)> then);

    // Reports to the server how much memory this client uses. `dialogue_` is the part of the current request.
    void weigh();
    size_t dialogue_ = 0;

    Server &server_;
    Socket socket_;

  private:
    void receiveMore();
    void answer(const std::exception &error);
    size_t sendSome(std::string_view bytes);
    void sendParts(std::string message, Blob tail, std::function<void()> then);
    void end();

    // Not initialised: setting it to zeros would be a large part of a short connection.
    std::unique_ptr<char[]> chunk_;
    std::string received_;
    size_t taken_ = 0;
    std::string sending_;
    Blob sendingTail_;
    bool isSending_ = false;
    bool isReceiving_ = false;
};

}  // namespace qvs::kernel
