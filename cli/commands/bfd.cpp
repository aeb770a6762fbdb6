// SPDX-License-Identifier: Apache-2.0
// qvs bfd: sessions, log level and statistics of the kernel's forwarding detection.
#include <qvs/qvs.h>

#include <algorithm>
#include <array>
#include <string>

#include "access/opaque.h"
#include "access/requests.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr std::array<uint32_t, 4> kLogLevels = {0, 1, 3, 5};

constexpr RecordKind kSessions{"bfd-sessions", "sessions", "sessions"};

void checkFlags(std::string_view name, const std::string &text) {
    const uint32_t flags = numberIn(name, text, 0, UINT32_MAX);
    if (flags > UINT8_MAX || (flags & kAllBfdSessions) == 0)
        fail(Exit::Usage, "{}: {} is not a byte with bit 0 or bit 1 set", name, flags);
}

// The library would report other levels on standard output.
void checkLevel(std::string_view name, const std::string &text) {
    const uint32_t level = numberIn(name, text, 0, UINT32_MAX);
    if (std::find(kLogLevels.begin(), kLogLevels.end(), level) == kLogLevels.end())
        fail(Exit::Usage, "{}: {} is none of {}", name, level, fmt::join(kLogLevels, ", "));
}

void sessions(const Arguments &arguments, Output &out) {
    const uint32_t flags = arguments.number("--flags", kAllBfdSessions);
    HeapBuffer table = fetchRecord<BFD_GetSessions>("BFD sessions", static_cast<uint8_t>(flags));
    printRecord(arguments, out, kSessions, recordIn(table, BFD_SESSIONS_SIZE));
}

std::string levelText(uint32_t level) {
    return fmt::to_string(level);
}
std::string resultText(int32_t result) {
    return fmt::to_string(result);
}

uint32_t readLevel() {
    errno = 0;
    uint32_t level = traced<BFD_GetLogLevel>(levelText);
    if (level == BFD_NO_LOG_LEVEL) throw requestFailure("BFD log level", errno);
    return level;
}

void getLevel(const Arguments &, Output &out) {
    uint32_t level = readLevel();
    if (!out.json()) return out.write(fmt::format("{}\n", level));
    Record record(out);
    record.field("logLevel", "log level", level);
    record.finish();
}

void setLevel(const Arguments &arguments, Output &out) {
    uint32_t level = arguments.number("LEVEL", 0);
    bool same = readLevel() == level;
    errno = 0;
    if (!same && traced<BFD_SetLogLevel>(resultText, level) < 0) throw requestFailure("BFD log level", errno);
    reportChange(out, "log level", {}, !same);
}

void stats(const Arguments &arguments, Output &out) {
    HeapBuffer stats = fetchRecord<BFD_GetStats>("BFD statistics");
    printRecord(arguments, out, {"bfd-stats", "stats", "statistics"}, recordIn(stats, BFD_STATS_SIZE));
}

const Command kRows[] = {
    {.words = "bfd sessions",
     .summary = "show the kernel's table of sessions",
     .options = {{.name = "--flags",
                  .value = "N",
                  .summary = "a byte that says which sessions, bit 0 or bit 1 set (3)",
                  .check = checkFlags}},
     .more = kListOptions,
     .details = "The table is the kernel's own, 1139336 bytes.",
     .example = "qvs bfd sessions --raw sessions.bin",
     .run = reads(sessions, touchesNothing),
     .agrees = choosesWithin<kSessions>},
    {.words = "bfd log-level get",
     .summary = "print how much the kernel's module logs",
     .example = "qvs bfd log-level get",
     .run = reads(getLevel, touchesNothing)},
    {.words = "bfd log-level set",
     .summary = "say how much the kernel's module logs",
     .arguments = {{.name = "LEVEL", .summary = "0, 1, 3 or 5", .check = checkLevel}},
     .example = "qvs bfd log-level set 3",
     .run = writes(setLevel, touchesNothing)},
    {.words = "bfd stats",
     .summary = "show the statistics of the kernel's module",
     .more = kRecordOptions,
     .example = "qvs bfd stats",
     .run = reads(stats, touchesNothing)},
};

}  // namespace

const std::span<const Command> kBfdCommands = kRows;

}  // namespace qvs::cli
