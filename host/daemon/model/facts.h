// SPDX-License-Identifier: Apache-2.0
// What the data path tells the kernel: counters, addresses and groups. It is kept in memory only, and is
// empty on a host without the network.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace qvs::datapath {
struct Slot;
}

namespace qvs::kernel {

// The slots of the shared memory, by the name of the object that counts there.
using SlotMap = std::map<std::string, uint32_t, std::less<>>;

inline std::string portSlot(uint32_t port) {
    return fmt::format("port {}", port);
}
inline std::string switchSlot(uint32_t portset) {
    return fmt::format("switch {}", portset);
}
inline std::string mirrorSlot(uint32_t portset, std::string_view session) {
    return fmt::format("mirror {} {}", portset, session);
}
inline std::string groupSlot(uint32_t port, std::string_view group) {
    return fmt::format("group {} {}", port, group);
}

struct Facts {
    // An address that the data path has learnt.
    struct Address {
        uint64_t address = 0;
        uint16_t vlan = 0;
        uint32_t portset = 0;

        // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a null pointer
        auto operator<=>(const Address &) const = default;
    };
    struct Learnt {
        uint32_t port = 0;
        uint64_t since = 0;  // by the clock of the forwarding table
    };

    datapath::Slot *memory = nullptr;  // null: the host has no network
    SlotMap slots;
    std::set<uint32_t> attached;  // the numbers of ports that have an attachment
    std::map<Address, Learnt> learnt;
    // What clients removed from `learnt`, with the ports. The data path is told of them.
    std::vector<std::pair<Address, uint32_t>> forgotten;
    std::set<std::pair<uint32_t, std::string>> joined;  // ports, and the groups that they joined

    // Returns the slot of an object, or null.
    datapath::Slot *slotOf(std::string_view object) const;
};

}  // namespace qvs::kernel
