// SPDX-License-Identifier: Apache-2.0
// Serves the requests that consist of one message and one reply.
#include "daemon/front/connection.h"

#include <csignal>

#include <fmt/format.h>
#include <asio/post.hpp>

#include "daemon/front/control.h"
#include "daemon/front/state_requests.h"
#include "daemon/model/log.h"
#include "daemon/model/text.h"
#include "daemon/network/network.h"

namespace qvs::kernel {

namespace {

std::string traceLine(std::string_view line) {
    return std::string(wire::Writer(wire::Kind::TraceLine).text(line).bytes());
}

}  // namespace

Connection::Connection(Socket socket, Server &server)
    : Channel(std::move(socket), server),
      timer_(server.io()),
      lines_(traceLine, server.kernel().trace.droppedCounter()) {}

std::shared_ptr<Connection> Connection::self() {
    return std::static_pointer_cast<Connection>(shared_from_this());
}

bool Connection::answerFailure(const std::exception &error, bool between) {
    const Kind kind = std::exchange(request_, Kind::Reply);
    logLine(Level::Error, "a request of kind {} failed: {}", static_cast<uint32_t>(kind), error.what());
    copied_ = {};
    if (!between) return false;
    wire::Writer reply(Kind::Reply);
    if (isStateRequest(kind)) {
        replyState(failedState(kind, Status::Failure), false);
        return true;
    }
    if (kind == Kind::DeviceOpen) {
        reply.u32(EIO);
    } else if (kind == Kind::DeviceIoctl) {
        reply.i32(-1).u32(EIO);
    } else if (kind == Kind::Shell) {
        reply.u32(1).text("").text(fmt::format("treesh: the host failed: {}\n", error.what()));
    } else if (kind == Kind::Control) {
        reply.text(R"({"ok":false,"error":"the host could not execute this request; see its log"})");
    } else {
        return false;
    }
    send(std::move(reply));
    return true;
}

void Connection::handle(Kind kind, std::string payload) {
    if (!copied_) request_ = kind;
    if (copied_) {
        wire::Reader reader(payload);
        const auto error = static_cast<int>(reader.u32());
        const std::string_view data = reader.text();
        const size_t expected = error == 0 ? copiedLength_ : 0;
        if (kind != Kind::Copied || !reader.complete() || data.size() != expected) {
            return drop("an invalid answer to a copy");
        }
        return std::exchange(copied_, {})(error, data);
    }
    if (follower_) return drop("a request on a connection that follows the trace");
    if (isStateRequest(kind)) return serveState(kind, std::move(payload));
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
    // `copied_` holds a reference to the connection.
    copied_ = {};
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
    timer_.async_wait([self = self(), effect, perform = std::move(perform)](const asio::error_code &error) {
        if (error) return;
        self->guarded([&] {
            self->begin(effect);
            perform(effect);
        });
    });
}

// Tells the client to wait longer, because clients give up on a host that does not answer. The message is
// sent without waiting: a client that waits for an answer has room for it, and one that has gone must not
// delay the request.
void Connection::announceDelay(uint32_t milliseconds) {
    wire::Writer message(Kind::Delay);
    message.u32(milliseconds);
    sendAtOnce(message);
}

void Connection::begin(const Effect &effect) {
    if (effect.kill == Effect::Kill::Before) raise(SIGKILL);
    for (const auto &lab : effect.labs) {
        try {
            applyLab(*lab, kernel().model, kernel().store);
        } catch (const std::exception &error) {
            logLine(Level::Warning, "fault: cannot apply the lab: {}", error.what());
        }
    }
    kernel().store.dieAtCommit(effect.kill == Effect::Kill::Middle);
}

void Connection::carriedOut(const Effect &effect) {
    // A request for the middle of a change dies here if there was nothing to commit.
    if (effect.kill == Effect::Kill::Middle || effect.kill == Effect::Kill::After) raise(SIGKILL);
}

void Connection::serveState(Kind kind, std::string payload) {
    const auto request = parseStateRequest(kind, std::move(payload));
    if (!request) return drop(fmt::format("a malformed request of kind {}", static_cast<uint32_t>(kind)));
    const std::string line = watched() ? describe(*request) : std::string();
    underFaults(line, [self = self(), request, line](const Effect &effect) {
        Kernel &kernel = self->kernel();
        StateAnswer answer = effect.fails() ? failed(*request, effect.statusOr()) : execute(*request, kernel);
        self->carriedOut(effect);
        changeValue(effect, &answer);
        if (kernel.trace.active()) kernel.trace.write(line + describe(answer));
        self->settle([self, answer = std::move(answer), request] {
            if (!request->asFile || answer.blob.file == nullptr)
                return self->replyState(answer, request->asFile);
            self->prepareFile(answer);
        });
    });
}

// Other clients are served between the pieces of a file.
void Connection::prepareFile(const StateAnswer &answer) {
    if (answer.blob.file->writeSome(answer.blob.bytes)) return replyState(answer, true);
    asio::post(server_.io(), [self = self(), answer] { self->guarded([&] { self->prepareFile(answer); }); });
}

// All requests pass here: of the state library, of devices, of the shell and of the control interface.
void Connection::settle(std::function<void()> reply) {
    const uint64_t generation = server_.network().publish();
    if (generation == 0) return reply();
    server_.network().wait(generation, [self = self(), reply = std::move(reply)] { self->guarded(reply); });
}

void Connection::replyState(const StateAnswer &answer, bool asFile) {
    wire::Writer message(Kind::Reply);
    message.u32(static_cast<uint32_t>(answer.status));
    if (answer.blob.owner == nullptr) {
        if (answer.hasValue) message.text(answer.value);
        send(std::move(message));
        return kernel().snapshot.dropOutdated();
    }
    message.u32(static_cast<uint32_t>(answer.blob.bytes.size()));
    // If the client has no room for the short message, it gets the blob itself.
    const int file = asFile && answer.blob.file != nullptr ? answer.blob.file->descriptor() : -1;
    if (file >= 0 && sendAtOnce(message, file)) {
        next();
    } else {
        sendWith(std::move(message), answer.blob);
    }
    kernel().snapshot.dropOutdated();
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
    underFaults(line, [this, self = self(), words, line](const Effect &effect) {
        ShellResult result;
        if (effect.fails()) {
            result = {effect.exitOr(), {}, "treesh: a fault made this request fail\n"};
        } else {
            result = runGuarded(words);
        }
        carriedOut(effect);
        effect.change(&result.out, wire::kMaxRequest);
        kernel().trace.write(fmt::format("{} -> exit {}", line, result.exitCode));
        settle([this, self, result] {
            send(wire::Writer(Kind::Reply)
                     .u32(static_cast<uint32_t>(result.exitCode))
                     .text(result.out)
                     .text(result.err));
        });
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
    if (!answer.stops) return settle([self = self(), message] { self->send(message); });
    send(std::move(message), [self = self()] {
        self->server_.keepUntilExit(self);
        self->server_.stop();
    });
}

void Connection::serveFollow() {
    // The reply that ends a lease would appear between the lines of the trace.
    if (leased_) return drop("a request for the trace on the connection of a lease");
    send(wire::Writer(Kind::Reply), [self = self()] {
        // `ended` removes the follower, so the pointer stays valid.
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
    sendLoose(lines_.take(), [self = self()](bool sent) {
        self->flushing_ = false;
        self->lines_.sent();
        if (sent) self->flushLines();
    });
}

void Connection::serveLease() {
    if (leased_) return drop("a second lease on one connection");
    leased_ = true;
    server_.leaseOpened();
    send(wire::Writer(Kind::Reply));
}

}  // namespace qvs::kernel
