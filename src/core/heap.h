// SPDX-License-Identifier: Apache-2.0
// Zeroed memory of the C allocator with an owner; null if memory runs out.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

namespace qvs {

struct FreeDeleter {
    void operator()(void *pointer) const { std::free(pointer); }
};
using HeapBytes = std::unique_ptr<uint8_t[], FreeDeleter>;

// Returns zeroed bytes, or null. The formats limit sizes to 32 bits, so a size that exceeds 32 bits cannot be
// allocated.
inline HeapBytes allocateZeroed(uint64_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) return nullptr;
    return HeapBytes(static_cast<uint8_t *>(std::calloc(1, static_cast<size_t>(size))));
}

}  // namespace qvs
