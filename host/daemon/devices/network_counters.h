// SPDX-License-Identifier: Apache-2.0
// Counters of the data path in the answers of devices. On a host without the network, an object has no slot,
// and its counters come from Counters.
#pragma once

#include <initializer_list>
#include <string_view>

#include "daemon/model/bytes.h"
#include "daemon/model/model.h"
#include "datapath/shared.h"

namespace qvs::kernel {

// The slot of the flows of a port.
inline std::string ipfixSlot(uint32_t port) {
    return fmt::format("ipfix {}", port);
}

// Returns a value of an object, or 0 if it has no slot.
inline uint64_t slotValue(const Model &model, std::string_view object, uint32_t value) {
    const datapath::Slot *slot = model.facts.slotOf(object);
    return slot == nullptr ? 0 : slot->values[value].load(std::memory_order_relaxed);
}

inline bool hasSlot(const Model &model, std::string_view object) {
    return model.facts.slotOf(object) != nullptr;
}

// Returns the sum of a value over all ports of a switch, or over its uplinks.
enum class Which { AllPorts, Uplinks };
inline uint64_t sumOf(const Model &model, const Switch &sw, Which which,
                      std::initializer_list<uint32_t> values) {
    uint64_t sum = 0;
    for (const auto &[number, port] : sw.ports) {
        if (which == Which::Uplinks && port->nic == nullptr) continue;
        for (const uint32_t value : values)
            sum += slotValue(model, portSlot(number), value);
    }
    return sum;
}

inline uint32_t dropValue(datapath::Drop reason) {
    return datapath::kDropped + static_cast<uint32_t>(reason);
}

// Writes u64 counters one after the other.
inline Record &putCounters(Record &record, size_t offset, std::initializer_list<uint64_t> values) {
    for (const uint64_t value : values) {
        record.put(offset, value);
        offset += sizeof value;
    }
    return record;
}

}  // namespace qvs::kernel
