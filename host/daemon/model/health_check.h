// SPDX-License-Identifier: Apache-2.0
// The results of the check of VLANs and MTU on the ports of a switch.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "daemon/model/inventory.h"

namespace qvs::kernel {

constexpr char kCheckDeployKey[] = "com.quillon.common.vlanmtucheck.deploy";
constexpr char kVlanResultKey[] = "com.quillon.common.port.volatile.vlanchkresult";
constexpr char kMtuResultKey[] = "com.quillon.common.port.volatile.mtuchkresult";

// Checks the ports of one switch. An object is valid until the next change of the model.
class HealthCheck {
  public:
    HealthCheck(const Inventory &inventory, const Switch &sw);

    // Returns the results of a port. A port has no results if its VLAN policy names no VLAN or the check is
    // not deployed.
    struct Results {
        std::string vlan;
        std::string mtu;
    };
    std::optional<Results> resultsOf(const Port &port) const;

  private:
    bool deployed_ = false;
    uint32_t mtu_ = 0;  // the smallest MTU of the uplinks with a link; 0 if there is none
};

// Returns the result that has this key. Returns nothing for any other key.
std::optional<std::string> checkResult(const Inventory &inventory, const Port &port, std::string_view key);

}  // namespace qvs::kernel
