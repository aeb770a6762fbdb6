// SPDX-License-Identifier: Apache-2.0
#include "access/counters.h"

#include <cstring>

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

}  // namespace qvs::cli
