// SPDX-License-Identifier: Apache-2.0
// Changes physical NICs and binds them to uplink ports.
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

// The NICs to be bound to other ports, with the numbers of these ports (0: none).
using Bindings = std::vector<std::pair<Nic *, uint32_t>>;

class Uplinks {
  public:
    Uplinks(Store &store, Inventory &inventory, Changes &changes)
        : store_(store), inventory_(inventory), changes_(changes) {}

    // Returns the bindings that change if these are the uplinks of the switch.
    Bindings plan(const Switch &sw, const std::vector<std::string> &uplinks) const;
    // Returns the bindings that change if a port with this identifier is added, or removed (number 0).
    Bindings planWith(const Switch &sw, std::string_view portId, uint32_t number) const;
    // `store` writes the bindings in the transaction of the change. `apply` changes memory after the commit.
    void store(const Bindings &bindings);
    void apply(const Bindings &bindings);

    // Changes the attributes of a NIC, except its name and its binding.
    Status setNic(Nic &nic, const Nic &to);
    Status addNic(const Nic &nic);
    // Change the carrier of the attachment of a NIC or of a client. Only memory changes.
    void setCarrier(Nic &nic, bool carrier);
    void setCarrier(Port &port, bool carrier);
    // Removes all NICs. The host must not have bound uplinks.
    void clearNics();

  private:
    using FindNumber = std::function<uint32_t(std::string_view portId)>;  // 0: none

    Bindings plan(const Switch &sw, const std::vector<std::string> &uplinks, const FindNumber &find) const;
    void storeNic(const Nic &nic, const Nic &to, uint32_t port);
    void flipped(Port &port);

    Store &store_;
    Inventory &inventory_;
    Changes &changes_;
};

// Does in the store what Port::returnStatus does in memory.
void storeStatusReturn(Store &store, const Port &port);
// Returns the address of a NIC in its stored form.
std::string_view bytesOf(const std::array<uint8_t, 6> &mac);

}  // namespace qvs::kernel
