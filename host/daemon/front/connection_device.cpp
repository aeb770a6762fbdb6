// SPDX-License-Identifier: Apache-2.0
// Serves devices. An ioctl reads and writes the memory of the client before it is answered.
#include <cerrno>

#include <fmt/format.h>

#include "daemon/front/connection.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

// No request has an input of this length.
constexpr uint32_t kMaxInput = 16u << 20;
constexpr size_t kCopyPiece = 1u << 20;
// The size of a request without frame and input.
constexpr size_t kBareRequest = sizeof(uint32_t) + sizeof(uint64_t);

void appendMore(std::function<bool(std::string *output)> *more, std::string *output) {
    if (!(*more)(output)) *more = {};
}

wire::Writer copyOutMessage(wire::Kind kind, uint64_t address, std::string_view data) {
    wire::Writer message(kind);
    message.u64(address).text(data);
    return message;
}

}  // namespace

struct Connection::Ioctl {
    uint32_t number = 0;
    const Command *command = nullptr;
    // Whether the client sent what it read of its memory, and its input, which is empty if it was not read.
    bool looked = false;
    std::string early;
    Frame frame;
    bool watched = false;  // when the request arrived
    std::string line;      // of the trace; extended while a watched request is read
    std::string input;
    // The part of the output that is not sent is `output` from `sent`, followed by `more`.
    std::string output;
    size_t sent = 0;
    std::function<bool(std::string *output)> more;
    uint64_t target = 0;  // the address of what is sent next
};

void Connection::serveOpen(const std::string &payload) {
    wire::Reader reader(payload);
    const std::string path(reader.text());
    if (!reader.complete() || device_ != nullptr) return drop("a malformed open request");
    const std::string line = watched() ? fmt::format("device open {}", quote(path)) : std::string();
    underFaults(line, [this, self = self(), path, line](const Effect &effect) {
        const Device *device = findDevice(path);
        const int error = effect.fails() ? effect.errorOr() : device == nullptr ? ENOENT : 0;
        carriedOut(effect);
        if (kernel().trace.active()) kernel().trace.write(fmt::format("{} -> {}", line, errnoName(error)));
        if (error == 0) device_ = device;
        send(wire::Writer(Kind::Reply).u32(static_cast<uint32_t>(error)));
    });
}

void Connection::serveIoctl(const std::string &payload) {
    wire::Reader reader(payload);
    auto ioctl = std::make_shared<Ioctl>();
    ioctl->number = reader.u32();
    const uint64_t argument = reader.u64();
    ioctl->looked = payload.size() > kBareRequest;
    const std::string_view frame = ioctl->looked ? reader.text() : std::string_view();
    if (ioctl->looked) ioctl->early = reader.text();
    if (!reader.complete() || device_ == nullptr) return drop("a malformed device request");
    ioctl->command = device_->find(ioctl->number);
    ioctl->watched = watched();
    if (ioctl->watched) {
        ioctl->line = fmt::format("device ioctl {} {:#x} {}", quote(device_->path), ioctl->number,
                                  ioctl->command == nullptr ? "?" : ioctl->command->name);
    }
    if (ioctl->command == nullptr) return perform(ioctl);
    const auto size = static_cast<uint32_t>(device_->frame.size);
    copyIn(argument, size, frame, [this, self = self(), ioctl](int error, std::string_view bytes) {
        if (error != 0) return finishIoctl(*ioctl, error);
        ioctl->frame = readFrame(device_->frame, bytes);
        if (ioctl->watched)
            ioctl->line += fmt::format(" in={} out={}", ioctl->frame.inLength, ioctl->frame.outLength);
        fetchInput(ioctl);
    });
}

void Connection::fetchInput(const std::shared_ptr<Ioctl> &ioctl) {
    const Frame &frame = ioctl->frame;
    if (frame.inLength > kMaxInput) return finishIoctl(*ioctl, EINVAL);
    const auto then = [this, self = self(), ioctl](int error, std::string_view bytes) {
        if (error != 0) return finishIoctl(*ioctl, error);
        ioctl->input = bytes;
        dialogue_ = bytes.size();
        if (ioctl->watched) ioctl->line += fmt::format(" input=[{}]", hexRuns(bytes));
        perform(ioctl);
    };
    copyIn(frame.inAddress, frame.inLength, ioctl->early, then);
}

