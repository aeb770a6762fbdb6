// SPDX-License-Identifier: Apache-2.0
// Creates and removes portsets, switches and ports.
#pragma once

#include <string_view>
#include <vector>

#include "daemon/model/changes.h"
#include "daemon/model/inventory.h"
#include "daemon/model/status.h"
#include "daemon/model/store.h"
#include "daemon/model/uplinks.h"

namespace qvs::kernel {

// Each change is validated first, then stored, and then applied to memory.
class DataPaths {
  public:
    DataPaths(Store &store, Inventory &inventory, Uplinks &uplinks, Changes &changes)
        : store_(store), inventory_(inventory), uplinks_(uplinks), changes_(changes) {}

    Status addPortset(std::string_view name, uint32_t capacity);
    Status removePortset(std::string_view name);
    Status setPortsetMtu(Portset &portset, uint32_t mtu);

    Status addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts, uint32_t version);
    Status associate(std::string_view id);
    Status dissociate(std::string_view id);
    Status removeSwitch(std::string_view id);

    Status addPort(std::string_view switchId, std::string_view portId,
                   const std::vector<PropertyView> &properties);
    Status removePort(std::string_view switchId, std::string_view portId);
    // Connects a client to a port. An empty name disconnects the client.
    Status setClient(Port &port, std::string_view name, bool link);

  private:
    void bind(Switch &sw, Portset &portset, bool associated);
    void moved(const Port &port, const Bindings &bindings);
    void removeStored(const Port &port);

    Store &store_;
    Inventory &inventory_;
    Uplinks &uplinks_;
    Changes &changes_;
};

}  // namespace qvs::kernel
