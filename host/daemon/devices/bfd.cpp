// SPDX-License-Identifier: Apache-2.0
// The device of Bidirectional Forwarding Detection: sessions, which labs define, log level and statistics.
// The flags of a request for sessions select the address families.
//
// Records in layouts/emulated.json: bfd-sessions, bfd-stats.
#include <cerrno>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr size_t kTableSize = 1139336;
constexpr size_t kTableHead = 8;
constexpr size_t kEntry = 128;
constexpr uint32_t kRoom = (kTableSize - kTableHead) / kEntry;
constexpr uint8_t kFamilies = 3;
constexpr size_t kStats = 64;

// A stored session is the start of its entry. The place of the number contains the port, which is 0.
constexpr size_t kStateAt = 8;
constexpr size_t kFamilyAt = 10;
constexpr size_t kLocalAt = 24;
constexpr size_t kRemoteAt = 40;
constexpr size_t kInterfaceAt = 56;
constexpr size_t kInterface = 32;
constexpr size_t kSentAt = 88;
constexpr size_t kReceivedAt = 96;

enum State : uint8_t { AdminDown, Down, Init, Up };
constexpr const char *kStates[] = {"admin-down", "down", "init", "up"};

bool isSession(std::string_view kept) {
    if (kept.size() != kInterfaceAt + kInterface) return false;
    const auto family = u8At(kept, kFamilyAt);
    return u8At(kept, kStateAt) <= Up && (family == 1 || family == 2);
}

constexpr bool isLogLevel(uint32_t level) {
    return level == 0 || level == 1 || level == 3 || level == 5;
}

bool isStoredLevel(std::string_view kept) {
    return kept.size() == sizeof(uint32_t) && isLogLevel(u32At(kept, 0));
}

constexpr RecordTable kSessions("bfd.sessions", kRecordKey, kBytes<isSession>, kRoom);
constexpr Setting<std::string> kLogLevel("bfd", "logLevel", kBytes<isStoredLevel>);
constexpr const AnyTable *kTables[] = {&kSessions, &kLogLevel};

Record entryOf(Model &model, uint32_t number, std::string_view session) {
    constexpr uint32_t kOtherEnd = 0x80000000;
    Record entry(kEntry);
    entry.bytes(0, session).put(0, number);
    CounterRow counters = model.counters.read(fmt::format("bfd session {}", number));
    entry.put(kSentAt, counters.next());
    if (session[kStateAt] == Up) entry.put(4, number | kOtherEnd).put(kReceivedAt, counters.next());
    return entry;
}

Result getSessions(const Call &call) {
    const auto wanted = static_cast<uint8_t>(call.input[0] & kFamilies);
    if (wanted == 0) return failure(EINVAL);
    Record table(kTableSize);
    uint32_t count = 0;
    eachRecord(call.model, kSessions, [&](uint32_t number, std::string_view session) {
        if ((session[kFamilyAt] & wanted) == 0) return;
        table.bytes(kTableHead + count++ * kEntry, entryOf(call.model, number, session).view());
    });
    table.put(0, count).put(4, kRoom);
    return {0, table.take()};
}

constexpr uint32_t kDefaultLevel = 1;

uint32_t logLevel(const Model &model) {
    const auto &level = model.tables.get(kLogLevel);
    return level ? u32At(*level, 0) : kDefaultLevel;
}

void keepLogLevel(Model &model, uint32_t level) {
    model.tables.set(kLogLevel, Record(sizeof level).put(0, level).take());
}

Result getLogLevel(const Call &call) {
    return {0, Record(sizeof(uint32_t)).put(0, logLevel(call.model)).take()};
}

Result setLogLevel(const Call &call) {
    const uint32_t level = u32At(call.input, 0);
    if (!isLogLevel(level)) return failure(EINVAL);
    keepLogLevel(call.model, level);
    return {};
}

Result getStats(const Call &call) {
    return {0, Record(kStats).counters(0, call.model.counters.read("bfd")).take()};
}

constexpr Command kCommands[] = {
    {2, 1, "GetSessions", getSessions},
    {3, 0, "GetLogLevel", getLogLevel},
    {4, sizeof(uint32_t), "SetLogLevel", setLogLevel},
    {5, 0, "GetStats", getStats},
};

std::string addressOf(Members &members, const char *name) {
    const auto address = parseIp(members.text(name));
    if (!address) members.fail(name, "is not an IP address");
    return *address;
}

void addSessions(Members &members, Model &model) {
    const std::string local = addressOf(members, "local");
    const std::string remote = addressOf(members, "remote");
    if (local.size() != remote.size()) members.fail("remote", "is of another family than \"local\"");
    const uint8_t family = local.size() == 4 ? 1 : 2;
    const auto state = static_cast<uint8_t>(members.maybeChoice("state", kStates).value_or(Up));
    const uint32_t milliseconds = members.maybeNumber("intervalMs", 1, 10000).value_or(300);
    const uint32_t multiplier = members.maybeNumber("multiplier", 1, 255).value_or(3);
    const uint32_t interval = milliseconds * 1000;
    const uint32_t count = countOf(members, roomIn(model, kSessions));

    Record session(kInterfaceAt + kInterface);
    session.put(kStateAt, state).put(9, uint8_t{state == Down}).put(kFamilyAt, family);
    session.put(11, static_cast<uint8_t>(multiplier)).put(12, interval).put(16, interval * multiplier);
    session.bytes(kLocalAt, local);
    session.text(kInterfaceAt, kInterface, members.maybeText("interface").value_or(""));
    eachAddress(members, count, remote, [&](const std::string &address) {
        appendRecord(model, kSessions, session.bytes(kRemoteAt, address).view());
    });
}

void readLab(Members &members, Model &model) {
    if (const auto level = members.maybeNumber("logLevel")) {
        if (!isLogLevel(*level)) members.fail("logLevel", "is none of 0, 1, 3 and 5");
        keepLogLevel(model, *level);
    }
    if (members.has("sessions")) clearTable(model, kSessions);
    members.each("sessions", [&](Members &session) { addSessions(session, model); });
}

void applyLab(Members &lab, Model &model) {
    lab.object("bfd", [&](Members &members) { readLab(members, model); });
}

constexpr LabMember kLab[] = {{"bfd", applyLab}};

void describe(const Model &model, nlohmann::json *status) {
    (*status)["bfd"] = {{"sessions", countRecords(model, kSessions)}, {"logLevel", logLevel(model)}};
}

}  // namespace

constexpr DevicePart kBfd = {.commands = kCommands, .lab = kLab, .tables = kTables, .describe = describe};

}  // namespace qvs::kernel
