// SPDX-License-Identifier: Apache-2.0
// qvs livetrace: live-trace sessions, what they count, and what they found on a port.
#include <qvs/qvs.h>

#include <string>

#include "access/opaque.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr RecordKind kSessions{"livetrace-sessions", "sessions", "sessions"};
constexpr RecordKind kCount{"livetrace-count", "entry", "count"};

// Reads the definition of a session: hexadecimal digits, or a file of bytes.
std::vector<uint8_t> definitionOf(const Arguments &arguments) {
    if (arguments.given("--file")) return readFile(arguments.text("--file"));
    if (!arguments.given("--hex")) return {};
    return *parseHex(arguments.text("--hex"));
}

void create(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    std::vector<uint8_t> definition = definitionOf(arguments);
    auto length = static_cast<uint32_t>(definition.size());
    definition.push_back(0);  // an empty one has an address, too
    requireFits(kPortIdLimit, port);
    findVswitch(alias);
    require(call<LIVETRACEHYP_CreateSession>(alias.c_str(), port.c_str(), definition.data(), length),
            named(alias, port) + ": live trace");
    reportPort(out, alias, port, true);
}

void list(const Arguments &arguments, Output &out) {
    HeapBuffer sessions = fetchRecord<LIVETRACEHYP_ListSession>("live-trace sessions");
    printRecord(arguments, out, kSessions, recordIn(sessions, LIVETRACEHYP_SESSION_LIST_SIZE));
}

void counts(const Arguments &arguments, Output &out) {
    uint32_t action = arguments.number("ACTION", 0);
    auto ask = [&] {
        return fetchRecord<LIVETRACEHYP_GetCountActionData>(fmt::format("live-trace action {}", action),
                                                            static_cast<uint8_t>(action));
    };
    printList(arguments, out, boundedList(ask, LIVETRACEHYP_ACTION_COUNT_SIZE, "action counts"), kCount);
}

void port(const Arguments &arguments, Output &out) {
    NumberedPort port = numberedPort(arguments);
    HeapBuffer data = fetchRecord<LIVETRACEHYP_GetPortData>(port.named, port.number);
    printRecord(arguments, out, {"livetrace-port", "data", "data"},
                recordIn(data, LIVETRACEHYP_PORT_DATA_SIZE));
}

void stats(const Arguments &arguments, Output &out) {
    HeapBuffer stats = fetchRecord<LIVETRACEHYP_GetStats>("live-trace statistics");
    printRecord(arguments, out, {"livetrace-stats", "stats", "statistics"},
                recordIn(stats, LIVETRACEHYP_STATS_SIZE));
}

const Command kRows[] = {
    {.words = "livetrace create",
     .summary = "create a live-trace session on a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{.name = "--hex",
                  .value = "BYTES",
                  .summary = "the session's definition in hexadecimal (none)",
                  .excludes = "--file",
                  .check = checkHex},
                 {"--file", "FILE", "the definition from FILE (- for standard input)", Kind::File}},
     .details = "What a definition means is the kernel's.",
     .example = "qvs livetrace create sw1 port0 --hex 01000000",
     .run = lasting(writes(create, touchedPort))},
    {.words = "livetrace list",
     .summary = "show the kernel's list of sessions",
     .more = kListOptions,
     .example = "qvs livetrace list",
     .run = reads(list, touchesNothing),
     .agrees = choosesWithin<kSessions>},
    {.words = "livetrace counts",
     .summary = "list what was counted under an action",
     .arguments = {{.name = "ACTION",
                    .summary = "the kernel's selector, 8 bits",
                    .check = checkNumber<0, UINT8_MAX>}},
     .more = kListOptions,
     .example = "qvs livetrace counts 1",
     .run = reads(counts, touchesNothing),
     .agrees = choosesFrom<kCount>},
    {.words = "livetrace port",
     .summary = "show what was found on a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .more = kRecordOptions,
     .example = "qvs livetrace port sw1 port0",
     .run = reads(port, touchedPort)},
    {.words = "livetrace stats",
     .summary = "show the statistics of live trace",
     .more = kRecordOptions,
     .example = "qvs livetrace stats",
     .run = reads(stats, touchesNothing)},
};

}  // namespace

const std::span<const Command> kLivetraceCommands = kRows;

}  // namespace qvs::cli
