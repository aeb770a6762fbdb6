// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: the running mirror sessions and the mirror agent.
//
// A request contains the portset name at 0 (128 bytes) and the name of a session at 176 (32 bytes). The
// running sessions are those that are stored for the switch.
//
// Records in layouts/emulated.json: those that begin with mirror-.
#include <cerrno>
#include <set>

#include "daemon/devices/device_request.h"
#include "daemon/devices/mirror_sessions.h"
#include "daemon/devices/network_counters.h"

namespace qvs::kernel {

namespace {

constexpr size_t kSessionWidth = 32;
constexpr size_t kDestination = 4;
constexpr size_t kSessionStats = 121;
constexpr size_t kAgentStats = 76;

// Returns the numbers of the ports that have a link and are destinations of enabled sessions.
std::vector<uint32_t> activeDestinations(const Model &model, const Switch &sw) {
    std::set<uint32_t> numbers;
    forEachMirrorSession(sw, [&](const MirrorSession &session) {
        if (session.disabled || !session.namesPorts) return;
        for (size_t at = 0; at < session.destinations.size(); at += kMirrorEntity) {
            const auto name = textAt(session.destinations, at + kMirrorValueAt, kPortIdField);
            const Port *port = findByName(model, sw, name);
            if (port != nullptr && port->linkUp()) numbers.insert(port->number);
        }
    });
    return {numbers.begin(), numbers.end()};
}

Result getPromiscSessionActiveDsts(const Call &call, const Portset &portset) {
    std::vector<uint32_t> numbers;
    if (portset.owner != nullptr) numbers = activeDestinations(call.model, *portset.owner);
    return countedList(call, 0, kDestination, numbers,
                       [](uint32_t number) { return Record(kDestination).put(0, number); });
}

Result getSessionIds(const Call &call, const Portset &portset) {
    std::vector<std::string_view> ids;
    if (portset.owner != nullptr) ids = mirrorSessionIds(*portset.owner);
    return countedList(call, 0, kSessionWidth, ids,
                       [](std::string_view id) { return Record(kSessionWidth).bytes(0, id); });
}

// A frame for which the receiver has no room counts as one for which there was no memory. A copy that no
// uplink could carry has no link.
void putSession(const Model &model, const std::string &slot, size_t at, Record *stats) {
    using namespace datapath;
    const auto value = [&](uint32_t number) { return slotValue(model, slot, number); };
    putCounters(*stats, at,
                {value(kMirrorTakenIn), value(kMirrorTakenInBytes), value(kMirrorTakenOut),
                 value(kMirrorTakenOutBytes), value(kMirroredPackets), value(kMirroredBytes),
                 value(kMirrorTruncated), value(kMirrorBusy), value(kMirrorDropped),
                 value(kMirrorNoLink) + value(kMirrorNoUplink), value(kMirrorSkipped)});
}

// The counters of a session are zero if it is disabled in all lists.
Result getSessionStats(const Call &call, const Portset &portset) {
    constexpr size_t kCountersAt = 32;
    constexpr size_t kActiveAt = 120;
    if (portset.owner == nullptr) return failure(ENOENT);
    const std::string_view name = textAt(call.input, SwitchRequest::kOwnAt, kSessionWidth);
    std::string_view id;
    bool found = false;
    bool active = false;
    forEachMirrorSession(*portset.owner, [&](const MirrorSession &session) {
        // If an identifier fills its field, a request cannot contain its last character.
        if (session.id.substr(0, kSessionWidth - 1) != name) return;
        if (!found) id = session.id;
        found = true;
        active = active || !session.disabled;
    });
    if (!found) return failure(ENOENT);
    Record stats(kSessionStats);
    stats.bytes(0, id).put(kActiveAt, static_cast<uint8_t>(active));
    const std::string slot = mirrorSlot(portset.number, id);
    if (active && hasSlot(call.model, slot)) {
        putSession(call.model, slot, kCountersAt, &stats);
    } else if (active) {
        const std::string object = "mirror session " + portset.name + "/" + std::string(id);
        stats.counters(kCountersAt, call.model.counters.read(object), kActiveAt);
    }
    return {0, stats.take()};
}

// This request has no input, because one agent serves the sessions of all switches.
Result getAgentStats(const Call &call) {
    constexpr size_t kCountersAt = 4;
    constexpr size_t kTakenAt = 12;
    using namespace datapath;
    size_t sessions = 0;
    uint64_t taken = 0;
    uint64_t takenBytes = 0;
    uint64_t sent = 0;
    uint64_t sentBytes = 0;
    uint64_t busy = 0;
    uint64_t noUplink = 0;
    for (const auto &[number, portset] : call.model.inventory.portsets()) {
        if (portset->owner == nullptr) continue;
        for (const std::string_view id : mirrorSessionIds(*portset->owner)) {
            ++sessions;
            const std::string slot = mirrorSlot(number, id);
            const auto value = [&](uint32_t which) { return slotValue(call.model, slot, which); };
            taken += value(kMirrorTakenIn) + value(kMirrorTakenOut);
            takenBytes += value(kMirrorTakenInBytes) + value(kMirrorTakenOutBytes);
            sent += value(kMirroredPackets);
            sentBytes += value(kMirroredBytes);
            busy += value(kMirrorBusy);
            noUplink += value(kMirrorNoUplink);
        }
    }
    Record stats(kAgentStats);
    stats.put(0, static_cast<uint32_t>(sessions));
    // What is taken is sent at once, without a wakeup, to addresses that are not routed.
    if (call.model.facts.memory != nullptr)
        return {
            0,
            putCounters(stats, kTakenAt, {taken, takenBytes, sent, sentBytes, busy, 0, noUplink, 0}).take()};
    return {0, stats.counters(kCountersAt, call.model.counters.read("mirror agent")).take()};
}

constexpr Command kCommands[] = {
    {0x1004, SwitchRequest::kSize, "GetPromiscSessionActiveDsts",
     on<requestedPortset, getPromiscSessionActiveDsts>},
    {0x1005, SwitchRequest::kSize, "GetDVMirrorSessionIDs", on<requestedPortset, getSessionIds>},
    {0x1006, SwitchRequest::kSize, "GetDVMirrorSessionStats", on<requestedPortset, getSessionStats>},
    {0x2007, 0, "GetDVMirrorAgentWorldStats", getAgentStats},
};

}  // namespace

constexpr DevicePart kVswitchMirror = {.commands = kCommands};

}  // namespace qvs::kernel
