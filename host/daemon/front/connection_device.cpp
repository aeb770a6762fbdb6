// SPDX-License-Identifier: Apache-2.0
// Serves devices. An ioctl reads and writes the memory of the client before it is answered.
#include <cerrno>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include "daemon/front/connection.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

// No request has an input of this length.
constexpr uint32_t kMaxInput = 16u << 20;
constexpr size_t kCopyPiece = 1u << 20;

}  // namespace

struct Connection::Ioctl {
    uint32_t number = 0;
    const Command *command = nullptr;
    Frame frame;
    std::string line;  // of the trace; extended while the request is read
    std::string input;
    std::string output;
};

void Connection::serveOpen(const std::string &payload) {
    wire::Reader reader(payload);
    const std::string path(reader.text());
    if (!reader.complete() || device_ != nullptr) return drop("a malformed open request");
    const std::string line = fmt::format("device open {}", quote(path));
    underFaults(line, [this, self = self(), path, line](const Effect &effect) {
        const Device *device = findDevice(path);
        const int error = effect.fails() ? effect.errorOr() : device == nullptr ? ENOENT : 0;
        carriedOut(effect);
        kernel().trace.write(fmt::format("{} -> {}", line, errnoName(error)));
        if (error == 0) device_ = device;
        send(wire::Writer(Kind::Reply).u32(static_cast<uint32_t>(error)));
    });
}

void Connection::serveIoctl(const std::string &payload) {
    wire::Reader reader(payload);
    auto ioctl = std::make_shared<Ioctl>();
    ioctl->number = reader.u32();
    const uint64_t argument = reader.u64();
    if (!reader.complete() || device_ == nullptr) return drop("a malformed device request");
    ioctl->command = device_->find(ioctl->number);
    ioctl->line = fmt::format("device ioctl {} {:#x} {}", quote(device_->path), ioctl->number,
                              ioctl->command == nullptr ? "?" : ioctl->command->name);
    if (ioctl->command == nullptr) return perform(ioctl);
    const auto size = static_cast<uint32_t>(device_->frame.size);
    copyIn(argument, size, [this, self = self(), ioctl](int error, std::string_view bytes) {
        if (error != 0) return finishIoctl(*ioctl, error);
        ioctl->frame = readFrame(device_->frame, bytes);
        ioctl->line += fmt::format(" in={} out={}", ioctl->frame.inLength, ioctl->frame.outLength);
        fetchInput(ioctl);
    });
}

void Connection::fetchInput(const std::shared_ptr<Ioctl> &ioctl) {
    const Frame &frame = ioctl->frame;
    if (frame.inLength > kMaxInput) return finishIoctl(*ioctl, EINVAL);
    copyIn(frame.inAddress, frame.inLength, [this, self = self(), ioctl](int error, std::string_view bytes) {
        if (error != 0) return finishIoctl(*ioctl, error);
        ioctl->input = bytes;
        dialogue_ = bytes.size();
        if (watched()) ioctl->line += fmt::format(" input=[{}]", hexRuns(bytes));
        perform(ioctl);
    });
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
        effect.change(&result.output, room);
        if (result.output.size() > room) result.output.resize(room);
        ioctl->output = std::move(result.output);
        dialogue_ += ioctl->output.capacity();
        settle([this, self, ioctl] { deliver(ioctl, 0); });
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
void Connection::deliver(const std::shared_ptr<Ioctl> &ioctl, size_t sent) {
    const std::string_view rest = std::string_view(ioctl->output).substr(sent);
    if (rest.empty()) return finishIoctl(*ioctl, 0);
    const std::string_view piece = rest.substr(0, kCopyPiece);
    copyOut(ioctl->frame.outAddress + sent, piece,
            [this, self = self(), ioctl, end = sent + piece.size()](int error, std::string_view) {
                if (error != 0) return finishIoctl(*ioctl, error);
                deliver(ioctl, end);
            });
}

void Connection::finishIoctl(const Ioctl &ioctl, int error) {
    kernel().trace.write(fmt::format("{} -> {}", ioctl.line, errnoName(error)));
    dialogue_ = 0;
    send(wire::Writer(Kind::Reply).i32(error == 0 ? 0 : -1).u32(static_cast<uint32_t>(error)));
}

void Connection::copyIn(uint64_t address, uint32_t length, Copied then) {
    if (length == 0) return then(0, {});
    copied_ = std::move(then);
    copiedLength_ = length;
    send(wire::Writer(Kind::CopyIn).u64(address).u32(length));
}

void Connection::copyOut(uint64_t address, std::string_view data, Copied then) {
    copied_ = std::move(then);
    copiedLength_ = 0;
    wire::Writer message(Kind::CopyOut);
    message.u64(address).text(data);
    send(std::move(message));
}

}  // namespace qvs::kernel
