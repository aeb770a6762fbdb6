// SPDX-License-Identifier: Apache-2.0
// qvs trace and qvs int: trace requests, the traceflow switch of a host, telemetry and port statistics.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

std::string switchTraced(const Arguments &arguments) {
    return named(arguments.text("SWITCH")) + ": traceflow";
}

std::vector<std::string> touchedEnabled(const Arguments &arguments) {
    return {touchedPath({arguments.text("SWITCH"), "host", QVS_KEY_TRACEFLOW_ENABLED})};
}

// Checks an address as the library does, which accepts groups of one digit. The library does not report which
// of two addresses is invalid.
void checkAddress(std::string_view name, const std::string &text) {
    MacAddress mac{};
    int length = 0;
    int groups = std::sscanf(text.c_str(), "%2hhx:%2hhx:%2hhx:%2hhx:%2hhx:%2hhx%n", &mac[0], &mac[1], &mac[2],
                             &mac[3], &mac[4], &mac[5], &length);
    if (groups != 6 || static_cast<size_t>(length) != text.size())
        fail(Exit::Usage, "{}: {} is not a MAC address", name, inQuotes(text));
}

void start(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    const std::string &source = arguments.text("SOURCE");
    const std::string &destination = arguments.text("DESTINATION");
    uint32_t word1 = arguments.number("--word1", 0);
    uint32_t word2 = arguments.number("--word2", 0);
    uint32_t half = arguments.number("--short", 0);
    uint64_t value1 = wideNumber(arguments, "--value1");
    uint64_t value2 = wideNumber(arguments, "--value2");
    requireFits(kPortIdLimit, port);
    findVswitch(alias);
    require(call<TFHYP_CreateRequest>(alias.c_str(), port.c_str(), source.c_str(), destination.c_str(), word1,
                                      word2, static_cast<uint16_t>(half), value1, value2),
            named(alias, port));
    reportPort(out, alias, port, true);
}

// Without the property, it is unknown whether the kernel held a request.
void clear(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    findVswitch(alias);
    require(call<TFHYP_ClearTraceflowConfig>(alias.c_str()), switchTraced(arguments));
    reportSwitch(out, alias, true);
}

template <bool on>
void enable(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    const std::optional<Property> stored =
        findProperty({Scope::Host, findVswitch(alias), nullptr}, QVS_KEY_TRACEFLOW_ENABLED);
    const bool same = on ? stored && stored->text() == "true" : !stored;
    if (!same) require(call<TFHYP_SetTraceflowConfig>(alias.c_str(), on ? 1 : 0), switchTraced(arguments));
    reportSwitch(out, alias, !same);
}

void stats(const Arguments &arguments, Output &out) {
    NumberedPort port = numberedPort(arguments);
    HeapBuffer stats = fetchRecord<TFHYP_GetPortStats>(port.named, port.number);
    printRecord(arguments, out, {"trace-stats", "stats", "statistics"},
                recordIn(stats, TFHYP_PORT_STATS_SIZE));
}

HeapBuffer readTelemetry() {
    return fetchRecord<TFHYP_GetINTConfig>("telemetry");
}

void getTelemetry(const Arguments &arguments, Output &out) {
    HeapBuffer config = readTelemetry();
    printRecord(arguments, out, {"telemetry", "config", "configuration"},
                recordIn(config, TFHYP_INT_CONFIG_SIZE));
}

void checkConfig(std::string_view name, const std::string &text) {
    const std::optional<std::vector<uint8_t>> config = parseHex(text);
    if (!config || config->size() != TFHYP_INT_CONFIG_SIZE)
        fail(Exit::Usage, "{}: {} is not {} bytes in hexadecimal", name, inQuotes(text),
             TFHYP_INT_CONFIG_SIZE);
}

void setTelemetry(const Arguments &arguments, Output &out) {
    const std::optional<std::vector<uint8_t>> config = parseHex(arguments.text("CONFIG"));
    HeapBuffer held = readTelemetry();
    bool same = std::equal(config->begin(), config->end(), recordIn(held, TFHYP_INT_CONFIG_SIZE).begin());
    if (!same) require(call<TFHYP_SetINTConfig>(config->data()), "telemetry");
    reportChange(out, "telemetry", {}, !same);
}

const Command kTraceRows[] = {
    {.words = "trace start",
     .summary = "have the kernel trace a flow through a port",
     .arguments = {kSwitchArgument,
                   kPortArgument,
                   {.name = "SOURCE",
                    .summary = "MAC address that the flow comes from",
                    .check = checkAddress},
                   {.name = "DESTINATION", .summary = "MAC address that it goes to", .check = checkAddress}},
     .options = {{.name = "--word1",
                  .value = "N",
                  .summary = "first word for the kernel, 32 bits (0)",
                  .check = checkNumber<0, UINT32_MAX>},
                 {.name = "--word2",
                  .value = "N",
                  .summary = "second word, 32 bits (0)",
                  .check = checkNumber<0, UINT32_MAX>},
                 {.name = "--short",
                  .value = "N",
                  .summary = "short word, 16 bits (0)",
                  .check = checkNumber<0, UINT16_MAX>},
                 {"--value1", "N", "first value, 64 bits (0)"},
                 {"--value2", "N", "second value, 64 bits (0)"}},
     .details = "What the words and values mean is the kernel's.",
     .example = "qvs trace start sw1 port0 02:00:00:00:00:01 02:00:00:00:00:02",
     .run = lasting(writes(start, touchedPort))},
    {.words = "trace clear",
     .summary = "switch tracing of a switch off, or have the kernel drop its requests",
     .arguments = {kSwitchArgument},
     .details = "While tracing is on, it is switched off; when it is off, the kernel drops what it holds.",
     .example = "qvs trace clear sw1",
     .run = lasting(writes(clear, touchedEnabled))},
    {.words = "trace enable",
     .summary = "switch tracing of a switch on this host on",
     .arguments = {kSwitchArgument},
     .example = "qvs trace enable sw1",
     .run = writes(enable<true>, touchedEnabled)},
    {.words = "trace disable",
     .summary = "switch tracing of a switch on this host off",
     .arguments = {kSwitchArgument},
     .example = "qvs trace disable sw1",
     .run = writes(enable<false>, touchedEnabled)},
    {.words = "trace stats",
     .summary = "show the trace statistics of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .more = kRecordOptions,
     .example = "qvs trace stats sw1 port0",
     .run = reads(stats, touchedPort)},
};

const Command kTelemetryRows[] = {
    {.words = "int get",
     .summary = "show the telemetry configuration",
     .more = kRecordOptions,
     .example = "qvs int get",
     .run = reads(getTelemetry, touchesNothing)},
    {.words = "int set",
     .summary = "write the telemetry configuration",
     .arguments = {{.name = "CONFIG", .summary = "6 bytes in hexadecimal", .check = checkConfig}},
     .example = "qvs int set 01:00:00:00:00:0a",
     .run = writes(setTelemetry, touchesNothing)},
};

}  // namespace

const std::span<const Command> kTraceCommands = kTraceRows;
const std::span<const Command> kTelemetryCommands = kTelemetryRows;

}  // namespace qvs::cli
