// SPDX-License-Identifier: Apache-2.0
// The parts of the emulated kernel. Each part depends only on those above it.
#pragma once

#include <string>

#include "daemon/devices/device.h"
#include "daemon/front/fault.h"
#include "daemon/front/trace.h"
#include "daemon/model/model.h"
#include "daemon/model/snapshot.h"
#include "daemon/model/store.h"

namespace qvs::kernel {

struct Kernel {
    explicit Kernel(const std::string &database) : store(database) {}

    Store store;
    Model model{store, deviceTables()};
    Snapshot snapshot{model};
    Trace trace;
    Faults faults;
};

// Logs a change that could not be stored. It is a warning unless the user limited the size of the database
// and the limit was reached.
void logStoreFailure(const Store &store, const StoreError &error);

}  // namespace qvs::kernel
