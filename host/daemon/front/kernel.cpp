// SPDX-License-Identifier: Apache-2.0
// What the parts of the emulated kernel say of a change that could not be stored.
#include "daemon/front/kernel.h"

#include "daemon/model/log.h"

namespace qvs::kernel {

void logStoreFailure(const Store &store, const StoreError &error) {
    const bool wanted = store.limited() && error.full();
    logLine(wanted ? Level::Info : Level::Warning, "a change was not stored: {}", error.what());
}

}  // namespace qvs::kernel
