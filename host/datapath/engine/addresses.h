// SPDX-License-Identifier: Apache-2.0
// The addresses of a switch: those of its adapters, and those that were learnt behind ports or are static.
#pragma once

#include <functional>
#include <vector>

#include "datapath/frame.h"

namespace qvs::datapath {

constexpr uint32_t kNone = UINT32_MAX;

// Finds the ports with an address. Several may have the same one, in different VLANs.
class AdapterAddresses {
  public:
    void clear(size_t ports);
    void add(MacAddress address, uint32_t port);
    void remove(MacAddress address, uint32_t port);
    // The first port with this hash of the address and the next one, kNone at the end.
    [[nodiscard]] uint32_t first(MacAddress address) const { return heads_[slotOf(address)]; }
    [[nodiscard]] uint32_t next(uint32_t port) const { return next_[port]; }

  private:
    [[nodiscard]] size_t slotOf(MacAddress address) const;

    std::vector<uint32_t> heads_ = {kNone};
    std::vector<uint32_t> next_;  // by port
};

struct LearntAddress {
    MacAddress address = 0;
    uint16_t filing = 0;  // the VLAN under which it is found
    uint16_t vlan = 0;    // the VLAN in which it sends
    uint32_t port = 0;
    bool permanent = false;
    uint64_t seen = 0;
    uint32_t place = 0;  // in the table
};

// Finds, inserts and expires in constant time. Entries that expire are in a list in the order in which they
// were seen.
class AddressTable {
  public:
    // Milliseconds until an entry expires; 0: never.
    void setAging(uint64_t aging) { aging_ = aging; }
    [[nodiscard]] LearntAddress *find(MacAddress address, uint16_t filing, uint64_t now);
    void insert(const LearntAddress &entry);
    void touch(LearntAddress &entry, uint64_t now);
    void remove(MacAddress address, uint16_t filing);
    // Removes expired entries after telling of each.
    void expire(uint64_t now, const std::function<void(const LearntAddress &)> &gone);
    void forEach(const std::function<void(const LearntAddress &)> &visit) const;
    [[nodiscard]] size_t size() const { return used_; }

  private:
    struct Node {
        LearntAddress entry;
        uint32_t chain = kNone;
        uint32_t older = kNone;
        uint32_t newer = kNone;
        bool used = false;
    };

    [[nodiscard]] size_t slotOf(MacAddress address, uint16_t filing) const;
    [[nodiscard]] uint32_t indexOf(MacAddress address, uint16_t filing) const;
    [[nodiscard]] bool expired(const LearntAddress &entry, uint64_t now) const;
    void append(uint32_t index);
    void unlink(uint32_t index);
    void grow();

    std::vector<uint32_t> heads_ = {kNone};
    std::vector<Node> nodes_;
    std::vector<uint32_t> free_;
    uint32_t oldest_ = kNone;
    uint32_t newest_ = kNone;
    size_t used_ = 0;
    uint64_t aging_ = 0;
};

}  // namespace qvs::datapath
