// SPDX-License-Identifier: Apache-2.0
// Accepts clients and counts leases.
#include "daemon/front/server.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include <fmt/format.h>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>

#include "daemon/front/connection.h"
#include "daemon/model/log.h"
#include "daemon/network/network.h"

namespace qvs::kernel {

namespace {

using namespace std::chrono_literals;
constexpr auto kFirstLeaseWithin = 30s;
constexpr auto kAcceptAgainAfter = 100ms;
// Clients that use at most kLight are not counted. The others can use kMaxHeld together.
constexpr size_t kLight = 256 << 10;
constexpr size_t kMaxHeld = 512u << 20;

}  // namespace

Server::Server(asio::io_context &io, Kernel &kernel, int listener, Options options)
    : io_(io),
      kernel_(kernel),
      options_(std::move(options)),
      acceptor_(io, Protocol(), listener),
      timer_(io),
      network_(std::make_unique<Network>(io, kernel.model,
                                         Network::Options{options_.directory, options_.switchd})) {
    if (options_.whileLeased) {
        // The daemon must not stay if the launcher ended before it took its lease.
        timer_.expires_after(kFirstLeaseWithin);
        timer_.async_wait([this](const asio::error_code &error) {
            if (!error && leases_ == 0) stop();
        });
    }
    kernel_.trace.waitWith(
        [this](int file, std::function<void()> then) { whenWritable(file, std::move(then)); });
    accept();
}

Server::~Server() = default;

std::chrono::seconds Server::uptime() const {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started_);
}

void Server::accept() {
    acceptor_.async_accept([this](const asio::error_code &error, Protocol::socket socket) {
        if (!error) {
            // Before this client is served, because an error about it must not end the host for others.
            accept();
            if (mayConnect(socket)) std::make_shared<Connection>(std::move(socket), *this)->start();
        } else if (acceptor_.is_open()) {
            logLine(Level::Warning, "cannot accept a connection: {}", error.message());
            timer_.expires_after(kAcceptAgainAfter);
            timer_.async_wait([this](const asio::error_code &) { accept(); });
        }
    });
}

// Accepts only the user of the host and root. Other users would act with the rights of the user of the host.
bool Server::mayConnect(Protocol::socket &socket) const {
    ucred peer{};
    socklen_t size = sizeof peer;
    const bool known = getsockopt(socket.native_handle(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    if (known && (peer.uid == 0 || peer.uid == geteuid())) return true;
    logLine(Level::Info, "connection closed: the client belongs to user {}, the host to user {}", peer.uid,
            geteuid());
    return false;
}

void Server::weigh(const std::shared_ptr<Channel> &connection, size_t bytes) {
    const auto known = loads_.find(connection.get());
    if (known != loads_.end()) held_ -= known->second.bytes;
    if (bytes <= kLight) {
        if (known != loads_.end()) loads_.erase(known);
        return;
    }
    loads_[connection.get()] = {connection, bytes, ++moments_};
    held_ += bytes;
    while (held_ > kMaxHeld && loads_.size() > 1) {
        const auto stalest = std::min_element(loads_.begin(), loads_.end(), [](const auto &a, const auto &b) {
            return a.second.moved < b.second.moved;
        });
        const Load dropped = stalest->second;
        held_ -= dropped.bytes;
        loads_.erase(stalest);
        asio::post(io_, [dropped] {
            if (const auto live = dropped.connection.lock())
                live->drop(
                    fmt::format("{} bytes of messages are not read or not sent completely", dropped.bytes));
        });
    }
}

void Server::whenWritable(int file, std::function<void()> then) {
    const int copy = fcntl(file, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return;
    auto stream = std::make_shared<asio::posix::stream_descriptor>(io_, copy);
    stream->async_wait(asio::posix::stream_descriptor::wait_write,
                       [stream, then = std::move(then)](const asio::error_code &error) {
                           if (!error) then();
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
