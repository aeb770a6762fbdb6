// SPDX-License-Identifier: Apache-2.0
// The buffers into which endpoints receive frames. The data path has one thread, and no endpoint keeps a
// frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qvs::datapath {

// How many frames an endpoint passes on in one turn of the loop.
constexpr size_t kBatch = 32;
// The longest frame: 64 KiB of payload with headers and tags.
constexpr size_t kLongestFrame = 65536 + 128;
constexpr size_t kBatchBuffer = kLongestFrame + 64;

inline uint8_t *batchBuffer(size_t index) {
    // Not initialised: memory is used where frames have been.
    static const std::unique_ptr<uint8_t[]> memory(new uint8_t[kBatch * kBatchBuffer]);
    return memory.get() + index * kBatchBuffer;
}

}  // namespace qvs::datapath
