// SPDX-License-Identifier: Apache-2.0
// /dev/livetrace: sessions, which exist as long as their ports, and their statistics.
//
// A request that creates a session contains the switch identifier at 0 (64 bytes), the port identifier at 64
// (48 bytes) and a definition of any length at 112. A request for action counts contains an action at 8 and a
// phase at 9 (1: count, 2: fetch).
//
// Records in layouts/emulated.json: livetrace-sessions, livetrace-count, livetrace-port, livetrace-stats.
#include <cerrno>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kHead = 112;

constexpr size_t kRoom = 8;
constexpr size_t kSession = 88;
constexpr size_t kDefinitionShown = 28;
constexpr size_t kList = 1 + kRoom * kSession;
static_assert(kList == 705);

constexpr uint32_t kActionRequest = 10;
constexpr uint8_t kActions = 4;
constexpr size_t kCountsHead = 8;
constexpr size_t kCount = 26;
constexpr size_t kPortData = 21;
constexpr size_t kStats = 96;

// A stored session: u32 port number and the definition.
constexpr size_t kDefinitionAt = 4;

bool isSession(std::string_view kept) {
    return kept.size() >= kDefinitionAt && u32At(kept, 0) != 0;
}

constexpr RecordTable kSessions("livetrace.sessions", kRecordKey, kBytes<isSession>, kRoom);
constexpr const AnyTable *kTables[] = {&kSessions};

// Adds a session. Returns false if the table is full.
bool addSession(Model &model, const Port &port, std::string_view definition) {
    dropDeadRecords(model, kSessions);
    if (roomIn(model, kSessions) == 0) return false;
    Record kept(kDefinitionAt + definition.size());
    appendRecord(model, kSessions, kept.put(0, port.number).bytes(kDefinitionAt, definition).view());
    return true;
}

Result createSession(const Call &call, const Port &port) {
    return failure(addSession(call.model, port, call.input.substr(kHead)) ? 0 : ENOSPC);
}

Result listSessions(const Call &call) {
    Record list(kList);
    uint8_t count = 0;
    eachRecord(call.model, kSessions, [&](uint32_t number, std::string_view kept) {
        const size_t at = 1 + count++ * kSession;
        const Port &port = *call.model.inventory.findPort(u32At(kept, 0));
        const std::string_view definition = kept.substr(kDefinitionAt);
        list.put(at, number).put(at + 4, port.number).text(at + 8, kPortIdField, port.id);
        list.put(at + 56, static_cast<uint32_t>(definition.size()));
        list.bytes(at + 60, definition.substr(0, kDefinitionShown));
    });
    return {0, list.put(0, count).take()};
}

Record countOf(Model &model, uint8_t action, uint32_t session, uint32_t port) {
    CounterRow counters = model.counters.read(fmt::format("livetrace session {} action {}", session, action));
    Record count(kCount);
    count.put(0, session).put(4, port).put(8, counters.next()).put(16, counters.next());
    return count.put(24, uint16_t{action});
}

Result getActionCounts(const Call &call) {
    enum Phase : uint8_t { AskCount = 1, Fetch = 2 };
    const auto action = u8At(call.input, 8);
    const auto phase = u8At(call.input, 9);
    if (phase != AskCount && phase != Fetch) return failure(EINVAL);
    const size_t room = call.outLength < kCountsHead ? 0 : (call.outLength - kCountsHead) / kCount;
    uint32_t count = 0;
    std::string entries;
    if (action < kActions) {
        eachRecord(call.model, kSessions, [&](uint32_t session, std::string_view kept) {
            if (phase == Fetch && count == room) return;
            ++count;
            if (phase == Fetch) entries += countOf(call.model, action, session, u32At(kept, 0)).view();
        });
    }
    return {0, Record(kCountsHead).put(0, count).put(4, uint32_t{action}).take() + entries};
}

Result getPortData(const Call &call, const Port &port) {
    const uint32_t number = port.number;
    uint8_t sessions = 0;
    eachRecord(call.model, kSessions, [&](uint32_t, std::string_view kept) {
        if (u32At(kept, 0) == number) ++sessions;
    });
    CounterRow counters = call.model.counters.read(fmt::format("livetrace {}", number));
    Record data(kPortData);
    data.put(0, number).put(4, counters.next()).put(12, counters.next());
    return {0, data.put(20, sessions).take()};
}

Result getStats(const Call &call) {
    Record stats(kStats);
    stats.put(0, static_cast<uint32_t>(countRecords(call.model, kSessions))).put(4, uint32_t{kRoom});
    return {0, stats.counters(8, call.model.counters.read("livetrace")).take()};
}

constexpr Command kCommands[] = {
    {0, kHead, "CreateSession", on<requestedDvPort<64>, createSession>},
    {1, 0, "ListSession", listSessions},
    {2, kActionRequest, "GetCountActionData", getActionCounts},
    {3, sizeof(uint32_t), "GetPortData", on<numberedPort, getPortData>},
    {4, 0, "GetStats", getStats},
};

// Replaces the sessions.
void applySessions(Members &lab, Model &model) {
    clearTable(model, kSessions);
    lab.each("liveTrace", [&](Members &members) {
        const Port &port = portOf(members, model);
        if (!addSession(model, port, members.maybeBytes("definition").value_or("")))
            members.fail("port", "exceeds the limit of 8 sessions");
    });
}

constexpr LabMember kLab[] = {{"liveTrace", applySessions}};

void describe(const Model &model, nlohmann::json *status) {
    auto sessions = nlohmann::json::array();
    eachRecord(model, kSessions, [&](uint32_t number, std::string_view kept) {
        const Port &port = *model.inventory.findPort(u32At(kept, 0));
        sessions.push_back({{"number", number},
                            {"switch", port.owner->id},
                            {"port", port.id},
                            {"definition", hexDigits(kept.substr(kDefinitionAt))}});
    });
    (*status)["liveTrace"] = sessions;
}

}  // namespace

constexpr DevicePart kLivetrace = {
    .commands = kCommands, .lab = kLab, .tables = kTables, .describe = describe};

}  // namespace qvs::kernel
