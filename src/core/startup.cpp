// What the loader runs: first the initialiser that sorts the dump's registry, then the first snapshot.
#include "qvs/dvs.h"
#include "qvs/hyp.h"

extern "C" void LibraryInit(void) {
    // A host without hypercore must still be able to load the library.
    static_cast<void>(DVSLoadConfig());
}

namespace {

// Functions of their own: GCC drops the priority of one that has been declared without it, as the exported
// two are in their header.
__attribute__((constructor(200))) void runFirst() {
    SharedObjectInit();
}
__attribute__((constructor(201))) void runSecond() {
    LibraryInit();
}

}  // namespace
