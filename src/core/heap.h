// Memory of the C allocator inside the library: zeroed, owned, and null when there is none.
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

// Zeroed bytes, or null: sizes are 32-bit rules of a format, and one that would wrap cannot be allocated.
inline HeapBytes allocateZeroed(uint64_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) return nullptr;
    return HeapBytes(static_cast<uint8_t *>(std::calloc(1, static_cast<size_t>(size))));
}

}  // namespace qvs
