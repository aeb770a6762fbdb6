// SPDX-License-Identifier: Apache-2.0
// The socket to the emulated kernel.
#include "datapath/process/kernel_link.h"

#include <fcntl.h>
#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>

#include "datapath/process/log.h"
#include "datapath/process/loop.h"
#include "wire/descriptors.h"

namespace qvs::datapath {

namespace {

constexpr size_t kMostRead = size_t{256} << 10;
constexpr size_t kFactsPerMessage = 1000;
// The limit of the facts about addresses or groups that wait for the kernel. Newer ones are lost.
constexpr size_t kMostFacts = 1u << 18;

wire::Writer message(Kind kind) {
    return wire::Writer(static_cast<wire::Kind>(kind));
}

}  // namespace

KernelLink::KernelLink(Loop &loop, wire::File socket, KernelRequests requests)
    : loop_(loop), socket_(std::move(socket)), requests_(std::move(requests)) {
    fcntl(socket_.get(), F_SETFD, FD_CLOEXEC);
    loop_.watch(socket_.get(), EPOLLIN, [this](uint32_t events) {
        if ((events & EPOLLOUT) != 0) flush();
        if ((events & ~uint32_t{EPOLLOUT}) != 0) receive();
    });
}

KernelLink::~KernelLink() {
    loop_.forget(socket_.get());
}

void KernelLink::receive() {
    const size_t before = unread_.size();
    unread_.resize(before + kMostRead);
    std::vector<wire::File> files;
    const ssize_t received =
        wire::receiveWith(socket_.get(), unread_.data() + before, kMostRead, files, MSG_DONTWAIT);
    const int reason = errno;
    unread_.resize(before + static_cast<size_t>(std::max<ssize_t>(received, 0)));
    for (wire::File &file : files)
        files_.push_back(std::move(file));
    if (received < 0 && (reason == EAGAIN || reason == EINTR)) return;
    if (received <= 0) return loop_.stop();
    size_t at = 0;
    while (take(&at)) {
    }
    unread_.erase(0, at);
}

// Handles the message that begins at an offset, and moves the offset to the next one. Returns false if the
// message is not complete.
bool KernelLink::take(size_t *at) {
    wire::Head head;
    if (unread_.size() - *at < sizeof head) return false;
    memcpy(&head, unread_.data() + *at, sizeof head);
    if (head.length > wire::kMaxRequest) {
        warn("the kernel sent a message of {} bytes", head.length);
        loop_.stop();
        return false;
    }
    if (unread_.size() - *at - sizeof head < head.length) return false;
    perform(static_cast<Kind>(head.kind), std::string_view(unread_).substr(*at + sizeof head, head.length));
    *at += sizeof head + head.length;
    return true;
}

void KernelLink::perform(Kind kind, std::string_view payload) {
    wire::Reader reader(payload);
    const std::string_view field = reader.text();
    if (!reader.complete()) return warn("a message of kind {} is malformed", static_cast<uint32_t>(kind));
    switch (kind) {
        case Kind::Start:
            return requests_.start(std::string(field), nextFile());
        case Kind::Kept:
            return requests_.kept(std::string(field), nextFile());
        case Kind::Configure:
            return requests_.configure(field);
        default:
            warn("a message has the unknown kind {}", static_cast<uint32_t>(kind));
    }
}

wire::File KernelLink::nextFile() {
    if (files_.empty()) return {};
    wire::File file = std::move(files_.front());
    files_.pop_front();
    return file;
}

void KernelLink::queue(wire::Writer &message, wire::File file) {
    unsent_.push_back({std::string(message.bytes()), 0, std::move(file)});
}

// The results of the attachments of a configuration are sent before the answer that it is in force.
void KernelLink::inForce(uint64_t generation) {
    queueCarriers();
    wire::Writer answer = message(Kind::InForce);
    queue(answer.u64(generation));
}

void KernelLink::keep(const std::string &name, int file) {
    wire::Writer request = message(Kind::Keep);
    queue(request.text(name), wire::File(file < 0 ? -1 : fcntl(file, F_DUPFD_CLOEXEC, 0)));
}

void KernelLink::carrier(uint32_t port, bool up, const std::string &problem) {
    carriers_[port] = {up, problem};
}

void KernelLink::learnt(uint32_t number, MacAddress address, uint16_t vlan, uint32_t port, bool here) {
    const std::tuple key(number, vlan, address);
    if (learnt_.size() < kMostFacts || learnt_.contains(key)) learnt_[key] = {here, port};
}

void KernelLink::joined(uint32_t port, std::span<const uint8_t> group, bool joined) {
    const std::pair key(port, std::string(group.begin(), group.end()));
    if (joined_.size() < kMostFacts || joined_.contains(key)) joined_[key] = joined;
}

void KernelLink::told(uint32_t port, Topic topic, std::span<const uint8_t> state) {
    told_[{port, topic}] = std::string(state.begin(), state.end());
}

void KernelLink::queueCarriers() {
    for (const auto &[port, state] : carriers_) {
        wire::Writer fact = message(Kind::Carrier);
        queue(fact.u32(port).u8(state.first ? 1 : 0).text(state.second));
    }
    carriers_.clear();
}

void KernelLink::queueFacts() {
    queueCarriers();
    if (!learnt_.empty()) {
        const size_t count = std::min(learnt_.size(), kFactsPerMessage);
        wire::Writer facts = message(Kind::Learnt);
        facts.u32(static_cast<uint32_t>(count));
        auto each = learnt_.begin();
        for (size_t i = 0; i < count; ++i, each = learnt_.erase(each)) {
            const auto &[number, vlan, address] = each->first;
            facts.u32(number).u8(each->second.here ? 1 : 0).u64(address).u32(vlan).u32(each->second.port);
        }
        queue(facts);
    }
    if (!joined_.empty()) {
        const size_t count = std::min(joined_.size(), kFactsPerMessage);
        wire::Writer facts = message(Kind::Joined);
        facts.u32(static_cast<uint32_t>(count));
        auto each = joined_.begin();
        for (size_t i = 0; i < count; ++i, each = joined_.erase(each))
            facts.u32(each->first.first).u8(each->second ? 1 : 0).text(each->first.second);
        queue(facts);
    }
    if (!told_.empty()) {
        wire::Writer facts = message(Kind::Told);
        facts.u32(static_cast<uint32_t>(told_.size()));
        for (const auto &[place, state] : told_)
            facts.u32(place.first).u8(static_cast<uint8_t>(place.second)).text(state);
        told_.clear();
        queue(facts);
    }
}

bool KernelLink::sendFront() {
    Message &next = unsent_.front();
    const int file = next.file.get();
    const bool withFile = file >= 0 && next.sent == 0;
    const ssize_t sent =
        wire::sendWith(socket_.get(), next.bytes.data() + next.sent, next.bytes.size() - next.sent,
                       std::span<const int>(&file, withFile ? 1 : 0), MSG_DONTWAIT);
    if (sent < 0) return errno == EINTR;
    next.sent += static_cast<size_t>(sent);
    if (next.sent == next.bytes.size()) unsent_.pop_front();
    return true;
}

void KernelLink::flush() {
    for (;;) {
        if (unsent_.empty()) queueFacts();
        if (unsent_.empty() || !sendFront()) break;
    }
    const bool waits = !unsent_.empty();
    if (waits != waits_) loop_.change(socket_.get(), waits ? EPOLLIN | EPOLLOUT : EPOLLIN);
    waits_ = waits;
}

}  // namespace qvs::datapath
