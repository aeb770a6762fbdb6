// SPDX-License-Identifier: Apache-2.0
// The forwarding table of the emulated kernel: which address is behind which port.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>

#include "daemon/model/model.h"

namespace qvs::kernel {

// The learning properties of the host, for all its switches.
struct LearningProps {
    uint64_t aging = 600;  // seconds that a learnt address is kept; 0: for ever
    uint16_t limit = 0;    // addresses behind one port; 0: as many as the switch has room for
};
LearningProps learningProps(const Model &model);
void setLearningProps(Model &model, const LearningProps &props);

// The clock of ages, in seconds: that of the machine, unless a lab has stopped it.
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
// Nothing: the switch's limit is the only one.
std::optional<uint32_t> macLimitOf(const Model &model, const Port &port);

// What a switch's stored switches say: static addresses are learnt, are accepted, and there is an overlay
// cache.
constexpr uint32_t kLearnStatic = 1;
constexpr uint32_t kStaticAllowed = 2;
constexpr uint32_t kOverlayCache = 4;
uint32_t learningFlags(const Switch &sw);

// What the forwarding table is kept in.
extern const AnyTable *const kMacTables[2];

struct MacKey {
    uint64_t address = 0;  // its first byte is the highest of the low six
    uint16_t vlan = 0;
    int64_t switchRow = 0;

    bool operator<(const MacKey &other) const {
        return std::tie(address, vlan, switchRow) < std::tie(other.address, other.vlan, other.switchRow);
    }
};

struct MacEntry {
    const Port *port = nullptr;
    bool learnt = false;
    uint64_t since = 0;  // when it was learnt
};

// The table as it is at one moment. Looking is what makes addresses go: those that are too old, and those
// behind ports that are gone.
class MacTable {
  public:
    explicit MacTable(Model &model);

    // By address and VLAN.
    const std::map<MacKey, MacEntry> &entries() const { return entries_; }
    // How many there are behind a port, and on a switch.
    struct Count {
        uint32_t all = 0;
        uint32_t learnt = 0;
    };
    Count countBehind(const Port &port) const;
    Count countOn(const Switch &sw) const;
    uint32_t ageOf(const MacEntry &entry) const;

    // An address is behind one port of its switch: one that was behind another one moves. False when the port
    // or the switch has as many as it may.
    bool put(uint64_t address, uint16_t vlan, const MacEntry &entry);
    // False when it is not behind this port.
    bool remove(uint64_t address, uint16_t vlan, const Port &port);

  private:
    bool expired(const MacEntry &entry) const;
    void count(const MacEntry &entry, int change);

    Model &model_;
    uint64_t now_;
    std::map<MacKey, MacEntry> entries_;
    std::unordered_map<const Port *, Count> behindPort_;
    std::unordered_map<const Switch *, Count> onSwitch_;
};

}  // namespace qvs::kernel
