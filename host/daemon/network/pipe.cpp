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

ssize_t sendBytes(int socket, std::string_view bytes, int file) {
    iovec part = {const_cast<char *>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
    if (file >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr *head = CMSG_FIRSTHDR(&message);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof file);
        std::memcpy(CMSG_DATA(head), &file, sizeof file);
    }
    return sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
}

// Receives a descriptor into `*file`, and closes all others.
ssize_t receiveBytes(int socket, char *bytes, size_t size, int *file) {
    constexpr size_t kMost = 8;
    iovec part = {bytes, size};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(kMost * sizeof *file)] = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t received = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (received < 0) return received;
    for (cmsghdr *head = CMSG_FIRSTHDR(&message); head != nullptr; head = CMSG_NXTHDR(&message, head)) {
        if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (head->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int given = -1;
            std::memcpy(&given, CMSG_DATA(head) + i * sizeof given, sizeof given);
            if (*file >= 0) ::close(*file);
            *file = given;
        }
    }
    return received;
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
                           // Clients are served in between.
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
    const ssize_t received =
        receiveBytes(socket_.native_handle(), incoming_.data() + known, wanted - known, &file_);
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
        const ssize_t sent =
            sendBytes(socket_.native_handle(), std::string_view(next.bytes).substr(next.sent),
                      next.sent == 0 ? next.file : -1);
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
