// SPDX-License-Identifier: Apache-2.0
// Accepts clients on the Unix socket, and ends the daemon.
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
class Network;

class Server {
  public:
    struct Options {
        std::string directory;
        // The daemon ends with the last lease, or if there is no lease soon after the start.
        bool whileLeased = false;
        // The program of the data path.
        std::string switchd;
    };

    // Serves clients of a listening socket.
    Server(asio::io_context &io, Kernel &kernel, int listener, Options options);
    ~Server();

    Kernel &kernel() { return kernel_; }
    Network &network() { return *network_; }
    asio::io_context &io() { return io_; }
    const Options &options() const { return options_; }
    size_t leases() const { return leases_; }
    std::chrono::seconds uptime() const;

    void stop();
    void leaseOpened();
    // Returns true if the daemon ends because this was the last lease. The connection must then stay open
    // until the process ends, because the launcher waits for that.
    bool leaseClosed();
    // Records how much memory a client uses for messages that it has not read or not sent completely. If all
    // clients together exceed the limit, those without progress for the longest time are disconnected.
    void weigh(const std::shared_ptr<Channel> &connection, size_t bytes);
    // Calls `then` when the file can be written again.
    void whenWritable(int file, std::function<void()> then);
    void keepUntilExit(std::shared_ptr<Channel> connection) { lasting_.push_back(std::move(connection)); }

  private:
    using Protocol = asio::local::stream_protocol;

    struct Load {
        std::weak_ptr<Channel> connection;
        size_t bytes = 0;
        uint64_t moved = 0;  // the order of its last change
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
    std::unique_ptr<Network> network_;
};

}  // namespace qvs::kernel
