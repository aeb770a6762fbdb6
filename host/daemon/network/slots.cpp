// SPDX-License-Identifier: Apache-2.0
// Makes the shared memory and gives out its slots.
#include "daemon/network/slots.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fmt/format.h>

namespace qvs::kernel {

namespace {

constexpr size_t kSize = sizeof(datapath::Slot) * datapath::kSlots;

}  // namespace

datapath::Slot *Facts::slotOf(std::string_view object) const {
    const auto found = slots.find(object);
    return memory == nullptr || found == slots.end() ? nullptr : memory + found->second;
}

Slots::Slots(Facts &facts) : facts_(facts), file_(memfd_create("qvs counters", MFD_CLOEXEC)) {
    void *memory = MAP_FAILED;
    if (file_ >= 0 && ftruncate(file_, kSize) == 0)
        memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
    if (memory == MAP_FAILED) {
        const std::string reason = std::strerror(errno);
        if (file_ >= 0) close(file_);
        throw std::runtime_error(fmt::format("cannot create the memory of the counters: {}", reason));
    }
    facts_.memory = static_cast<datapath::Slot *>(memory);
}

Slots::~Slots() {
    munmap(facts_.memory, kSize);
    facts_ = {};
    close(file_);
}

uint32_t Slots::take() {
    if (!free_.empty()) {
        const uint32_t slot = free_.back();
        free_.pop_back();
        for (auto &value : facts_.memory[slot].values)
            value.store(0, std::memory_order_relaxed);
        return slot;
    }
    return next_ < datapath::kSlots ? next_++ : 0;
}

uint32_t Slots::of(const std::string &object) {
    auto found = facts_.slots.find(object);
    if (found == facts_.slots.end()) {
        const uint32_t slot = take();
        if (slot == 0) return 0;
        found = facts_.slots.emplace(object, slot).first;
    }
    used_.insert(found->second);
    return found->second;
}

void Slots::end(uint64_t generation) {
    for (auto slot = facts_.slots.begin(); slot != facts_.slots.end();) {
        if (used_.contains(slot->second)) {
            ++slot;
            continue;
        }
        released_.emplace(generation, slot->second);
        slot = facts_.slots.erase(slot);
    }
}

void Slots::inForce(uint64_t generation) {
    const auto end = released_.upper_bound(generation);
    for (auto slot = released_.begin(); slot != end; ++slot)
        free_.push_back(slot->second);
    released_.erase(released_.begin(), end);
}

}  // namespace qvs::kernel
