// SPDX-License-Identifier: Apache-2.0
// Functions of switches and ports.
#include "daemon/model/entities.h"

#include "daemon/model/bytes.h"

namespace qvs::kernel {

// A count that exceeds the value is ignored.
std::vector<std::string> parseUplinkPorts(std::string_view value) {
    constexpr size_t kCount = sizeof(uint32_t);
    constexpr size_t kEntry = 48;
    uint32_t count = u32At(value, 0);
    std::vector<std::string> names;
    for (size_t at = kCount; count != 0 && at + kEntry <= value.size(); --count, at += kEntry)
        names.emplace_back(textAt(value, at, kEntry));
    return names;
}

void Port::set(PropertyRef property) {
    if (property->key == kPortBlockKey) blocked = untilNul(property->value) == "true";
    properties.set(std::move(property));
}

void Port::clear(std::string_view key) {
    if (key == kPortBlockKey) blocked = false;
    properties.clear(key);
}

uint32_t Port::flags() const {
    return (inUse() ? kPortInUse : 0) | (linkUp() ? kPortLinkUp : 0) | (blocked ? kPortBlocked : 0);
}

std::string Port::statusRecord() const {
    constexpr size_t kNumberAt = 16;
    constexpr size_t kClientAt = 20;
    const std::string_view name = clientName();
    Record record(kClientAt + name.size() + 1);
    return record.put(0, uint64_t{flags()}).put(kNumberAt, number).bytes(kClientAt, name).take();
}

void Port::returnStatus() {
    clear(kPortStatusKey);
    statusFrom = StatusFrom::Kernel;
}

void Switch::setUplinks(std::vector<std::string> names) {
    uplinks = std::move(names);
    uplinkSet = {uplinks.begin(), uplinks.end()};
}

Port *Switch::port(std::string_view portId) const {
    return portsById.find(portId);
}

}  // namespace qvs::kernel
