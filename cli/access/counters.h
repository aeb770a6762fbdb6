// SPDX-License-Identifier: Apache-2.0
// The sixteen counters of a port, as the snapshot holds them.
#pragma once

#include <qvs/records.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "config/library/snapshot.h"

namespace qvs::cli {

enum class Direction { In, Out };

// One counter: what it counts, and what it is called.
struct Counter {
    const char *key;  // in JSON: "pktsInUnicast"
    Direction direction;
    const char *kind;  // "unicast", "multicast", "broadcast", "dropped", "exception"
    const char *unit;  // "packets" or "bytes"
    size_t offset;     // in QVS_PortStatistics
};

#define QVS_COUNTER(field, direction, kind, unit) \
    { #field, Direction::direction, kind, unit, offsetof(QVS_PortStatistics, field) }
inline constexpr std::array<Counter, 16> kCounters = {{
    QVS_COUNTER(pktsInUnicast, In, "unicast", "packets"),
    QVS_COUNTER(bytesInUnicast, In, "unicast", "bytes"),
    QVS_COUNTER(pktsInMulticast, In, "multicast", "packets"),
    QVS_COUNTER(bytesInMulticast, In, "multicast", "bytes"),
    QVS_COUNTER(pktsInBroadcast, In, "broadcast", "packets"),
    QVS_COUNTER(bytesInBroadcast, In, "broadcast", "bytes"),
    QVS_COUNTER(pktsOutUnicast, Out, "unicast", "packets"),
    QVS_COUNTER(bytesOutUnicast, Out, "unicast", "bytes"),
    QVS_COUNTER(pktsOutMulticast, Out, "multicast", "packets"),
    QVS_COUNTER(bytesOutMulticast, Out, "multicast", "bytes"),
    QVS_COUNTER(pktsOutBroadcast, Out, "broadcast", "packets"),
    QVS_COUNTER(bytesOutBroadcast, Out, "broadcast", "bytes"),
    QVS_COUNTER(pktsInDropped, In, "dropped", "packets"),
    QVS_COUNTER(pktsOutDropped, Out, "dropped", "packets"),
    QVS_COUNTER(pktsInException, In, "exception", "packets"),
    QVS_COUNTER(pktsOutException, Out, "exception", "packets"),
}};
#undef QVS_COUNTER
static_assert(sizeof(QVS_PortStatistics) == kCounters.size() * sizeof(uint64_t));

// The values, in the order of kCounters.
using CounterValues = std::array<uint64_t, kCounters.size()>;

// The counters of a stored record; nothing when it is too short.
std::optional<CounterValues> countersIn(Bytes record);
// The counters of a port; nothing when it has none. They are those of the moment when the snapshot was
// loaded.
std::optional<CounterValues> countersOf(DVSPort *port);

// Counters of ports are shown together: packets and bytes of all kinds of frames; those that were dropped
// apart, and exceptions not at all.
template <typename Number>
struct Traffic {
    Number packetsIn = 0;
    Number packetsOut = 0;
    Number bytesIn = 0;
    Number bytesOut = 0;
    Number droppedIn = 0;
    Number droppedOut = 0;
};
template <typename Number>
Traffic<Number> trafficOf(const std::array<Number, kCounters.size()> &values) {
    Traffic<Number> traffic;
    for (size_t i = 0; i < values.size(); i++) {
        const Counter &counter = kCounters[i];
        const bool in = counter.direction == Direction::In;
        const std::string_view kind = counter.kind;
        if (kind == "exception") continue;
        if (kind == "dropped") {
            (in ? traffic.droppedIn : traffic.droppedOut) += values[i];
        } else if (counter.unit == std::string_view("bytes")) {
            (in ? traffic.bytesIn : traffic.bytesOut) += values[i];
        } else {
            (in ? traffic.packetsIn : traffic.packetsOut) += values[i];
        }
    }
    return traffic;
}

}  // namespace qvs::cli
