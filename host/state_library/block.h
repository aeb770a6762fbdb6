// SPDX-License-Identifier: Apache-2.0
// Allocates memory for blobs.
#pragma once

#include <sys/mman.h>

#include <cstdlib>

namespace qvs::mesh {

// Returns a block to be released with free, or null. A large block uses large pages, because the first access
// to a page takes longer than copying its contents.
inline void *allocateBlock(size_t size) {
    constexpr size_t kLargePage = 2 << 20;
    // The smallest block for which preparing a whole large page takes less time than its small ones.
    constexpr size_t kLargeBlock = 512 << 10;
    if (size < kLargeBlock) return std::malloc(size);
    const size_t whole = (size + kLargePage - 1) / kLargePage * kLargePage;
    void *block = std::aligned_alloc(kLargePage, whole);
    if (block != nullptr) madvise(block, whole, MADV_HUGEPAGE);
    return block;
}

}  // namespace qvs::mesh
