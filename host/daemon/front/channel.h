// SPDX-License-Identifier: Apache-2.0
// The messages of one client: taken from its socket one after the other, and sent to it.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <asio/local/stream_protocol.hpp>

#include "daemon/model/snapshot.h"
#include "wire/message.h"

namespace qvs::kernel {

class Server;

class Channel : public std::enable_shared_from_this<Channel> {
  public:
    using Socket = asio::local::stream_protocol::socket;

    Channel(const Channel &) = delete;
    Channel &operator=(const Channel &) = delete;
    virtual ~Channel() = default;

    void start();
    // One log line, and the connection is closed.
    void drop(std::string_view reason);

  protected:
    using Kind = wire::Kind;

    Channel(Socket socket, Server &server);

    // A whole message of the client's.
    virtual void handle(Kind kind, std::string payload) = 0;
    // Serving it failed in a way that nobody thought of. `between` messages there is an answer to be given;
    // false when there is none.
    virtual bool answerFailure(const std::exception &error, bool between) = 0;
    // The client is gone, or was dropped.
    virtual void ended() = 0;

    // What the event loop calls: a failure that nobody thought of becomes the answer of the request.
    template <typename Work>
    void guarded(const Work &work) {
        try {
            work();
        } catch (const std::exception &error) {
            answer(error);
        }
    }
    // Looks at the client's next message, or waits for it.
    void next();

    // Sends a message and goes on with `then`, by default with the client's next message.
    void send(wire::Writer message, std::function<void()> then = {});
    // The same for a message whose last field is this blob, without its length.
    void sendWith(wire::Writer message, Blob tail);
    // Sends a short message, with a file beside it unless that is -1, when there is room for it at once. True
    // when it was sent.
    bool sendAtOnce(wire::Writer &message, int file = -1);
    // Sends bytes beside the order of requests.
    void sendLoose(std::string bytes, std::function<void(bool sent)> then);

    // Tells the server how much memory this client takes up, with so much of the request under way.
    void weigh();
    size_t dialogue_ = 0;

    Server &server_;
    Socket socket_;

  private:
    void receiveMore();
    void answer(const std::exception &error);
    void sendParts(std::string message, Blob tail, std::function<void()> then);
    void end();

    std::vector<char> chunk_;
    std::string received_;
    size_t taken_ = 0;
    std::string sending_;
    Blob sendingTail_;
    bool isSending_ = false;
    bool isReceiving_ = false;
};

}  // namespace qvs::kernel
