// SPDX-License-Identifier: Apache-2.0
// Finds the functions of the C library that the interposer replaces.
#include "preload/next.h"

#include <dlfcn.h>

#include <atomic>

namespace qvs::preload {
namespace {

Next found;
std::atomic<bool> searched;

// Runs when the interposer is loaded, or at the first call from a library that is initialised earlier.
// Threads that run it at the same time find the same functions.
__attribute__((constructor)) void findAll() {
#define QVS_FIND(member, symbol, ...) \
    found.member = reinterpret_cast<Function<__VA_ARGS__>>(dlsym(RTLD_NEXT, symbol));
    QVS_REPLACED_FUNCTIONS(QVS_FIND)
#undef QVS_FIND
    searched.store(true, std::memory_order_release);
}

}  // namespace

const Next &next() {
    if (!searched.load(std::memory_order_acquire)) findAll();
    return found;
}

}  // namespace qvs::preload
