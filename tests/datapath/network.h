// SPDX-License-Identifier: Apache-2.0
// A switch with the frames that it sends and the counters that it changes, and a small language for what
// happens.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "datapath/switch.h"
#include "policy_generated.h"

namespace qvs::test {

using Bytes = std::vector<uint8_t>;

struct Sent {
    uint32_t port = 0;
    Bytes bytes;
    datapath::Offload offload{};
    auto operator<=>(const Sent &other) const {
        return port != other.port ? port <=> other.port : bytes <=> other.bytes;
    }
    bool operator==(const Sent &other) const { return port == other.port && bytes == other.bytes; }
};

// The policies of a switch from JSON, in which MAC addresses are texts.
std::unique_ptr<policy::SwitchT> policyOf(const std::string &json);

// Bytes from hexadecimal digits, and back.
Bytes bytesOf(const std::string &hex);
std::string hexOf(std::span<const uint8_t> bytes);

// A frame from text: "SOURCE>DESTINATION [PRIORITY.VLAN].. (LENGTH)". A name is a letter or digit, or "*" for
// broadcast, "m" for the IPv4 group 239.1.1.1, "n" for 224.0.0.9 and "s" for 01:80:c2:00:00:03. A frame to m
// or n is an IP packet. LENGTH is that of the payload.
Bytes frameOf(const std::string &text);
uint64_t macOfName(char name);

class Network {
  public:
    Network();
    void configure(std::unique_ptr<policy::SwitchT> policy, uint64_t now = 0) {
        switch_.configure(std::move(policy), now);
    }
    // The slot of a port has its number.
    uint64_t value(uint32_t slot, uint32_t value) const { return slots_[slot].values[value].load(); }
    std::vector<Sent> receive(uint32_t port, const Bytes &bytes, uint64_t now,
                              datapath::Offload offload = {});
    std::vector<Sent> takeSent() { return std::move(sent_); }
    // Messages of flow records. A collector of a policy with the name "refused" takes none.
    std::vector<Bytes> takeReports() { return std::move(reports_); }
    std::string takeEvents() { return std::move(events_); }
    datapath::Switch &engine() { return switch_; }
    void setBusy(uint32_t port) { busy_ = port; }

    // Carries out lines, and says on which line something else happened than it tells. The words of a line:
    //   PORT: FRAME -> PORT[TAG].. ...   a frame arrives, and leaves by these ports with these tags
    //   up PORT, down PORT               the carrier of a port changes
    //   forget PORT NAME                 a client removes an address from the table, in VLAN 0
    //   mac PORT NAME                    the adapter of a port takes an address; "-" for the given one
    //   at MS -> ...                     the time; what is sent then
    //   count SLOT NAME VALUE ..         counters
    //   busy PORT, asks PORT             a port does not read any more; an attachment asks for all frames
    //   events TEXT                      addresses and groups that were told of since the last time
    std::string run(const std::string &script);

  private:
    std::string check(const std::string &line);
    std::string checkFrame(const std::string &line, const std::string &expected);

    std::unique_ptr<datapath::Slot[]> slots_ = std::make_unique<datapath::Slot[]>(256);
    std::vector<Sent> sent_;
    std::string events_;
    std::vector<Bytes> reports_;
    uint32_t busy_ = 0;
    uint64_t now_ = 0;
    datapath::Switch switch_;
};

}  // namespace qvs::test
