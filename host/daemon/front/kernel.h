// SPDX-License-Identifier: Apache-2.0
// Everything the emulated kernel holds, in the order in which it depends on each other.
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

// Puts a change that could not be stored into the log: a full disk under a cap was asked for, all else is
// trouble.
void logStoreFailure(const Store &store, const StoreError &error);

}  // namespace qvs::kernel
