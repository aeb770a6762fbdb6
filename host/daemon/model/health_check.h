// SPDX-License-Identifier: Apache-2.0
// What the check of VLANs and MTU finds on the ports of a switch, while it is deployed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "daemon/model/inventory.h"

namespace qvs::kernel {

constexpr char kCheckDeployKey[] = "com.quillon.common.vlanmtucheck.deploy";
constexpr char kVlanResultKey[] = "com.quillon.common.port.volatile.vlanchkresult";
constexpr char kMtuResultKey[] = "com.quillon.common.port.volatile.mtuchkresult";

// One look at the switch and its uplinks; to be asked about as many ports as wanted, before the next change.
class HealthCheck {
  public:
    HealthCheck(const Inventory &inventory, const Switch &sw);

    // The results of a port, nothing for a port that has none: its VLAN policy names no VLAN, or the check is
    // not deployed.
    struct Results {
        std::string vlan;
        std::string mtu;
    };
    std::optional<Results> resultsOf(const Port &port) const;

  private:
    bool deployed_ = false;
    uint32_t mtu_ = 0;  // the smallest of the uplinks with a link; 0 without one
};

// The result with this key as the kernel has it; nothing for any other key.
std::optional<std::string> checkResult(const Inventory &inventory, const Port &port, std::string_view key);

}  // namespace qvs::kernel