void Connection::perform(const std::shared_ptr<Ioctl> &ioctl) {
    underFaults(ioctl->line, [this, self = self(), ioctl](const Effect &effect) {
        const uint32_t room = ioctl->frame.outLength;
        Result result;
        if (effect.fails()) {
            result.error = effect.errorOr();
        } else if (ioctl->command == nullptr || ioctl->command->handle == nullptr) {
            result.error = ENOTTY;
        } else if (ioctl->input.size() < ioctl->command->minInput) {
            result.error = EINVAL;
        } else {
            result = callDevice(*ioctl->command, {kernel().model, ioctl->number, ioctl->input, room});
        }
        carriedOut(effect);
        if (result.error != 0)
            return settle([this, self, ioctl, error = result.error] { finishIoctl(*ioctl, error); });
        if (result.more) appendMore(&result.more, &result.output);
        if (effect.changesOutput()) {
            while (result.more)
                appendMore(&result.more, &result.output);
            effect.change(&result.output, room);
        }
        if (result.output.size() > room) result.output.resize(room);
        ioctl->output = std::move(result.output);
        ioctl->more = std::move(result.more);
        ioctl->target = ioctl->frame.outAddress;
        dialogue_ += ioctl->output.capacity();
        settle([this, self, ioctl] { deliver(ioctl); });
    });
}

Result Connection::callDevice(const Command &command, const Call &call) try {
    return command.handle(call);
} catch (const StoreError &error) {
    logStoreFailure(kernel().store, error);
    return {error.full() ? ENOSPC : EIO, {}};
}

// Sends a large answer in pieces, so that neither side copies it whole and other clients are served in
// between.
void Connection::deliver(const std::shared_ptr<Ioctl> &ioctl) {
    while (ioctl->sent == ioctl->output.size() && ioctl->more) {
        ioctl->output.clear();
        ioctl->sent = 0;
        appendMore(&ioctl->more, &ioctl->output);
    }
    const std::string_view piece = std::string_view(ioctl->output).substr(ioctl->sent, kCopyPiece);
    if (piece.empty()) return finishIoctl(*ioctl, 0);
    const uint64_t target = ioctl->target;
    ioctl->sent += piece.size();
    ioctl->target += piece.size();
    const bool isLast = ioctl->sent == ioctl->output.size() && !ioctl->more;
    // A trace shows whether the client could write the answer, so it must be asked.
    if (ioctl->looked && isLast && !kernel().trace.active()) {
        dialogue_ = 0;
        return send(copyOutMessage(Kind::LastCopyOut, target, piece));
    }
    copyOut(target, piece, [this, self = self(), ioctl](int error, std::string_view) {
        if (error != 0) return finishIoctl(*ioctl, error);
        deliver(ioctl);
    });
}

void Connection::finishIoctl(const Ioctl &ioctl, int error) {
    if (ioctl.watched) kernel().trace.write(fmt::format("{} -> {}", ioctl.line, errnoName(error)));
    dialogue_ = 0;
    send(wire::Writer(Kind::Reply).i32(error == 0 ? 0 : -1).u32(static_cast<uint32_t>(error)));
}

// `early` are the bytes if the client sent them with the request, or else empty.
void Connection::copyIn(uint64_t address, uint32_t length, std::string_view early, Copied then) {
    if (early.size() == length) return then(0, early);
    copied_ = std::move(then);
    copiedLength_ = length;
    send(wire::Writer(Kind::CopyIn).u64(address).u32(length));
}

void Connection::copyOut(uint64_t address, std::string_view data, Copied then) {
    copied_ = std::move(then);
    copiedLength_ = 0;
    send(copyOutMessage(Kind::CopyOut, address, data));
}

}  // namespace qvs::kernel
