// Accepts clients on the Unix socket, and decides how long the daemon stays.
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <string>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>

#include "kernel/kernel.h"

namespace qvs::kernel {

class Connection;

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
    void keepUntilExit(std::shared_ptr<Connection> connection) { lasting_.push_back(std::move(connection)); }

  private:
    using Protocol = asio::local::stream_protocol;

    void accept();

    asio::io_context &io_;
    Kernel &kernel_;
    Options options_;
    Protocol::acceptor acceptor_;
    asio::steady_timer timer_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    size_t leases_ = 0;
    std::vector<std::shared_ptr<Connection>> lasting_;
};

}  // namespace qvs::kernel
