// SPDX-License-Identifier: Apache-2.0
// The forwarding table of the emulated kernel: the ports of MAC addresses.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>

#include "daemon/model/model.h"

namespace qvs::kernel {

// The learning properties of the host, for all its switches.
struct LearningProps {
    uint64_t aging = 600;  // seconds until a learnt address expires; 0: never
    uint16_t limit = 0;    // the most addresses behind one port; 0: the limit of the switch
};
LearningProps learningProps(const Model &model);
void setLearningProps(Model &model, const LearningProps &props);

// Returns the time in seconds, from which ages are computed. A lab can stop this clock.
uint64_t learningClock(const Model &model);
void stopLearningClock(Model &model, uint64_t at);

// The learning policy that a port has stored.
struct PortLearning {
    bool learning = false;
    bool flooding = false;
    uint32_t limit = 0;
    bool dropping = false;
};
std::optional<PortLearning> portLearning(const Port &port);

// The following values are those that the switch or the port has stored, or else those of the host.
uint64_t agingOf(const Model &model, const Switch &sw);
uint32_t macLimitOf(const Switch &sw);
// Returns nothing if only the limit of the switch applies.
std::optional<uint32_t> macLimitOf(const Model &model, const Port &port);

// The learning flags of a switch: static addresses are learnt, static addresses are accepted, the overlay
// cache is enabled.
constexpr uint32_t kLearnStatic = 1;
constexpr uint32_t kStaticAllowed = 2;
constexpr uint32_t kOverlayCache = 4;
uint32_t learningFlags(const Switch &sw);

// The tables in which the forwarding table is stored.
extern const AnyTable *const kMacTables[2];

struct MacKey {
    uint64_t address = 0;  // the first byte of the address is the most significant one
    uint16_t vlan = 0;
    int64_t switchRow = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a null pointer
    auto operator<=>(const MacKey &) const = default;
};

struct MacEntry {
    const Port *port = nullptr;
    bool learnt = false;
    uint64_t since = 0;  // the time at which it was learnt
};

// The forwarding table at one moment. The constructor removes expired addresses and addresses behind removed
// ports.
class MacTable {
  public:
    explicit MacTable(Model &model);

    // Returns the entries, sorted by address and VLAN.
    const std::map<MacKey, MacEntry> &entries() const { return entries_; }
    // The number of addresses behind a port or on a switch.
    struct Count {
        uint32_t all = 0;
        uint32_t learnt = 0;
    };
    Count countBehind(const Port &port) const;
    Count countOn(const Switch &sw) const;
    uint32_t ageOf(const MacEntry &entry) const;

    // Adds an address, or moves it from another port of the switch. Returns false if the limit of the port or
    // of the switch is reached.
    bool put(uint64_t address, uint16_t vlan, const MacEntry &entry);
    // Removes an address. Returns false if it is not behind this port.
    bool remove(uint64_t address, uint16_t vlan, const Port &port);

  private:
    void addLearnt();
    bool expired(const MacEntry &entry) const;
    void count(const MacEntry &entry, int change);

    Model &model_;
    uint64_t now_;
    std::map<MacKey, MacEntry> entries_;
    std::unordered_map<const Port *, Count> behindPort_;
    std::unordered_map<const Switch *, Count> onSwitch_;
};

}  // namespace qvs::kernel
