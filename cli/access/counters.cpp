// SPDX-License-Identifier: Apache-2.0
#include "access/counters.h"

#include <cstring>
#include <string_view>

namespace qvs::cli {

std::optional<CounterValues> countersIn(Bytes record) {
    if (record.size() < sizeof(QVS_PortStatistics)) return std::nullopt;
    CounterValues values{};
    for (size_t i = 0; i < values.size(); i++)
        std::memcpy(&values[i], record.data() + kCounters[i].offset, sizeof values[i]);
    return values;
}

std::optional<CounterValues> countersOf(DVSPort *port) {
    const std::optional<Property> record = findProperty(placeOf(port), QVS_KEY_PORT_STATISTICS);
    return record ? countersIn(record->value) : std::nullopt;
}

Traffic trafficOf(const CounterValues &values) {
    Traffic traffic;
    for (size_t i = 0; i < values.size(); i++) {
        const Counter &counter = kCounters[i];
        const bool in = counter.direction == Direction::In;
        const std::string_view kind = counter.kind;
        if (kind == "exception") continue;
        if (kind == "dropped") {
            (in ? traffic.droppedIn : traffic.droppedOut) += values[i];
        } else if (std::string_view(counter.unit) == "bytes") {
            (in ? traffic.bytesIn : traffic.bytesOut) += values[i];
        } else {
            (in ? traffic.packetsIn : traffic.packetsOut) += values[i];
        }
    }
    return traffic;
}

}  // namespace qvs::cli
