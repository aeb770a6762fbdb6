// SPDX-License-Identifier: Apache-2.0
// The emulated kernel's model: the parts that know its switches, ports, portsets, NICs and their properties.
#pragma once

#include <cstdint>
#include <vector>

#include "daemon/model/changes.h"
#include "daemon/model/counters.h"
#include "daemon/model/data_paths.h"
#include "daemon/model/device_tables.h"
#include "daemon/model/inventory.h"
#include "daemon/model/properties.h"
#include "daemon/model/store.h"
#include "daemon/model/uplinks.h"

namespace qvs::kernel {

// Holds the parts together, in the order in which they depend on each other. A change is validated, stored,
// and only then applied to memory.
struct Model {
    // The tables that devices keep are read with everything else.
    Model(Store &store, std::vector<const AnyTable *> deviceTables);
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

    // Everything anew from the store, for start-up and after a rollback of more than one change.
    void load();
    // An empty host with its default NICs, as new.
    void reset();
    // Keeps the seed of the counters, and begins them anew.
    void seedCounters(uint32_t seed);

    Store &store;
    Inventory inventory;
    Changes changes{inventory};
    Uplinks uplinks{store, inventory, changes};
    DataPaths dataPaths{store, inventory, uplinks, changes};
    Properties properties{store, inventory, uplinks, changes};
    DeviceTables tables;
    Counters counters;
};

// Reads switches, ports, portsets and NICs into an empty inventory.
void loadInventory(Store &store, Inventory *inventory);
// Refuses a database whose rows do not belong together.
[[noreturn]] void refuseDamaged(const Store &store, const std::string &what);

}  // namespace qvs::kernel
