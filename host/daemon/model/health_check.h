// SPDX-License-Identifier: Apache-2.0
// The results of the check of VLANs and MTU on the ports of a switch.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "daemon/model/inventory.h"

namespace qvs::kernel {

constexpr char kCheckDeployKey[] = "com.quillon.common.vlanmtucheck.deploy";
constexpr char kVlanResultKey[] = "com.quillon.common.port.volatile.vlanchkresult";
constexpr char kMtuResultKey[] = "com.quillon.common.port.volatile.mtuchkresult";

// VLANs one behind the other, both included.
struct VlanSpan {
    uint16_t first;
    uint16_t last;
};

// Returns the VLANs that the VLAN policy of a port names.
std::vector<VlanSpan> vlansOf(std::string_view policy);
bool isDeployed(std::string_view deployment);

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
    bool waits_ = false;                   // for the data path
    std::vector<std::string_view> found_;  // by the data path, one for each uplink with a link
    size_t links_ = 0;                     // uplinks with a link
    uint32_t mtu_ = 0;                     // the smallest MTU of these uplinks
};

// Returns the result that has this key. Returns nothing for any other key.
std::optional<std::string> checkResult(const Inventory &inventory, const Port &port, std::string_view key);

}  // namespace qvs::kernel
