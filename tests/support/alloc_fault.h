// SPDX-License-Identifier: Apache-2.0
// Makes an allocation of libqvs fail: only calls of malloc, calloc and realloc that come from libqvs's own
// code count, so that the C library, GoogleTest and the state library go on undisturbed.
#pragma once

#include <gtest/gtest.h>

namespace qvs::test {

class AllocFault {
  public:
    // The nth allocation from now on fails, the first being 1, and `count` - 1 more (0: all that follow). An
    // nth of 0 only counts.
    explicit AllocFault(int nth, int count = 1, const char *library = "libqvs.so");
    AllocFault(const AllocFault &) = delete;
    AllocFault &operator=(const AllocFault &) = delete;
    ~AllocFault();

    // How many allocations there were so far.
    int seen() const;
};

// Blocks that the program, with its libraries, has allocated and not freed; 0 where allocations are the
// sanitizer's.
long liveBlocks();

// Allocations belong to the sanitizer where there is one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QVS_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QVS_TEST_SANITIZED 1
#endif
#endif
#ifdef QVS_TEST_SANITIZED
#define SKIP_WITHOUT_ALLOC_FAULT() GTEST_SKIP() << "allocations belong to the sanitizer"
#else
#define SKIP_WITHOUT_ALLOC_FAULT() static_cast<void>(0)
#endif

}  // namespace qvs::test
