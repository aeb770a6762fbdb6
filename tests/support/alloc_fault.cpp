// SPDX-License-Identifier: Apache-2.0
// The program's own malloc, calloc and realloc: the C library's, but for the call that is to fail.
#include "support/alloc_fault.h"

#include <link.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace qvs::test {
namespace {

// Where the library's code lies.
uintptr_t textBegin = 0;
uintptr_t textEnd = 0;

std::atomic<bool> armed = false;
std::atomic<int> countdown = 0;
std::atomic<int> failing = 1;  // so many of them; 0 for all
std::atomic<int> calls = 0;
std::atomic<long> blocks = 0;  // that the program has allocated and not freed

int findLibrary(dl_phdr_info *info, size_t, void *library) {
    const char *slash = std::strrchr(info->dlpi_name, '/');
    const auto *name = static_cast<const char *>(library);
    if (slash == nullptr || std::strncmp(slash + 1, name, std::strlen(name)) != 0) return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto &segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
        textBegin = info->dlpi_addr + segment.p_vaddr;
        textEnd = textBegin + segment.p_memsz;
    }
    return 1;
}

// Whether the allocation that returns to `caller` is to fail.
[[maybe_unused]] bool allocationFails(const void *caller) {
    if (!armed.load(std::memory_order_relaxed)) return false;
    const auto address = reinterpret_cast<uintptr_t>(caller);
    if (address < textBegin || address >= textEnd) return false;
    ++calls;
    const int left = --countdown;
    if (left > 0 || (failing != 0 && left <= -failing)) return false;
    errno = ENOMEM;
    return true;
}

[[maybe_unused]] void *counted(void *block) {
    if (block != nullptr) ++blocks;
    return block;
}

}  // namespace

AllocFault::AllocFault(int nth, int count, const char *library) {
    textBegin = textEnd = 0;
    dl_iterate_phdr(findLibrary, const_cast<char *>(library));
    EXPECT_NE(textEnd, 0u) << library << " is not loaded";
    calls = 0;
    countdown = nth == 0 ? 1 << 30 : nth;
    failing = count;
    armed = true;
}

AllocFault::~AllocFault() {
    armed = false;
}

int AllocFault::seen() const {
    return calls;
}

long liveBlocks() {
    return blocks;
}

}  // namespace qvs::test

#ifndef QVS_TEST_SANITIZED

using qvs::test::allocationFails;
using qvs::test::counted;

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

void __libc_free(void *block);

__attribute__((visibility("default"))) void *malloc(size_t size) noexcept {
    return counted(allocationFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size));
}

__attribute__((visibility("default"))) void *calloc(size_t count, size_t size) noexcept {
    return counted(allocationFails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size));
}

__attribute__((visibility("default"))) void *realloc(void *block, size_t size) noexcept {
    if (allocationFails(__builtin_return_address(0))) return nullptr;
    void *moved = __libc_realloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

__attribute__((visibility("default"))) void free(void *block) noexcept {
    if (block != nullptr) --qvs::test::blocks;
    __libc_free(block);
}

}  // extern "C"

#endif
