// Messages of a client, and the requests that are one message and one reply.
#include "daemon/front/connection.h"
#include "daemon/model/text.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>

#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <asio/buffer.hpp>
#include <asio/write.hpp>

#include "daemon/front/control.h"
#include "daemon/front/state_requests.h"

namespace qvs::kernel {

namespace {

constexpr size_t kChunk = 16 << 10;
// Memory beyond this is given back once it is not needed.
constexpr size_t kKept = 1 << 20;

std::string traceLine(std::string_view line) {
    return std::string(wire::Writer(wire::Kind::TraceLine).text(line).bytes());
}

void giveBack(std::string *buffer) {
    if (buffer->capacity() > kKept) std::string().swap(*buffer);
}

}  // namespace

Connection::Connection(Socket socket, Server &server)
    : socket_(std::move(socket)),
      server_(server),
      timer_(server.io()),
      chunk_(kChunk),
      lines_(traceLine, server.kernel().trace.droppedCounter()) {}

template <typename Work>
void Connection::guarded(const Work &work) {
    try {
        work();
    } catch (const std::exception &error) {
        answerFailure(error);
    }
}

void Connection::start() {
    guarded([this] { next(); });
}

// In the middle of a message, or when the answer was on its way, there is nothing left to say.
void Connection::answerFailure(const std::exception &error) try {
    const Kind kind = std::exchange(request_, Kind::Reply);
    spdlog::error("a request of kind {} failed: {}", static_cast<uint32_t>(kind), error.what());
    copied_ = {};
    wire::Writer reply(Kind::Reply);
    if (isSending_ || isReceiving_) return drop("its request failed");
    if (isStateRequest(kind)) {
        reply.u32(static_cast<uint32_t>(Status::Failure));
        if (kind == Kind::StateGet || kind == Kind::PropGet) reply.text("");
    } else if (kind == Kind::DeviceOpen) {
        reply.u32(EIO);
    } else if (kind == Kind::DeviceIoctl) {
        reply.i32(-1).u32(EIO);
    } else if (kind == Kind::Shell) {
        reply.u32(1).text("").text(fmt::format("treesh: the host failed: {}\n", error.what()));
    } else if (kind == Kind::Control) {
        reply.text(R"({"ok":false,"error":"the host could not carry this out; see its log"})");
    } else {
        return drop("its request failed");
    }
    send(std::move(reply));
} catch (const std::exception &again) {
    drop(again.what());
}

void Connection::weigh() {
    server_.weigh(shared_from_this(), received_.capacity() + sending_.capacity() + dialogue_);
}

void Connection::next() {
    wire::Head head;
    const size_t available = received_.size() - taken_;
    if (available < sizeof head) return receiveMore();
    std::memcpy(&head, received_.data() + taken_, sizeof head);
    if (head.length > wire::kMaxRequest) return drop(fmt::format("a message of {} bytes", head.length));
    if (available < sizeof head + head.length) return receiveMore();
    isReceiving_ = false;
    const size_t begin = taken_ + sizeof head;
    taken_ = begin + head.length;
    if (!copied_) request_ = static_cast<Kind>(head.kind);
    handle(static_cast<Kind>(head.kind), received_.substr(begin, head.length));
}

void Connection::receiveMore() {
    received_.erase(0, std::exchange(taken_, 0));
    if (received_.empty()) giveBack(&received_);
    weigh();
    isReceiving_ = true;
    socket_.async_read_some(asio::buffer(chunk_),
                            [self = shared_from_this()](const asio::error_code &error, size_t size) {
                                if (error) return self->ended();
                                self->guarded([&] {
                                    self->received_.append(self->chunk_.data(), size);
                                    self->next();
                                });
                            });
}

void Connection::handle(Kind kind, const std::string &payload) {
    if (copied_) {
        wire::Reader reader(payload);
        const auto error = static_cast<int>(reader.u32());
        const std::string_view data = reader.text();
        const size_t expected = error == 0 ? copiedLength_ : 0;
        if (kind != Kind::Copied || !reader.complete() || data.size() != expected) {
            return drop("an answer to a copy that makes no sense");
        }
        return std::exchange(copied_, {})(error, data);
    }
    if (follower_) return drop("a request of a client that follows the trace");
    if (isStateRequest(kind)) return serveState(kind, payload);
    switch (kind) {
        case Kind::DeviceOpen:
            return serveOpen(payload);
        case Kind::DeviceIoctl:
            return serveIoctl(payload);
        case Kind::Shell:
            return serveShell(payload);
        case Kind::Control:
            return serveControl(payload);
        case Kind::TraceFollow:
            return serveFollow();
        case Kind::Lease:
            return serveLease();
        case Kind::Ping:
            return send(wire::Writer(Kind::Reply));
        default:
            return drop(fmt::format("a message of kind {}", static_cast<uint32_t>(kind)));
    }
}

void Connection::ended() {
    if (received_.size() != taken_) spdlog::info("client left in the middle of a message");
    // It holds the connection.
    copied_ = {};
    server_.weigh(shared_from_this(), 0);
    if (device_ != nullptr) {
        if (kernel().trace.active())
            kernel().trace.write(fmt::format("device close {}", quote(device_->path)));
        device_ = nullptr;
    }
    if (follower_) kernel().trace.unfollow(*std::exchange(follower_, {}));
    if (!leased_) return;
    leased_ = false;
    if (server_.leaseClosed()) {
        server_.keepUntilExit(shared_from_this());
    } else {
        send(wire::Writer(Kind::Reply), [] {});
    }
}

void Connection::drop(std::string_view reason) {
    spdlog::info("connection closed: {}", reason);
    received_.clear();
    taken_ = 0;
    // First of all: nothing that follows is to be taken for an answer.
    asio::error_code ignored;
    socket_.close(ignored);
    ended();
}

void Connection::send(wire::Writer message, std::function<void()> then) {
    sendParts(std::string(message.bytes()), {}, std::move(then));
}

void Connection::sendParts(std::string message, Blob tail, std::function<void()> then) {
    sending_ = std::move(message);
    sendingTail_ = std::move(tail);
    isSending_ = true;
    // What the next request needs is there soon enough.
    if (received_.size() == taken_) {
        received_.clear();
        taken_ = 0;
        giveBack(&received_);
    }
    weigh();
    const std::array<asio::const_buffer, 2> parts = {
        asio::buffer(sending_), asio::buffer(sendingTail_.bytes.data(), sendingTail_.bytes.size())};
    asio::async_write(
        socket_, parts,
        [self = shared_from_this(), then = std::move(then)](const asio::error_code &error, size_t) {
            self->isSending_ = false;
            self->sendingTail_ = {};
            giveBack(&self->sending_);
            if (error) return self->ended();
            self->guarded([&] { then ? then() : self->next(); });
        });
}

// A client that has its answers read has room for so short a message; one that has not gets the long form.
bool Connection::sendFile(wire::Writer &message, int file) {
    const std::string_view bytes = message.bytes();
    iovec part = {const_cast<char *>(bytes.data()), bytes.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
    msghdr header = {};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control;
    header.msg_controllen = sizeof control;
    cmsghdr *beside = CMSG_FIRSTHDR(&header);
    beside->cmsg_level = SOL_SOCKET;
    beside->cmsg_type = SCM_RIGHTS;
    beside->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(beside), &file, sizeof file);
    const ssize_t sent = sendmsg(socket_.native_handle(), &header, MSG_NOSIGNAL | MSG_DONTWAIT);
    return sent == static_cast<ssize_t>(bytes.size());
}

bool Connection::watched() const {
    return kernel().trace.active() || !kernel().faults.empty();
}

void Connection::underFaults(const std::string &line, std::function<void(const Effect &)> perform) {
    if (kernel().faults.empty()) return perform(Effect{});
    Effect effect = kernel().faults.match(line);
    if (effect.delayMs == 0) {
        begin(effect);
        return perform(effect);
    }
    announceDelay(effect.delayMs);
    timer_.expires_after(std::chrono::milliseconds(effect.delayMs));
    timer_.async_wait(
        [self = shared_from_this(), effect, perform = std::move(perform)](const asio::error_code &error) {
            if (error) return;
            self->guarded([&] {
                self->begin(effect);
                perform(effect);
            });
        });
}

// Clients give up on a host that hangs, but not on one that was asked to be slow. Who waits for an answer has
// room for so short a message; who has gone must not keep the request from being carried out.
void Connection::announceDelay(uint32_t milliseconds) {
    wire::Writer message(Kind::Delay);
    const std::string_view bytes = message.u32(milliseconds).bytes();
    ::send(socket_.native_handle(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void Connection::begin(const Effect &effect) {
    if (effect.kill == Effect::Kill::Before) raise(SIGKILL);
    for (const auto &lab : effect.labs) {
        try {
            applyLab(*lab, kernel().model, kernel().store);
        } catch (const std::exception &error) {
            spdlog::warn("fault: the lab cannot be applied: {}", error.what());
        }
    }
    kernel().store.dieAtCommit(effect.kill == Effect::Kill::Middle);
}

void Connection::carriedOut(const Effect &effect) {
    // A request that had nothing to commit dies here.
    if (effect.kill == Effect::Kill::Middle) raise(SIGKILL);
    if (effect.kill == Effect::Kill::After) raise(SIGKILL);
}

void Connection::record(const std::string &line) {
    if (kernel().trace.active()) kernel().trace.write(line);
}

void Connection::serveState(Kind kind, const std::string &payload) {
    const auto parsed = parseStateRequest(kind, payload);
    if (!parsed) return drop(fmt::format("a malformed request of kind {}", static_cast<uint32_t>(kind)));
    const std::string line = watched() ? describe(*parsed) : std::string();
    const auto reply = [self = shared_from_this(), asFile = parsed->asFile](const StateAnswer &answer) {
        wire::Writer message(Kind::Reply);
        message.u32(static_cast<uint32_t>(answer.status));
        if (answer.blob.owner == nullptr) {
            if (answer.hasValue) message.text(answer.value);
            return self->send(std::move(message));
        }
        message.u32(static_cast<uint32_t>(answer.blob.bytes.size()));
        if (asFile && answer.blob.file >= 0 && self->sendFile(message, answer.blob.file)) return self->next();
        // The head already counts what follows it.
        const size_t whole = message.bytes().size() - sizeof(wire::Head) + answer.blob.bytes.size();
        std::string start(message.bytes());
        const auto length = static_cast<uint32_t>(whole);
        std::memcpy(start.data() + offsetof(wire::Head, length), &length, sizeof length);
        self->sendParts(std::move(start), answer.blob, {});
    };
    underFaults(line, [this, kind, payload, line, reply](const Effect &effect) {
        const StateRequest request = *parseStateRequest(kind, payload);
        StateAnswer answer = effect.fails() ? failed(request, effect.statusOr()) : execute(request, kernel());
        carriedOut(effect);
        changeValue(effect, &answer);
        if (kernel().trace.active()) record(line + describe(answer));
        reply(answer);
        kernel().snapshot.dropOutdated();
    });
}

void Connection::serveShell(const std::string &payload) {
    wire::Reader reader(payload);
    const uint32_t count = reader.u32();
    std::vector<std::string> words;
    for (uint32_t i = 0; i < count && words.size() * sizeof(uint32_t) < payload.size(); ++i) {
        words.emplace_back(reader.text());
    }
    if (!reader.complete() || words.size() != count) return drop("a malformed shell request");
    std::string line = "shell treesh";
    size_t shown = 0;
    for (; shown < words.size() && line.size() < kShownText; ++shown)
        line += " " + shellWord(words[shown]);
    if (shown < words.size()) line += fmt::format(" +{} words", words.size() - shown);
    underFaults(line, [this, self = shared_from_this(), words, line](const Effect &effect) {
        ShellResult result;
        if (effect.fails()) {
            result = {effect.exitOr(), {}, "treesh: this failure was asked for\n"};
        } else {
            result = runGuarded(words);
        }
        carriedOut(effect);
        effect.change(&result.out, wire::kMaxRequest);
        record(fmt::format("{} -> exit {}", line, result.exitCode));
        wire::Writer message(Kind::Reply);
        message.u32(static_cast<uint32_t>(result.exitCode)).text(result.out).text(result.err);
        send(std::move(message));
    });
}

ShellResult Connection::runGuarded(const std::vector<std::string> &words) try {
    return runShell(kernel().model, {words.begin(), words.end()});
} catch (const StoreError &error) {
    logStoreFailure(kernel().store, error);
    return {1, {}, fmt::format("treesh: {}\n", error.what())};
}

void Connection::serveControl(const std::string &payload) {
    wire::Reader reader(payload);
    const std::string_view text = reader.text();
    if (!reader.complete()) return drop("a malformed control request");
    const ControlAnswer answer = runControl(text, server_);
    wire::Writer message(Kind::Reply);
    message.text(answer.json);
    if (!answer.stops) return send(std::move(message));
    send(std::move(message), [self = shared_from_this()] {
        self->server_.keepUntilExit(self);
        self->server_.stop();
    });
}

void Connection::serveFollow() {
    // The reply to the end of a lease would stand between its lines.
    if (leased_) return drop("the trace on the connection of a lease");
    send(wire::Writer(Kind::Reply), [self = shared_from_this()] {
        // It is taken back when the connection ends.
        self->follower_ = self->kernel().trace.follow([connection = self.get()](std::string_view line) {
            connection->lines_.put(line);
            connection->flushLines();
        });
        self->next();
    });
}

void Connection::flushLines() {
    if (flushing_ || lines_.empty()) return;
    flushing_ = true;
    sending_ = lines_.take();
    asio::async_write(socket_, asio::buffer(sending_),
                      [self = shared_from_this()](const asio::error_code &error, size_t) {
                          self->flushing_ = false;
                          self->lines_.sent();
                          if (!error) self->flushLines();
                      });
}

void Connection::serveLease() {
    if (leased_) return drop("a second lease on one connection");
    leased_ = true;
    server_.leaseOpened();
    send(wire::Writer(Kind::Reply));
}

}  // namespace qvs::kernel
