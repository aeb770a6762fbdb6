// SPDX-License-Identifier: Apache-2.0
// The initialisers that the loader runs: the first sorts the registry of the dump, the second loads the first
// snapshot.
#include "qvs/dvs.h"
#include "qvs/hyp.h"

extern "C" void LibraryInit(void) {
    // The library must load even on a machine without a hypercore.
    static_cast<void>(DVSLoadConfig());
}

namespace {

// Separate functions, because GCC ignores the priority of a function that was declared without it, as the
// exported functions are in their header.
__attribute__((constructor(200))) void runFirst() {
    SharedObjectInit();
}
__attribute__((constructor(201))) void runSecond() {
    LibraryInit();
}

}  // namespace
