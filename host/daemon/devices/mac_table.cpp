// SPDX-License-Identifier: Apache-2.0
// The forwarding table, its ageing and its limits. The key of a stored entry is its address, VLAN and switch.
// The value is the port and, for a learnt address, the time.
#include "daemon/devices/mac_table.h"

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "daemon/devices/device.h"
#include "wire/fault.h"

namespace qvs::kernel {

namespace {

constexpr char kAgingValue[] = "aging";
constexpr char kLimitValue[] = "limit";
constexpr char kClockValue[] = "clock";

bool fitsName(const std::string &name, const uint64_t &number) {
    return name == kAgingValue || name == kClockValue || (name == kLimitValue && number <= UINT16_MAX);
}

constexpr Table<std::string, uint64_t> kLearning("mac learning", kBytes<isAnything>, kNumber<uint64_t>,
                                                 SIZE_MAX, fitsName);

// The stored record of a switch: 24 bits of seconds, u32 limit at 4.
constexpr char kSwitchLearningKey[] = "com.quillon.vswitch.macLearning";
constexpr size_t kSwitchLearningSize = 8;
constexpr uint32_t kDefaultSwitchLimit = 65536;
// The stored record of a port: three flags, u32 limit at 3, u32 policy at 7.
constexpr char kPortLearningKey[] = "com.quillon.vswitch.port.macManagement";
constexpr size_t kPortLearningSize = 11;

std::optional<uint64_t> storedNumber(const Model &model, const char *name) {
    const auto &values = model.tables.rows(kLearning);
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

// A stored entry: the port and, for a learnt address, the time.
struct KeptEntry {
    uint32_t port = 0;
    std::optional<uint64_t> since;
};

// "02000000000a/0064/1"
std::string keyText(const MacKey &key) {
    return fmt::format("{:012x}/{:04x}/{}", key.address, key.vlan, key.switchRow);
}

std::optional<MacKey> readKey(std::string_view text) {
    constexpr size_t kVlanAt = 13;
    constexpr size_t kSwitchAt = 18;
    if (text.size() <= kSwitchAt) return std::nullopt;
    const auto address = wire::numberOf<uint64_t>(text.substr(0, kVlanAt - 1), 16);
    const auto vlan = wire::numberOf<uint16_t>(text.substr(kVlanAt, 4), 16);
    const auto sw = wire::numberOf<int64_t>(text.substr(kSwitchAt));
    if (!address || !vlan || !sw) return std::nullopt;
    return MacKey{*address, *vlan, *sw};
}

// "67108865 1700000000": the port and the time.
std::string entryText(const KeptEntry &entry) {
    return entry.since ? fmt::format("{} {}", entry.port, *entry.since) : fmt::format("{}", entry.port);
}

std::optional<KeptEntry> readEntry(std::string_view text) {
    const size_t blank = text.find(' ');
    const auto port = wire::numberOf<uint32_t>(text.substr(0, blank));
    if (!port) return std::nullopt;
    if (blank == std::string_view::npos) return KeptEntry{*port, std::nullopt};
    const auto since = wire::numberOf<uint64_t>(text.substr(blank + 1));
    return since ? std::optional(KeptEntry{*port, since}) : std::nullopt;
}

constexpr Table<MacKey, KeptEntry> kTable("mac table", {keyText, readKey}, {entryText, readEntry});

KeptEntry keptEntry(const MacEntry &entry) {
    return {entry.port->number, entry.learnt ? std::optional(entry.since) : std::nullopt};
}

// Returns an entry. Its port is null if the port was removed, because port numbers are not reused.
MacEntry entryOf(const Model &model, const KeptEntry &kept) {
    return {model.inventory.findPort(kept.port), kept.since.has_value(), kept.since.value_or(0)};
}

const Property *record(const PropertyList &properties, const char *key, size_t size) {
    const Property *found = properties.find(key);
    return found != nullptr && found->value.size() >= size ? found : nullptr;
}

}  // namespace

LearningProps learningProps(const Model &model) {
    LearningProps props;
    props.aging = storedNumber(model, kAgingValue).value_or(props.aging);
    props.limit = static_cast<uint16_t>(storedNumber(model, kLimitValue).value_or(props.limit));
    return props;
}

void setLearningProps(Model &model, const LearningProps &props) {
    // Removes expired addresses first, so that a longer time does not restore them.
    const MacTable aged(model);
    model.tables.setRows(kLearning, {{kAgingValue, props.aging}, {kLimitValue, props.limit}});
}

uint64_t learningClock(const Model &model) {
    return storedNumber(model, kClockValue).value_or(static_cast<uint64_t>(std::time(nullptr)));
}

void stopLearningClock(Model &model, uint64_t at) {
    model.tables.setRow(kLearning, kClockValue, at);
}

uint64_t agingOf(const Model &model, const Switch &sw) {
    const Property *stored = record(sw.host, kSwitchLearningKey, kSwitchLearningSize);
    return stored == nullptr ? learningProps(model).aging : u32At(stored->value, 0) & 0xffffff;
}

uint32_t macLimitOf(const Switch &sw) {
    const Property *stored = record(sw.host, kSwitchLearningKey, kSwitchLearningSize);
    return stored == nullptr ? kDefaultSwitchLimit : u32At(stored->value, 4);
}

std::optional<PortLearning> portLearning(const Port &port) {
    const Property *stored = record(port.properties, kPortLearningKey, kPortLearningSize);
    if (stored == nullptr) return std::nullopt;
    const std::string_view value = stored->value;
    return PortLearning{value[1] != 0, value[2] != 0, u32At(value, 3), u32At(value, 7) != 0};
}

std::optional<uint32_t> macLimitOf(const Model &model, const Port &port) {
    if (const auto stored = portLearning(port)) return stored->limit;
    const uint16_t limit = learningProps(model).limit;
    if (limit == 0) return std::nullopt;
    return limit;
}

uint32_t learningFlags(const Switch &sw) {
    constexpr std::pair<const char *, uint32_t> kSwitches[] = {
        {"com.quillon.vswitch.macLearning.learnStatic", kLearnStatic},
        {"com.quillon.vswitch.macLearning.staticMACAllow", kStaticAllowed},
        {"com.quillon.vswitch.macLearning.overlay.cache", kOverlayCache},
    };
    uint32_t flags = 0;
    for (const auto &[key, flag] : kSwitches) {
        if (sw.host.text(key) == "true") flags |= flag;
    }
    return flags;
}

MacTable::MacTable(Model &model) : model_(model), now_(learningClock(model)) {
    std::vector<MacKey> gone;
    for (const auto &[key, kept] : model.tables.rows(kTable)) {
        const MacEntry entry = entryOf(model, kept);
        if (entry.port == nullptr || expired(entry)) {
            gone.push_back(key);
            continue;
        }
        entries_.emplace_hint(entries_.end(), key, entry);
        count(entry, 1);
    }
    addLearnt();
    if (gone.empty()) return;
    try {
        model.tables.clearRows(kTable, gone);
    } catch (const StoreError &) {
        // Reading must work on a full disk. The next read tries again.
    }
}

// Adds the addresses that the data path has learnt. It removes those that expire. Stored entries prevail.
void MacTable::addLearnt() {
    for (const auto &[address, learnt] : model_.facts.learnt) {
        const Port *port = model_.inventory.findPort(learnt.port);
        if (port == nullptr) continue;
        const MacEntry entry = {port, true, learnt.since};
        if (entries_.emplace(MacKey{address.address, address.vlan, port->owner->row}, entry).second)
            count(entry, 1);
    }
}

bool MacTable::expired(const MacEntry &entry) const {
    const uint64_t aging = agingOf(model_, *entry.port->owner);
    return entry.learnt && aging != 0 && ageOf(entry) > aging;
}

uint32_t MacTable::ageOf(const MacEntry &entry) const {
    if (!entry.learnt || entry.since >= now_) return 0;
    return static_cast<uint32_t>(std::min<uint64_t>(now_ - entry.since, UINT32_MAX));
}

MacTable::Count MacTable::countBehind(const Port &port) const {
    const auto found = behindPort_.find(&port);
    return found == behindPort_.end() ? Count{} : found->second;
}

MacTable::Count MacTable::countOn(const Switch &sw) const {
    const auto found = onSwitch_.find(&sw);
    return found == onSwitch_.end() ? Count{} : found->second;
}

void MacTable::count(const MacEntry &entry, int change) {
    for (Count *counted : {&behindPort_[entry.port], &onSwitch_[entry.port->owner]}) {
        counted->all += static_cast<uint32_t>(change);
        if (entry.learnt) counted->learnt += static_cast<uint32_t>(change);
    }
}

bool MacTable::put(uint64_t address, uint16_t vlan, const MacEntry &entry) {
    const Switch &sw = *entry.port->owner;
    const MacKey key = {address, vlan, sw.row};
    const auto known = entries_.find(key);
    const bool onSwitch = known != entries_.end();
    const bool behindPort = onSwitch && known->second.port == entry.port;
    if (!onSwitch && countOn(sw).all >= macLimitOf(sw)) return false;
    const std::optional<uint32_t> limit = macLimitOf(model_, *entry.port);
    if (!behindPort && limit && countBehind(*entry.port).all >= *limit) return false;

    model_.tables.setRow(kTable, key, keptEntry(entry));
    if (onSwitch) count(known->second, -1);
    entries_.insert_or_assign(key, entry);
    count(entry, 1);
    return true;
}

bool MacTable::remove(uint64_t address, uint16_t vlan, const Port &port) {
    const MacKey key = {address, vlan, port.owner->row};
    const auto known = entries_.find(key);
    if (known == entries_.end() || known->second.port != &port) return false;
    model_.tables.clearRow(kTable, key);
    if (port.owner->portset != nullptr) {
        const Facts::Address learnt = {address, vlan, port.owner->portset->number};
        if (model_.facts.learnt.erase(learnt) != 0) model_.facts.forgotten.emplace_back(learnt, port.number);
    }
    count(known->second, -1);
    entries_.erase(known);
    return true;
}

const AnyTable *const kMacTables[] = {&kTable, &kLearning};

}  // namespace qvs::kernel
