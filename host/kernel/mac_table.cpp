// The forwarding table, its ageing and its limits. An entry is stored under its address, VLAN and switch, and
// says behind which port it is, and when it was learnt if it was.
#include "kernel/mac_table.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "kernel/device.h"

namespace qvs::kernel {

namespace {

constexpr char kTable[] = "mac table";
constexpr char kLearning[] = "mac learning";
constexpr char kAgingValue[] = "aging";
constexpr char kLimitValue[] = "limit";
constexpr char kClockValue[] = "clock";

// The record that a switch has stored: 24 bits of seconds, u32 limit at 4.
constexpr char kSwitchLearningKey[] = "com.quillon.vswitch.macLearning";
constexpr size_t kSwitchLearningSize = 8;
constexpr uint32_t kDefaultSwitchLimit = 65536;
// The record of a port: three flags, u32 limit at 3, u32 policy at 7.
constexpr char kPortLearningKey[] = "com.quillon.vswitch.port.macManagement";
constexpr size_t kPortLearningSize = 11;

uint64_t parsed(std::string_view text, int base) {
    uint64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value, base);
    return value;
}

std::optional<uint64_t> storedNumber(const Model &model, std::string_view name) {
    const auto &values = model.deviceValues(kLearning);
    const auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    return parsed(found->second, 10);
}

void storeNumber(Model &model, std::string_view name, uint64_t number) {
    model.setDeviceValue(kLearning, name, fmt::format("{}", number));
}

// "02000000000a/0064/1": sorted as addresses are.
std::string storedKey(const MacKey &key) {
    return fmt::format("{:012x}/{:04x}/{}", key.address, key.vlan, key.switchRow);
}

// "67108865 1700000000": the port, and the time of a learnt one.
std::string storedEntry(const MacEntry &entry) {
    if (!entry.learnt) return fmt::format("{}", entry.port->number);
    return fmt::format("{} {}", entry.port->number, entry.since);
}

MacKey readKey(std::string_view key) {
    return {parsed(key.substr(0, 12), 16), static_cast<uint16_t>(parsed(key.substr(13, 4), 16)),
            static_cast<int64_t>(parsed(key.substr(18), 10))};
}

// Of a port that is gone the entry has none; port numbers are not used again.
MacEntry readEntry(const Model &model, std::string_view entry) {
    const size_t blank = entry.find(' ');
    MacEntry result;
    result.port = model.findPort(static_cast<uint32_t>(parsed(entry.substr(0, blank), 10)));
    result.learnt = blank != std::string_view::npos;
    if (result.learnt) result.since = parsed(entry.substr(blank + 1), 10);
    return result;
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
    // Addresses that are too old by now do not come back because the time is longer from now on.
    const MacTable aged(model);
    model.setDeviceValues(kLearning, {{kAgingValue, fmt::format("{}", props.aging)},
                                      {kLimitValue, fmt::format("{}", props.limit)}});
}

uint64_t learningClock(const Model &model) {
    return storedNumber(model, kClockValue).value_or(static_cast<uint64_t>(std::time(nullptr)));
}

void stopLearningClock(Model &model, uint64_t at) {
    storeNumber(model, kClockValue, at);
}

uint64_t agingOf(const Model &model, const Switch &sw) {
    const Property *stored = record(sw.host, kSwitchLearningKey, kSwitchLearningSize);
    return stored == nullptr ? learningProps(model).aging : u32At(stored->value, 0) & 0xffffff;
}

uint32_t macLimitOf(const Switch &sw) {
    const Property *stored = record(sw.host, kSwitchLearningKey, kSwitchLearningSize);
    return stored == nullptr ? kDefaultSwitchLimit : u32At(stored->value, 4);
}

std::optional<uint32_t> macLimitOf(const Model &model, const Port &port) {
    const Property *stored = record(port.properties, kPortLearningKey, kPortLearningSize);
    if (stored != nullptr) return u32At(stored->value, 3);
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
    std::vector<std::string> gone;
    for (const auto &[key, value] : model.deviceValues(kTable)) {
        const MacEntry entry = readEntry(model, value);
        if (entry.port == nullptr || expired(entry)) {
            gone.push_back(key);
            continue;
        }
        entries_.emplace_hint(entries_.end(), readKey(key), entry);
        count(entry, 1);
    }
    if (gone.empty()) return;
    try {
        model.clearDeviceValues(kTable, gone);
    } catch (const StoreError &) {
        // Whoever only looks needs no room on the disk; the next one tries again.
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

    model_.setDeviceValue(kTable, storedKey(key), storedEntry(entry));
    if (onSwitch) count(known->second, -1);
    entries_.insert_or_assign(key, entry);
    count(entry, 1);
    return true;
}

bool MacTable::remove(uint64_t address, uint16_t vlan, const Port &port) {
    const MacKey key = {address, vlan, port.owner->row};
    const auto known = entries_.find(key);
    if (known == entries_.end() || known->second.port != &port) return false;
    model_.clearDeviceValue(kTable, storedKey(key));
    count(known->second, -1);
    entries_.erase(known);
    return true;
}

}  // namespace qvs::kernel
