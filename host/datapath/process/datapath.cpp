// SPDX-License-Identifier: Apache-2.0
// Moves frames, carriers and guests between ports and switches.
#include "datapath/process/datapath.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "datapath/process/log.h"

namespace qvs::datapath {

namespace {

constexpr size_t kMemory = size_t{kSlots} * sizeof(Slot);

Slot *mapMemory(int file) {
    const int flags = file < 0 ? MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE : MAP_SHARED;
    void *memory = mmap(nullptr, kMemory, PROT_READ | PROT_WRITE, flags, file, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<Slot *>(memory);
}

bool hasWork(const Frame &frame) {
    return (frame.offload.flags & 1) != 0 || frame.offload.segments != 0;
}

}  // namespace

DataPath::DataPath(Loop &loop, KernelLink &kernel, Namespaces &namespaces)
    : loop_(loop), kernel_(kernel), namespaces_(namespaces), slots_(mapMemory(-1)) {
    if (slots_ == nullptr) throw std::bad_alloc();
}

DataPath::~DataPath() {
    munmap(slots_, kMemory);
}

bool DataPath::start(const std::string &directory, const wire::File &memory) {
    struct stat status {};
    // With a shorter memory, counting would kill the process with SIGBUS.
    const bool whole =
        memory && fstat(memory.get(), &status) == 0 && static_cast<size_t>(status.st_size) >= kMemory;
    Slot *const slots = whole ? mapMemory(memory.get()) : nullptr;
    if (slots == nullptr) {
        warn("the memory of the counters cannot be used: {}",
             whole ? strerror(errno) : "it is absent or shorter than its slots");
        return false;
    }
    munmap(slots_, kMemory);
    slots_ = slots;
    directory_ = directory;
    return true;
}

void DataPath::endOfTurn() {
    if (loop_.now() >= tickAt_) {
        tickAt_ = loop_.now() + 1000;
        for (auto &[number, owner] : switches_)
            tickAt_ = std::min(tickAt_, owner.forwarding->tick(loop_.now()));
        loop_.cancel(tickTimer_);
        if (!switches_.empty()) tickTimer_ = loop_.at(tickAt_, [] {});
    }
    if (!unanswered_.empty() && (loop_.now() >= answerBy_ || attachmentsSettled())) {
        for (const uint64_t generation : unanswered_)
            kernel_.inForce(generation);
        unanswered_.clear();
    }
    kernel_.flush();
}

bool DataPath::attachmentsSettled() const {
    return std::all_of(ports_.begin(), ports_.end(), [](const auto &port) {
        return !port.second.endpoint || port.second.endpoint->settled();
    });
}

Switch *DataPath::switchOf(const Attached &attached) {
    const auto found = switches_.find(attached.owner);
    return found == switches_.end() ? nullptr : found->second.forwarding.get();
}

// Passes to a switch what is known about a port that may be new to it.
void DataPath::tellSwitch(uint32_t port, const Attached &attached) {
    Switch *const forwarding = switchOf(attached);
    if (forwarding == nullptr) return;
    if (attached.carrier) forwarding->setCarrier(port, *attached.carrier, loop_.now());
    forwarding->setAddress(port, attached.address, loop_.now());
    const bool hasClients = !attached.guests[static_cast<size_t>(Role::Client)].empty();
    const bool asks = attached.endpoint ? attached.promiscuous : hasClients;
    forwarding->setPromiscuous(port, asks, loop_.now());
    tickAt_ = 0;
}

void DataPath::changeCarrier(uint32_t port, bool up, const std::string &problem) {
    Attached &attached = ports_[port];
    if (attached.carrier == up && attached.problem == problem) return;
    attached.carrier = up;
    attached.problem = problem;
    kernel_.carrier(port, up, problem);
    tellSwitch(port, attached);
}

void DataPath::receive(uint32_t port, const Frame &frame) {
    const auto found = ports_.find(port);
    if (found == ports_.end()) return;
    Attached &attached = found->second;
    for (Guest *guest : attached.guests[static_cast<size_t>(Role::WatchIn)]) {
        const auto copy = [guest](std::span<const uint8_t> bytes) { guest->deliver(bytes); };
        if (!complete(frame, attached.mtu, copy)) guest->deliver(frame.bytes);
    }
    if (Switch *forwarding = switchOf(attached)) forwarding->receive(port, frame, loop_.now());
}

// Guests do not decide whether a frame arrived, unless they are the only ones at the port.
bool DataPath::send(uint32_t port, const Frame &frame) {
    const auto found = ports_.find(port);
    if (found == ports_.end()) return true;
    Attached &attached = found->second;
    Endpoint *const endpoint = attached.endpoint.get();
    const bool asItIs = !hasWork(frame) || (endpoint != nullptr && endpoint->takesOffloads() &&
                                            !attached.attachment->noOffloads);
    const auto &clients = attached.guests[static_cast<size_t>(Role::Client)];
    const auto &watchers = attached.guests[static_cast<size_t>(Role::WatchOut)];
    bool arrived = true;
    if (endpoint != nullptr && asItIs) arrived = endpoint->send(frame);
    if (clients.empty() && watchers.empty() && (endpoint == nullptr || asItIs)) return arrived;

    const auto give = [&](std::span<const uint8_t> bytes) {
        if (endpoint != nullptr && !asItIs) arrived = endpoint->send({bytes, {}}) && arrived;
        bool taken = clients.empty();
        for (Guest *guest : clients)
            taken = guest->deliver(bytes) || taken;
        if (endpoint == nullptr) arrived = taken && arrived;
        for (Guest *guest : watchers)
            guest->deliver(bytes);
    };
    if (!hasWork(frame))
        give(frame.bytes);
    else if (!complete(frame, attached.mtu, give))
        return false;
    return arrived;
}

uint32_t DataPath::findPort(const std::string &switchName, const std::string &port) const {
    uint32_t result = 0;
    std::string first;
    for (const auto &[number, owner] : switches_) {
        if (!switchName.empty() && owner.policy->name != switchName) continue;
        for (const uint32_t each : owner.ports) {
            const Attached &attached = ports_.at(each);
            if (attached.id != port && (attached.client.empty() || attached.client != port)) continue;
            if (result != 0)
                throw AttachmentError(
                    fmt::format("port {} is on the switches {} and {}; name one with --switch", port, first,
                                owner.policy->name));
            result = each;
            first = owner.policy->name;
        }
    }
    if (result != 0) return result;
    if (switchName.empty()) throw AttachmentError(fmt::format("no switch has a port or client {}", port));
    throw AttachmentError(fmt::format("switch {} has no port or client {}", switchName, port));
}

void DataPath::join(uint32_t port, Guest &guest, Role role) {
    ports_[port].guests[static_cast<size_t>(role)].push_back(&guest);
    countGuests(port);
}

void DataPath::leave(uint32_t port, Guest &guest) {
    const auto found = ports_.find(port);
    if (found == ports_.end()) return;
    for (auto &guests : found->second.guests)
        std::erase(guests, &guest);
    countGuests(port);
}

// Where sessions are the attachment, the carrier is there while one is.
void DataPath::countGuests(uint32_t port) {
    const Attached &attached = ports_[port];
    tellSwitch(port, attached);
    if (!attached.attachment || attached.attachment->kind != policy::AttachmentKind::Session) return;
    changeCarrier(port, !attached.guests[static_cast<size_t>(Role::Client)].empty(), "");
}

}  // namespace qvs::datapath
