// SPDX-License-Identifier: Apache-2.0
// The process of the data path: started, watched, and started again after it ended.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>

#include "daemon/network/pipe.h"

namespace qvs::kernel {

class Process : private wire::Noncopyable {
  public:
    struct Events {
        // The process runs, and waits for its first message.
        std::function<void()> started;
        std::function<void(uint32_t kind, std::string_view payload, int file)> received;
        // The process ended. It is started again after a while.
        std::function<void()> ended;
    };

    Process(asio::io_context &io, std::string program, Events events);
    ~Process();

    void start();
    // Ends the process for good.
    void stop();
    // Kills a process that does not answer. It is started again.
    void kill(std::string_view why);
    void send(std::string_view message, int file = -1);
    bool running() const { return pid_ > 0; }
    pid_t pid() const { return pid_; }
    uint32_t restarts() const { return restarts_; }

  private:
    bool spawn();
    void readLog();
    void drainLog();
    void logLines(bool all);
    int reap(std::chrono::milliseconds within);
    void end(std::string_view reason);
    void startAgain();

    asio::io_context &io_;
    std::string program_;
    Events events_;
    std::shared_ptr<Pipe> pipe_;
    asio::posix::stream_descriptor log_;
    std::string logged_;
    char piece_[1024];
    asio::steady_timer again_;
    std::chrono::milliseconds delay_{0};
    std::chrono::steady_clock::time_point started_;
    pid_t pid_ = 0;
    uint32_t restarts_ = 0;
    bool wanted_ = false;
};

}  // namespace qvs::kernel
