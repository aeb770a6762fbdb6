// SPDX-License-Identifier: Apache-2.0
// Builds the State blob of state.fbs.
#include "state_library/snapshot_writer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "state_library/snapshot.h"

namespace qvs::mesh {
namespace {

template <size_t Size>
std::array<uint8_t, Size> padded(std::string_view id) {
    std::array<uint8_t, Size> field{};
    std::memcpy(field.data(), id.data(), std::min(id.size(), Size - 1));
    return field;
}

template <size_t Size>
flatbuffers::span<const uint8_t, Size> view(const std::array<uint8_t, Size> &field) {
    return flatbuffers::span<const uint8_t, Size>(field);
}

// Returns eight bytes as a number, so that numbers sort like the bytes.
uint64_t bigEndian(const uint8_t *bytes) {
    uint64_t number = 0;
    for (size_t i = 0; i < sizeof number; ++i)
        number = number << 8 | bytes[i];
    return number;
}

}  // namespace

uint32_t SnapshotWriter::append(std::string_view value) {
    // Values are aligned, because readers may cast them to records.
    bytes_.resize((bytes_.size() + 7) & ~size_t{7});
    const auto position = static_cast<uint32_t>(bytes_.size());
    bytes_.insert(bytes_.end(), value.begin(), value.end());
    bytes_.push_back(0);
    return position;
}

uint32_t SnapshotWriter::text(std::string_view value) {
    const auto found = texts_.find(value);
    if (found != texts_.end()) return found->second;
    return texts_.emplace(value, append(value)).first->second;
}

uint32_t SnapshotWriter::property(std::string_view key, std::string_view value, uint32_t type) {
    const auto index = static_cast<uint32_t>(properties_.size());
    const uint32_t keyPosition = text(key);
    const uint32_t valuePosition = append(value);
    properties_.emplace_back(keyPosition, type, valuePosition, static_cast<uint32_t>(value.size()));
    return index;
}

Range SnapshotWriter::list(std::span<const uint32_t> properties) {
    const Range range(static_cast<uint32_t>(lists_.size()), static_cast<uint32_t>(properties.size()));
    lists_.insert(lists_.end(), properties.begin(), properties.end());
    return range;
}

void SnapshotWriter::addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts,
                               uint32_t version, std::span<const uint32_t> globals,
                               std::span<const uint32_t> hosts) {
    const Range noPortsYet(static_cast<uint32_t>(ports_.size()), 0);
    switches_.emplace_back(view(padded<64>(id)), text(className), maxPorts, version, list(globals),
                           list(hosts), noPortsYet);
    indexedSwitches_ = false;
}

void SnapshotWriter::addPort(std::string_view id, uint32_t state, std::span<const uint32_t> properties) {
    ports_.emplace_back(view(padded<48>(id)), state, list(properties));
    Range &range = switches_.back().mutable_ports();
    range = Range(range.first(), range.count() + 1);
}

void SnapshotWriter::replaceSwitch(uint32_t index, std::span<const uint32_t> globals,
                                   std::span<const uint32_t> hosts) {
    const auto before = aliasOf(index);
    switches_[index].mutable_globals() = list(globals);
    const auto after = aliasOf(index);
    if (before.has_value() != after.has_value() || (before && text(*before) != text(*after)))
        indexedSwitches_ = false;
    switches_[index].mutable_hosts() = list(hosts);
}

void SnapshotWriter::replacePort(uint32_t index, std::span<const uint32_t> properties) {
    ports_[index].mutable_properties() = list(properties);
}

// Changes the number of ports of a switch by one. `added` is 1, or -1 as an unsigned number.
void SnapshotWriter::resize(uint32_t sw, uint32_t added) {
    Range &own = switches_[sw].mutable_ports();
    own = Range(own.first(), own.count() + added);
    for (uint32_t later = sw + 1; later < switches_.size(); ++later) {
        Range &range = switches_[later].mutable_ports();
        range = Range(range.first() + added, range.count());
    }
}

// Returns the first entry of the range that is not before the port.
std::vector<uint32_t>::iterator SnapshotWriter::placeById(const Range &range, const Port &port) {
    const auto first = portsById_.begin() + range.first();
    return std::partition_point(first, first + range.count(), [&](uint32_t other) {
        return std::memcmp(ports_[other].id()->data(), port.id()->data(), port.id()->size()) < 0;
    });
}

void SnapshotWriter::insertPort(uint32_t sw, uint32_t index, std::string_view id, uint32_t state,
                                std::span<const uint32_t> properties) {
    const Port port(view(padded<48>(id)), state, list(properties));
    const auto place = placeById(switches_[sw].ports(), port);
    ports_.insert(ports_.begin() + index, port);
    for (uint32_t &other : portsById_)
        other += other >= index ? 1u : 0u;
    portsById_.insert(place, index);
    resize(sw, 1);
}

void SnapshotWriter::removePort(uint32_t sw, uint32_t index) {
    portsById_.erase(placeById(switches_[sw].ports(), ports_[index]));
    ports_.erase(ports_.begin() + index);
    for (uint32_t &other : portsById_)
        other -= other > index ? 1u : 0u;
    resize(sw, UINT32_MAX);
}

