// What the loader runs second: the first snapshot. (SharedObjectInit, beside the registry it sorts, is
// first.)
#include "core/init_order.h"
#include "qvs/dvs.h"

extern "C" __attribute__((constructor(qvs::kInitLibrary))) void LibraryInit(void) {
    // A host without hypercore must still be able to load the library.
    static_cast<void>(DVSLoadConfig());
}
