// SPDX-License-Identifier: Apache-2.0
// The physical NICs, and which of them serves which uplink port.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "daemon/model/changes.h"
#include "daemon/model/inventory.h"
#include "daemon/model/status.h"
#include "daemon/model/store.h"

namespace qvs::kernel {

// Which NIC is to serve which port number (0: none), where that changes.
using Bindings = std::vector<std::pair<Nic *, uint32_t>>;

class Uplinks {
  public:
    Uplinks(Store &store, Inventory &inventory, Changes &changes)
        : store_(store), inventory_(inventory), changes_(changes) {}

    // What changes when these are the uplinks of the switch.
    Bindings plan(const Switch &sw, const std::vector<std::string> &uplinks) const;
    // What changes when the port of this name has that number, 0 for a port that goes.
    Bindings planWith(const Switch &sw, std::string_view portId, uint32_t number) const;
    // Within the transaction of the change, and once it is committed.
    void store(const Bindings &bindings);
    void apply(const Bindings &bindings);

    // Stores and applies a NIC's new attributes; name and binding stay.
    Status setNic(Nic &nic, const Nic &to);
    Status addNic(const Nic &nic);
    // Only on a host without bound uplinks.
    void clearNics();

  private:
    using FindNumber = std::function<uint32_t(std::string_view portId)>;  // 0: none

    Bindings plan(const Switch &sw, const std::vector<std::string> &uplinks, const FindNumber &find) const;
    void storeNic(const Nic &nic, const Nic &to, uint32_t port);

    Store &store_;
    Inventory &inventory_;
    Changes &changes_;
};

// The stored part of Port::returnStatus.
void storeStatusReturn(Store &store, const Port &port);
// The address of a NIC as it is stored.
std::string_view bytesOf(const std::array<uint8_t, 6> &mac);

}  // namespace qvs::kernel
