// SPDX-License-Identifier: Apache-2.0
// One client: its requests in order, each answered before the next is looked at.
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
    // What the client answers to CopyIn and CopyOut.
    using Copied = std::function<void(int error, std::string_view data)>;
    struct Ioctl;

    std::shared_ptr<Connection> self();
    void handle(Kind kind, std::string payload) override;
    bool answerFailure(const std::exception &error, bool between) override;
    void ended() override;

    // Runs `perform` with what fault injection has in mind for the request that `line` describes.
    void underFaults(const std::string &line, std::function<void(const Effect &)> perform);
    void announceDelay(uint32_t milliseconds);
    void begin(const Effect &effect);
    // To be called when the request was carried out: the moment to die for a fault that says so.
    void carriedOut(const Effect &effect);
    void record(const std::string &line);
    bool watched() const;

    void serveState(Kind kind, std::string payload);
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
    void deliver(const std::shared_ptr<Ioctl> &ioctl, size_t sent);
    void finishIoctl(const Ioctl &ioctl, int error);
    void copyIn(uint64_t address, uint32_t length, Copied then);
    void copyOut(uint64_t address, std::string_view data, Copied then);

    Kernel &kernel() const { return server_.kernel(); }

    asio::steady_timer timer_;
    Kind request_ = Kind::Reply;  // the one that waits for its reply; Reply for none
    const Device *device_ = nullptr;
    Copied copied_;  // set while an answer of the client is awaited
    uint32_t copiedLength_ = 0;
    bool leased_ = false;
    std::optional<uint64_t> follower_;
    LineQueue lines_;  // on their way to a follower
    bool flushing_ = false;
};

}  // namespace qvs::kernel
