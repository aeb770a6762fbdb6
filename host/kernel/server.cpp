// Accepting clients, leases, stopping.
#include "kernel/server.h"

#include <cerrno>

#include <spdlog/spdlog.h>

#include "kernel/connection.h"

namespace qvs::kernel {

namespace {

using namespace std::chrono_literals;
constexpr auto kFirstLeaseWithin = 30s;
constexpr auto kAcceptAgainAfter = 100ms;

}  // namespace

Server::Server(asio::io_context &io, Kernel &kernel, int listener, Options options)
    : io_(io),
      kernel_(kernel),
      options_(std::move(options)),
      acceptor_(io, Protocol(), listener),
      timer_(io) {
    if (options_.whileLeased) {
        // A launcher that died before it took its lease must not leave the daemon behind.
        timer_.expires_after(kFirstLeaseWithin);
        timer_.async_wait([this](const asio::error_code &error) {
            if (!error && leases_ == 0) stop();
        });
    }
    accept();
}

std::chrono::seconds Server::uptime() const {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started_);
}

void Server::accept() {
    acceptor_.async_accept([this](const asio::error_code &error, Protocol::socket socket) {
        if (!error) {
            std::make_shared<Connection>(std::move(socket), *this)->start();
            accept();
        } else if (acceptor_.is_open()) {
            spdlog::warn("no connection can be accepted: {}", error.message());
            timer_.expires_after(kAcceptAgainAfter);
            timer_.async_wait([this](const asio::error_code &) { accept(); });
        }
    });
}

void Server::stop() {
    acceptor_.close();
    io_.stop();
}

void Server::leaseOpened() {
    ++leases_;
}

bool Server::leaseClosed() {
    const bool ends = --leases_ == 0 && options_.whileLeased;
    if (ends) stop();
    return ends;
}

}  // namespace qvs::kernel
