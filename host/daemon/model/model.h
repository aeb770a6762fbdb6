// SPDX-License-Identifier: Apache-2.0
// The model of the emulated kernel: all its objects, and the parts that change them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "daemon/model/changes.h"
#include "daemon/model/counters.h"
#include "daemon/model/data_paths.h"
#include "daemon/model/device_tables.h"
#include "daemon/model/facts.h"
#include "daemon/model/inventory.h"
#include "daemon/model/properties.h"
#include "daemon/model/store.h"
#include "daemon/model/uplinks.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

// The parts of the model. Each part depends only on those above it.
struct Model : private wire::Noncopyable {
    // Reads the model and the tables of the devices from the store.
    Model(Store &store, std::vector<const AnyTable *> deviceTables);

    // Reads everything from the store again. Required after a rollback.
    void load();
    // Makes the host empty, with the default NICs.
    void reset();
    // Stores the seed of the counters and restarts them.
    void seedCounters(uint32_t seed);

    Store &store;
    std::string identity;  // differs between hosts, and not between the starts of one
    Inventory inventory;
    Changes changes{inventory};
    Uplinks uplinks{store, inventory, changes};
    DataPaths dataPaths{store, inventory, uplinks, changes};
    Properties properties{store, inventory, uplinks, changes};
    DeviceTables tables;
    Counters counters;
    Facts facts;
};

// Reads switches, ports, portsets and NICs from the store into an empty inventory.
void loadInventory(Store &store, Inventory *inventory);
// Throws an error about rows that contradict each other.
[[noreturn]] void refuseDamaged(const Store &store, const std::string &what);

}  // namespace qvs::kernel
