// One client: its messages in order, each answered before the next is looked at.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "daemon/devices/device.h"
#include "daemon/front/server.h"
#include "daemon/front/shell.h"
#include "daemon/front/trace.h"
#include "wire/message.h"

namespace qvs::kernel {

class Connection : public std::enable_shared_from_this<Connection> {
  public:
    using Socket = asio::local::stream_protocol::socket;

    Connection(Socket socket, Server &server);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    void start();
    // One log line, and the connection is closed.
    void drop(std::string_view reason);

  private:
    using Kind = wire::Kind;
    // What the client answers to CopyIn and CopyOut.
    using Copied = std::function<void(int error, std::string_view data)>;
    struct Ioctl;

    // Messages: taken from the buffer, or waited for.
    void next();
    void receiveMore();
    void handle(Kind kind, const std::string &payload);
    void ended();
    // What the event loop calls: a failure that nobody thought of becomes the answer of the request.
    template <typename Work>
    void guarded(const Work &work);
    void answerFailure(const std::exception &error);
    // Tells the server how much memory this client takes up.
    void weigh();

    // Sends a message and goes on with `then`, by default with the client's next message.
    void send(wire::Writer message, std::function<void()> then = {});
    void sendParts(std::string message, Blob tail, std::function<void()> then);
    // Sends a short message with a file beside it; false when nothing was sent.
    bool sendFile(wire::Writer &message, int file);

    // Runs `perform` with what fault injection has in mind for the request that `line` describes.
    void underFaults(const std::string &line, std::function<void(const Effect &)> perform);
    void announceDelay(uint32_t milliseconds);
    void begin(const Effect &effect);
    // To be called when the request was carried out: the moment to die for a fault that says so.
    void carriedOut(const Effect &effect);
    void record(const std::string &line);
    bool watched() const;

    void serveState(Kind kind, const std::string &payload);
    void serveShell(const std::string &payload);
    ShellResult runGuarded(const std::vector<std::string> &words);
    void serveControl(const std::string &payload);
    void serveFollow();
    void serveLease();
    void flushLines();

    void serveOpen(const std::string &payload);
    void serveIoctl(const std::string &payload);
    void fetchInput(const std::shared_ptr<Ioctl> &ioctl);
    void perform(const std::shared_ptr<Ioctl> &ioctl);
    Result callDevice(const Command &command, const Call &call);
    void deliver(const std::shared_ptr<Ioctl> &ioctl, size_t sent);
    void finishIoctl(const Ioctl &ioctl, int error);
    void copyIn(uint64_t address, uint32_t length, Copied then);
    void copyOut(uint64_t address, std::string_view data, Copied then);

    Kernel &kernel() const { return server_.kernel(); }

    Socket socket_;
    Server &server_;
    asio::steady_timer timer_;
    std::vector<char> chunk_;
    std::string received_;
    size_t taken_ = 0;
    Kind request_ = Kind::Reply;  // the one that waits for its reply; Reply for none
    std::string sending_;
    Blob sendingTail_;
    bool isSending_ = false;
    bool isReceiving_ = false;

    const Device *device_ = nullptr;
    Copied copied_;  // set while an answer of the client is awaited
    uint32_t copiedLength_ = 0;
    size_t dialogue_ = 0;  // bytes of the request under way
    bool leased_ = false;
    std::optional<uint64_t> follower_;
    LineQueue lines_;  // on their way to a follower
    bool flushing_ = false;
};

}  // namespace qvs::kernel
