// SPDX-License-Identifier: Apache-2.0
// Serves one client. Each request is answered before the next one is read.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <asio/steady_timer.hpp>

#include "daemon/devices/device.h"
#include "daemon/front/channel.h"
#include "daemon/front/server.h"
#include "daemon/front/shell.h"
#include "daemon/front/trace.h"
#include "wire/message.h"

namespace qvs::kernel {

struct StateAnswer;

class Connection : public Channel {
  public:
    Connection(Socket socket, Server &server);

  private:
    // Receives the answer of the client to CopyIn or CopyOut.
    using Copied = std::function<void(int error, std::string_view data)>;
    struct Ioctl;

    std::shared_ptr<Connection> self();
    void handle(Kind kind, std::string payload) override;
    bool answerFailure(const std::exception &error, bool between) override;
    void ended() override;

    // Runs `perform` with the effect of the faults that match the trace line of the request.
    void underFaults(const std::string &line, std::function<void(const Effect &)> perform);
    void announceDelay(uint32_t milliseconds);
    void begin(const Effect &effect);
    // Ends the process if a fault requires it after the request. Call it when the request was executed.
    void carriedOut(const Effect &effect);
    bool watched() const;
    // Calls `reply` when the next frame obeys what the request changed.
    void settle(std::function<void()> reply);

    void serveState(Kind kind, std::string payload);
    void prepareFile(const StateAnswer &answer);
    void replyState(const StateAnswer &answer, bool asFile);
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
    void deliver(const std::shared_ptr<Ioctl> &ioctl);
    void finishIoctl(const Ioctl &ioctl, int error);
    void copyIn(uint64_t address, uint32_t length, std::string_view early, Copied then);
    void copyOut(uint64_t address, std::string_view data, Copied then);

    Kernel &kernel() const { return server_.kernel(); }

    asio::steady_timer timer_;
    Kind request_ = Kind::Reply;  // the current request; Reply: none
    const Device *device_ = nullptr;
    Copied copied_;  // set while the client must answer
    uint32_t copiedLength_ = 0;
    bool leased_ = false;
    std::optional<uint64_t> follower_;
    LineQueue lines_;  // the lines to be sent to this follower of the trace
    bool flushing_ = false;
};

}  // namespace qvs::kernel
