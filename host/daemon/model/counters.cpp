// SPDX-License-Identifier: Apache-2.0
// Generates the counters.
#include "daemon/model/counters.h"

namespace qvs::kernel {

namespace {

// Returns the next number of the SplitMix64 generator.
uint64_t nextRandom(uint64_t *state) {
    uint64_t z = *state += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

uint64_t stepOf(uint64_t random) {
    constexpr uint64_t kMostPerLook = 1000;
    return 1 + random % kMostPerLook;
}

}  // namespace

uint64_t CounterRow::nextStep() {
    return stepOf(nextRandom(&state_));
}

uint64_t CounterRow::next() {
    const uint64_t random = nextRandom(&state_);
    const uint64_t step = stepOf(random);
    return look_ * step + (random >> 32) % step;
}

void Counters::seed(uint64_t seed) {
    seed_ = seed;
    looks_.clear();
}

CounterRow Counters::read(std::string_view object) {
    uint64_t state = seed_;
    for (const char c : object) {
        state ^= static_cast<uint8_t>(c);
        state = nextRandom(&state);
    }
    auto found = looks_.find(object);
    if (found == looks_.end()) found = looks_.emplace(object, 0).first;
    return {state, ++found->second};
}

}  // namespace qvs::kernel
