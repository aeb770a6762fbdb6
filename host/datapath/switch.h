// SPDX-License-Identifier: Apache-2.0
// One switch of the data path. It decides for each frame which ports receive it, and in which form. It uses
// neither sockets nor a clock, so that tests can supply frames and times.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "datapath/frame.h"
#include "datapath/protocol.h"
#include "datapath/shared.h"

namespace qvs::policy {
struct PortT;  // of policy.fbs
struct SwitchT;
struct IpfixT;
struct CollectorT;
}  // namespace qvs::policy

namespace qvs::datapath {

// Milliseconds of a clock that never goes back.
using Time = uint64_t;

// The functions that a switch calls. They must not call the same switch.
struct Surroundings {
    // Sends a frame out of a port. Returns false if the receiver does not read, and the frame is dropped.
    std::function<bool(uint32_t port, const Frame &frame)> send;
    // Reports that an address was learnt behind a port or moved to it (true), or was removed (false).
    std::function<void(MacAddress address, uint16_t vlan, uint32_t port, bool here)> learnt;
    // Reports that a port joined a group (true) or left it (false).
    std::function<void(uint32_t port, std::span<const uint8_t> group, bool joined)> joined;
    Slot *slots = nullptr;
    // Tells what a control protocol found at a port.
    std::function<void(uint32_t port, Topic topic, std::span<const uint8_t> state)> told = nullptr;
    // Sends a message of flow records to a collector. Fills in its sequence number. Returns false if it was
    // not sent.
    std::function<bool(const policy::IpfixT &policy, const policy::CollectorT &collector,
                       std::span<uint8_t> message, uint32_t records)>
        report = nullptr;
    // Returns what the clock showed at time 0, in milliseconds since 1970.
    std::function<uint64_t()> epoch = nullptr;
};

class Switch {
  public:
    explicit Switch(Surroundings surroundings);
    ~Switch();

    // Replaces the policies. What was learnt stays, as far as the new policies allow it.
    void configure(std::unique_ptr<policy::SwitchT> policy, Time now);
    // Replaces the policies of one port that exists. Returns false, and changes nothing, if the change
    // touches more than the port; the switch is to be configured as a whole then.
    [[nodiscard]] bool changePort(std::unique_ptr<policy::PortT> policy, Time now);
    // A frame arrives from a port.
    void receive(uint32_t port, const Frame &frame, Time now);
    // The link of an attachment changed. A port has carrier until the first call says otherwise.
    void setCarrier(uint32_t port, bool up, Time now);
    // The adapter of a client changed its address. 0 restores the one that it was given.
    void setAddress(uint32_t port, MacAddress address, Time now);
    // An attachment asks for all frames. It gets them if the policy of the port permits promiscuous mode.
    void setPromiscuous(uint32_t port, bool asked, Time now);
    // Forgets an address that was learnt behind a port.
    void forget(uint32_t port, MacAddress address, uint16_t vlan, Time now);
    // Expires addresses and memberships, and repeats reverse ARP. Returns the time of the next call, at most
    // a second from now. Other functions can make an earlier call necessary: call it at once after configure,
    // setCarrier and setAddress.
    Time tick(Time now);

  private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace qvs::datapath
