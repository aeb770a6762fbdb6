// SPDX-License-Identifier: Apache-2.0
// Memory for blobs, to be given back with free.
#pragma once

#include <sys/mman.h>

#include <cstdlib>

namespace qvs::mesh {

// Null when there is none. A large block is asked for in large pages: at first touch each page costs more
// than what is copied into it.
inline void *allocateBlock(size_t size) {
    constexpr size_t kLargePage = 2 << 20;
    if (size < 2 * kLargePage) return std::malloc(size);
    const size_t whole = (size + kLargePage - 1) / kLargePage * kLargePage;
    void *block = std::aligned_alloc(kLargePage, whole);
    if (block != nullptr) madvise(block, whole, MADV_HUGEPAGE);
    return block;
}

}  // namespace qvs::mesh
