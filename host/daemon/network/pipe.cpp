// SPDX-License-Identifier: Apache-2.0
// Sends and receives messages with descriptors. Exactly one message is read at a time, because a descriptor
// belongs to the message whose first bytes it came with.
#include "daemon/network/pipe.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "wire/descriptors.h"

namespace qvs::kernel {

namespace {

constexpr int kReadsInARow = 64;

wire::Head headOf(std::string_view bytes) {
    wire::Head head;
    std::memcpy(&head, bytes.data(), sizeof head);
    return head;
}

bool isLater() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

}  // namespace

Pipe::Pipe(asio::io_context &io, int socket, Events events)
    : socket_(io, asio::local::stream_protocol(), socket), events_(std::move(events)) {
    socket_.non_blocking(true);
}

Pipe::~Pipe() {
    close();
}

void Pipe::start() {
    waitToRead();
}

void Pipe::close() {
    asio::error_code ignored;
    socket_.close(ignored);
    if (file_ >= 0) ::close(std::exchange(file_, -1));
    for (const Outgoing &message : std::exchange(outgoing_, {})) {
        if (message.file >= 0) ::close(message.file);
    }
}

void Pipe::fail(const std::string &reason) {
    if (!socket_.is_open()) return;
    close();
    events_.closed(reason);
}

void Pipe::waitToRead() {
    socket_.async_wait(asio::socket_base::wait_read,
                       [self = shared_from_this()](const asio::error_code &error) {
                           if (error) return;
                           // Clients are served between two messages.
                           for (int i = 0; i < kReadsInARow; ++i) {
                               if (!self->readSome()) break;
                           }
                           if (self->socket_.is_open()) self->waitToRead();
                       });
}

// Returns false if there is nothing to read, or after the socket was closed.
bool Pipe::readSome() {
    if (!socket_.is_open()) return false;
    const size_t known = incoming_.size();
    size_t wanted = sizeof(wire::Head);
    if (known >= wanted) wanted += headOf(incoming_).length;
    incoming_.resize(wanted);
    std::vector<wire::File> files;
    const ssize_t received = wire::receiveWith(socket_.native_handle(), incoming_.data() + known,
                                               wanted - known, files, MSG_DONTWAIT);
    // A message has at most one descriptor. All others are closed.
    for (wire::File &file : files) {
        if (file_ >= 0) ::close(file_);
        file_ = file.release();
    }
    incoming_.resize(known + static_cast<size_t>(std::max<ssize_t>(received, 0)));
    if (received < 0 && isLater()) return false;
    if (received <= 0) {
        // A reset is the end of a process that left messages unread.
        const bool ended = received == 0 || errno == ECONNRESET;
        fail(ended ? "it closed its socket" : std::strerror(errno));
        return false;
    }
    if (incoming_.size() < sizeof(wire::Head)) return true;
    const wire::Head head = headOf(incoming_);
    if (head.length > wire::kMaxRequest) {
        fail("it sent a message that is too long");
        return false;
    }
    if (incoming_.size() < sizeof head + head.length) return true;
    const std::string message = std::exchange(incoming_, {});
    events_.received(head.kind, std::string_view(message).substr(sizeof head), std::exchange(file_, -1));
    return true;
}

void Pipe::send(std::string_view message, int file) {
    if (!socket_.is_open()) return;
    outgoing_.push_back({std::string(message), file < 0 ? -1 : fcntl(file, F_DUPFD_CLOEXEC, 0), 0});
    if (!writing_) flush();
}

void Pipe::flush() {
    while (!outgoing_.empty()) {
        Outgoing &next = outgoing_.front();
        const bool carries = next.sent == 0 && next.file >= 0;
        const ssize_t sent = wire::sendWith(socket_.native_handle(), next.bytes.data() + next.sent,
                                            next.bytes.size() - next.sent,
                                            {&next.file, carries ? size_t{1} : 0}, MSG_DONTWAIT);
        if (sent < 0 && isLater()) return waitToWrite();
        // The end of the socket is noticed when it is read.
        if (sent < 0) return;
        next.sent += static_cast<size_t>(sent);
        if (next.sent < next.bytes.size()) continue;
        if (next.file >= 0) ::close(next.file);
        outgoing_.pop_front();
    }
}

void Pipe::waitToWrite() {
    writing_ = true;
    socket_.async_wait(asio::socket_base::wait_write,
                       [self = shared_from_this()](const asio::error_code &error) {
                           self->writing_ = false;
                           if (!error && self->socket_.is_open()) self->flush();
                       });
}

}  // namespace qvs::kernel