// The alias is the value of its property up to a NUL, or the whole value if it has none.
std::optional<Alias> SnapshotWriter::aliasOf(uint32_t sw) const {
    const auto key = texts_.find(std::string_view(kAliasKey));
    if (key == texts_.end()) return std::nullopt;
    const Range &globals = switches_[sw].globals();
    for (uint32_t i = 0; i < globals.count(); ++i) {
        const Property &property = properties_[lists_[globals.first() + i]];
        if (property.key() != key->second) continue;
        const auto *value = reinterpret_cast<const char *>(&bytes_[property.value()]);
        return Alias(property.value(), static_cast<uint32_t>(strnlen(value, property.length())), sw);
    }
    return std::nullopt;
}

std::string_view SnapshotWriter::text(const Alias &alias) const {
    return {reinterpret_cast<const char *>(&bytes_[alias.text()]), alias.length()};
}

void SnapshotWriter::indexSwitches() {
    switchesById_.clear();
    aliases_.clear();
    for (uint32_t sw = 0; sw < switches_.size(); ++sw) {
        switchesById_.push_back(sw);
        if (const auto alias = aliasOf(sw)) aliases_.push_back(*alias);
    }
    std::sort(switchesById_.begin(), switchesById_.end(), [this](uint32_t a, uint32_t b) {
        const auto *id = switches_[a].id();
        return std::memcmp(id->data(), switches_[b].id()->data(), id->size()) < 0;
    });
    std::stable_sort(aliases_.begin(), aliases_.end(),
                     [this](const Alias &a, const Alias &b) { return text(a) < text(b); });
    indexedSwitches_ = true;
}

// Returns the length of the common prefix of the identifiers, at most as long as leaves room for the bytes of
// an Entry.
size_t SnapshotWriter::commonBeginning(std::span<const Port> ports) {
    if (ports.empty()) return 0;
    const auto &first = *ports.front().id();
    size_t common = first.size() - 2 * sizeof(uint64_t);
    for (const Port &port : ports) {
        const auto same = std::mismatch(first.data(), first.data() + common, port.id()->data()).first;
        common = static_cast<size_t>(same - first.data());
    }
    return common;
}

// Returns the ports of each switch in the order of their identifiers. Sorting compares copies of the bytes
// after the common prefix. It reads the ports, which are far apart in memory, only if these bytes are equal.
std::vector<uint32_t> SnapshotWriter::portOrder() const {
    struct Entry {
        uint64_t high;
        uint64_t low;
        uint32_t port;
    };
    const auto before = [this](const Entry &a, const Entry &b) {
        if (a.high != b.high) return a.high < b.high;
        if (a.low != b.low) return a.low < b.low;
        const auto *id = ports_[a.port].id();
        return std::memcmp(id->data(), ports_[b.port].id()->data(), id->size()) < 0;
    };
    std::vector<uint32_t> order;
    order.reserve(ports_.size());
    std::vector<Entry> entries;
    for (const Switch &sw : switches_) {
        const size_t common =
            commonBeginning(std::span(ports_).subspan(sw.ports().first(), sw.ports().count()));
        entries.clear();
        for (uint32_t i = 0; i < sw.ports().count(); ++i) {
            const uint32_t port = sw.ports().first() + i;
            const uint8_t *id = ports_[port].id()->data() + common;
            entries.push_back({bigEndian(id), bigEndian(id + sizeof(uint64_t)), port});
        }
        std::sort(entries.begin(), entries.end(), before);
        for (const Entry &entry : entries)
            order.push_back(entry.port);
    }
    return order;
}

size_t SnapshotWriter::size() const {
    return bytes_.size() + properties_.size() * sizeof(Property) +
           (lists_.size() + portsById_.size() + switchesById_.size()) * sizeof(uint32_t) +
           ports_.size() * sizeof(Port) + switches_.size() * sizeof(Switch) + aliases_.size() * sizeof(Alias);
}

flatbuffers::DetachedBuffer SnapshotWriter::finish() {
    if (bytes_.empty()) bytes_.push_back(0);
    if (portsById_.size() != ports_.size()) portsById_ = portOrder();
    if (!indexedSwitches_) indexSwitches();
    flatbuffers::FlatBufferBuilder builder(size() + 256);
    // Separate statements, because the order in which arguments are evaluated is not defined. The last field
    // is first.
    const auto aliases = builder.CreateVectorOfStructs(aliases_);
    const auto switchesById = builder.CreateVector(switchesById_);
    const auto switches = builder.CreateVectorOfStructs(switches_);
    const auto portsById = builder.CreateVector(portsById_);
    const auto ports = builder.CreateVectorOfStructs(ports_);
    const auto lists = builder.CreateVector(lists_);
    const auto properties = builder.CreateVectorOfStructs(properties_);
    const auto bytes = builder.CreateVector(bytes_);
    FinishStateBuffer(builder, CreateState(builder, bytes, properties, lists, ports, portsById, switches,
                                           switchesById, aliases));
    return builder.Release();
}

}  // namespace qvs::mesh
