// SPDX-License-Identifier: Apache-2.0
// Accepts clients on the Unix socket, and decides how long the daemon stays.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>

#include "daemon/front/kernel.h"

namespace qvs::kernel {

class Channel;

class Server {
  public:
    struct Options {
        std::string directory;
        // The daemon ends with the last lease, or when none is taken soon after the start.
        bool whileLeased = false;
    };

    // `listener` is bound and listening.
    Server(asio::io_context &io, Kernel &kernel, int listener, Options options);

    Kernel &kernel() { return kernel_; }
    asio::io_context &io() { return io_; }
    const Options &options() const { return options_; }
    size_t leases() const { return leases_; }
    std::chrono::seconds uptime() const;

    void stop();
    void leaseOpened();
    // True when that was the last one and the daemon ends: the connection then stays open until the process
    // is gone, which is how a launcher knows that it is.
    bool leaseClosed();
    // How much memory a client takes up with what it has not read, or sent in part. Beyond what there is for
    // all of them, those that have stood still for the longest time are let go.
    void weigh(const std::shared_ptr<Channel> &connection, size_t bytes);
    // Calls `then` once the file can be written again.
    void whenWritable(int file, std::function<void()> then);
    void keepUntilExit(std::shared_ptr<Channel> connection) { lasting_.push_back(std::move(connection)); }

  private:
    using Protocol = asio::local::stream_protocol;

    struct Load {
        std::weak_ptr<Channel> connection;
        size_t bytes = 0;
        uint64_t moved = 0;  // when it last changed, in the order of such moments
    };

    void accept();
    bool mayConnect(Protocol::socket &socket) const;

    asio::io_context &io_;
    Kernel &kernel_;
    Options options_;
    Protocol::acceptor acceptor_;
    asio::steady_timer timer_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    size_t leases_ = 0;
    std::map<const Channel *, Load> loads_;
    size_t held_ = 0;
    uint64_t moments_ = 0;
    std::vector<std::shared_ptr<Channel>> lasting_;
};

}  // namespace qvs::kernel
