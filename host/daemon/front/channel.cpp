// SPDX-License-Identifier: Apache-2.0
// Receives and sends messages.
#include "daemon/front/channel.h"

#include <sys/socket.h>

#include <array>
#include <cstring>
#include <utility>

#include <fmt/format.h>
#include <asio/buffer.hpp>
#include <asio/write.hpp>

#include "daemon/front/server.h"
#include "daemon/model/log.h"
#include "wire/descriptors.h"

namespace qvs::kernel {

namespace {

constexpr size_t kChunk = 16 << 10;

void giveBack(std::string *buffer) {
    // A buffer above this size is freed when it is empty.
    constexpr size_t kKept = 1 << 20;
    if (buffer->capacity() > kKept) std::string().swap(*buffer);
}

}  // namespace

Channel::Channel(Socket socket, Server &server)
    : server_(server), socket_(std::move(socket)), chunk_(std::make_unique_for_overwrite<char[]>(kChunk)) {}

// In the middle of a message or of an answer, no answer is possible.
void Channel::answer(const std::exception &error) try {
    const bool between = !isSending_ && !isReceiving_;
    if (!answerFailure(error, between)) drop("its request failed");
} catch (const std::exception &again) {
    drop(again.what());
}

void Channel::start() {
    guarded([this] { next(); });
}

void Channel::weigh() {
    server_.weigh(shared_from_this(), received_.capacity() + sending_.capacity() + dialogue_);
}

void Channel::next() {
    wire::Head head;
    const size_t available = received_.size() - taken_;
    if (available < sizeof head) return receiveMore();
    std::memcpy(&head, received_.data() + taken_, sizeof head);
    if (head.length > wire::kMaxRequest) return drop(fmt::format("a message of {} bytes", head.length));
    if (available < sizeof head + head.length) return receiveMore();
    isReceiving_ = false;
    const size_t begin = taken_ + sizeof head;
    taken_ = begin + head.length;
    handle(static_cast<Kind>(head.kind), received_.substr(begin, head.length));
}

void Channel::receiveMore() {
    received_.erase(0, std::exchange(taken_, 0));
    if (received_.empty()) giveBack(&received_);
    weigh();
    isReceiving_ = true;
    socket_.async_read_some(asio::buffer(chunk_.get(), kChunk),
                            [self = shared_from_this()](const asio::error_code &error, size_t size) {
                                if (error) return self->end();
                                self->guarded([&] {
                                    self->received_.append(self->chunk_.get(), size);
                                    self->next();
                                });
                            });
}

void Channel::end() {
    if (received_.size() != taken_)
        logLine(Level::Info, "the client closed the connection in the middle of a message");
    server_.weigh(shared_from_this(), 0);
    ended();
}

void Channel::drop(std::string_view reason) {
    logLine(Level::Info, "connection closed: {}", reason);
    received_.clear();
    taken_ = 0;
    // The socket is closed first, so that nothing else can be taken for an answer.
    asio::error_code ignored;
    socket_.close(ignored);
    end();
}

void Channel::send(wire::Writer message, std::function<void()> then) {
    sendParts(message.take(), {}, std::move(then));
}

void Channel::sendWith(wire::Writer message, Blob tail) {
    std::string start = message.take();
    // The length in the head includes the blob.
    const auto length = static_cast<uint32_t>(start.size() - sizeof(wire::Head) + tail.bytes.size());
    std::memcpy(start.data() + offsetof(wire::Head, length), &length, sizeof length);
    sendParts(std::move(start), std::move(tail), {});
}

// Sends what there is room for, and returns its size. The event loop sends the rest, and finds out about
// failures.
size_t Channel::sendSome(std::string_view bytes) {
    const ssize_t sent =
        wire::sendWith(socket_.native_handle(), bytes.data(), bytes.size(), {}, MSG_DONTWAIT);
    return sent < 0 ? 0 : static_cast<size_t>(sent);
}

void Channel::sendParts(std::string message, Blob tail, std::function<void()> then) {
    sending_ = std::move(message);
    sendingTail_ = std::move(tail);
    isSending_ = true;
    // The buffer is allocated again for the next request.
    if (received_.size() == taken_) {
        received_.clear();
        taken_ = 0;
        giveBack(&received_);
    }
    // Answers to requests that arrived together must not nest, so they take their turn in the event loop.
    const bool direct = sendingTail_.bytes.empty() && received_.empty();
    const size_t sent = direct ? sendSome(sending_) : 0;
    if (direct && sent == sending_.size()) {
        isSending_ = false;
        giveBack(&sending_);
        return then ? then() : next();
    }
    weigh();
    const std::array<asio::const_buffer, 2> parts = {
        asio::buffer(sending_) + sent, asio::buffer(sendingTail_.bytes.data(), sendingTail_.bytes.size())};
    asio::async_write(
        socket_, parts,
        [self = shared_from_this(), then = std::move(then)](const asio::error_code &error, size_t) {
            self->isSending_ = false;
            self->sendingTail_ = {};
            giveBack(&self->sending_);
            if (error) return self->end();
            self->guarded([&] { then ? then() : self->next(); });
        });
}

bool Channel::sendAtOnce(wire::Writer &message, int file) {
    const std::string_view bytes = message.bytes();
    const ssize_t sent = wire::sendWith(socket_.native_handle(), bytes.data(), bytes.size(),
                                        {&file, file >= 0 ? size_t{1} : 0}, MSG_DONTWAIT);
    return sent == static_cast<ssize_t>(bytes.size());
}

void Channel::sendLoose(std::string bytes, std::function<void(bool sent)> then) {
    sending_ = std::move(bytes);
    asio::async_write(socket_, asio::buffer(sending_),
                      [self = shared_from_this(), then = std::move(then)](const asio::error_code &error,
                                                                          size_t) { then(!error); });
}

}  // namespace qvs::kernel
