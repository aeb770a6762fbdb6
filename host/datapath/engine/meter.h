// SPDX-License-Identifier: Apache-2.0
// The flows of a port: its sampled frames become flows, and flows that end become records in messages.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>

#include "datapath/packet.h"
#include "datapath/shared.h"
#include "datapath/switch.h"

namespace qvs::policy {
struct IpfixT;  // of policy.fbs
}

namespace qvs::datapath {

// A frame at the port. Numbers of ports that are not known are 0.
struct Observed {
    Bytes frame;
    size_t type = 0;  // where the type of the packet stands
    uint16_t vlan = 0;
    bool out = false;  // the port received it from the switch
    uint32_t ingress = 0;
    uint32_t egress = 0;
};

class Meter {
  public:
    // Takes a message with so many records for the collectors. `templates` is the number of templates in it.
    using Sink = std::function<void(std::span<uint8_t> message, uint32_t records, uint32_t templates)>;

    // Takes a policy. Flows go on with the new timeouts. The policy must outlive the next call.
    void configure(const policy::IpfixT &policy, Slot *slot);
    const policy::IpfixT &policy() const { return *policy_; }
    Slot &slot() { return *slot_; }
    bool empty() const { return flows_.empty(); }
    void observe(const Observed &seen, Time now);
    // Reports the flows that end now, or all of them. `epoch` is the clock at time 0.
    void report(Time now, uint64_t epoch, bool all, const Sink &sink);

  private:
    // Version, protocol, type of service, direction, ports, VLAN, addresses.
    using Key = std::array<uint8_t, 42>;
    struct Flow {
        Time first = 0;
        Time last = 0;
        uint64_t packets = 0;
        uint64_t bytes = 0;
        uint32_t ingress = 0;
        uint32_t egress = 0;
        MacAddress source = 0;
        MacAddress destination = 0;
        uint8_t tcpFlags = 0;
    };
    [[nodiscard]] bool readKey(const Observed &seen, Key *key, size_t *bytes, uint8_t *tcpFlags) const;
    [[nodiscard]] uint8_t endOf(const Flow &flow, Time now, bool all) const;
    class Reports;

    const policy::IpfixT *policy_ = nullptr;
    Slot *slot_ = nullptr;
    std::map<Key, Flow> flows_;
    uint64_t seen_ = 0;
    Time templatesDue_ = 0;
};

}  // namespace qvs::datapath
