// SPDX-License-Identifier: Apache-2.0
// qvs port stats: the counters of ports, and how they grow.
#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "access/library.h"
#include "access/overview.h"
#include "access/pace.h"
#include "config/library/clock.h"
#include "config/library/host.h"
#include "tool/output.h"
#include "views/nouns.h"
#include "views/rates.h"

namespace qvs::cli {
namespace {

constexpr std::chrono::milliseconds kInterval(1000);

struct Row {
    const SwitchFacts *facts;
    const PortFacts *port;
};

// The ports that a call names, with counters.
std::vector<Row> rowsOf(const Arguments &arguments, const std::vector<SwitchFacts> &all) {
    const bool one = arguments.given("PORT");
    std::vector<Row> rows;
    for (const SwitchFacts &facts : all)
        for (const PortFacts &port : facts.ports)
            if (!one || port.id == arguments.text("PORT")) rows.push_back({&facts, &port});
    if (one && rows.empty())
        throw libraryFailure(named(arguments.text("SWITCH"), arguments.text("PORT")), HYP_NOT_FOUND);
    if (one && !rows[0].port->counters)
        throw libraryFailure(named(arguments.text("SWITCH"), arguments.text("PORT")) + ": counters",
                             HYP_NOT_FOUND);
    std::erase_if(rows, [](const Row &row) { return !row.port->counters; });
    return rows;
}

std::vector<SwitchFacts> gather(const Arguments &arguments) {
    if (!arguments.given("SWITCH")) return gatherSwitches(Ask::NumbersAlone);
    std::vector<SwitchFacts> one;
    one.push_back(gatherSwitch(findSwitch(arguments.text("SWITCH")), Ask::NumbersAlone));
    return one;
}

// --- JSON ---

void appendMember(fmt::memory_buffer &out, std::string_view key, const auto &value) {
    appendJson(out, key);
    out.push_back(':');
    appendJson(out, value);
}

// The members of a port, with rates when there was a look before.
void appendPort(fmt::memory_buffer &out, const Row &row, const Rates *rates) {
    appendMember(out, "switch", row.facts->name());
    out.push_back(',');
    appendMember(out, "port", row.port->id);
    for (size_t i = 0; i < kCounters.size(); i++) {
        out.push_back(',');
        appendMember(out, kCounters[i].key, (*row.port->counters)[i]);
    }
    if (rates == nullptr) return;
    const std::optional<RateValues> values = rates->rateOf(row.facts->id, row.port->id);
    if (!values) {
        out.append(std::string_view(",\"perSecond\":null"));
        return;
    }
    const char *between = ",\"perSecond\":{";
    for (size_t i = 0; i < kCounters.size(); i++) {
        out.append(std::string_view(between));
        appendMember(out, kCounters[i].key, Rate{(*values)[i]});
        between = ",";
    }
    out.push_back('}');
}

void printObjects(Output &out, const std::vector<Row> &rows) {
    const char *between = "\n{";
    out.write("[");
    for (const Row &row : rows) {
        out.write(between);
        appendPort(out.buffer(), row, nullptr);
        out.write("}");
        between = ",\n{";
    }
    out.write(rows.empty() ? "]\n" : "\n]\n");
}

// A line for each port, so that readers can follow.
void printLines(Output &out, const std::vector<Row> &rows, const Rates &rates) {
    const std::string time = utcTime(true);
    for (const Row &row : rows) {
        out.write("{\"time\":\"" + time + "\",");
        appendPort(out.buffer(), row, &rates);
        out.write("}\n");
    }
}

// --- text ---

// Both directions of a counter in one row.
void printPort(Output &out, const Row &row, const Rates *rates) {
    std::vector<Column> columns = {{nullptr, "COUNTER"}, {nullptr, "IN"}, {nullptr, "OUT"}};
    std::optional<RateValues> growth;
    if (rates != nullptr) {
        columns.push_back({nullptr, "IN/S"});
        columns.push_back({nullptr, "OUT/S"});
        growth = rates->rateOf(row.facts->id, row.port->id);
    }
    Listing listing(out, std::move(columns));
    for (size_t in = 0; in < kCounters.size(); in++) {
        const Counter &counter = kCounters[in];
        if (counter.direction != Direction::In) continue;
        const auto *pair = std::ranges::find_if(kCounters, [&](const Counter &each) {
            return each.direction == Direction::Out && each.kind == std::string_view(counter.kind) &&
                   each.unit == std::string_view(counter.unit);
        });
        const auto outAt = static_cast<size_t>(pair - kCounters.begin());
        const std::string name = fmt::format("{} {}", counter.kind, counter.unit);
        const uint64_t valueIn = (*row.port->counters)[in];
        const uint64_t valueOut = (*row.port->counters)[outAt];
        if (rates == nullptr) {
            listing.row(std::string_view(name), valueIn, valueOut);
            continue;
        }
        const auto rate = [&](size_t at) { return growth ? Rate{(*growth)[at]} : Rate{}; };
        listing.row(std::string_view(name), valueIn, valueOut, rate(in), rate(outAt));
    }
    listing.finish();
}

// The columns of several ports. The switch stands in a column of its own unless the call names it.
std::vector<Column> columnsOfTraffic(bool withSwitch, bool perSecond) {
    std::vector<Column> columns = {{nullptr, withSwitch ? "SWITCH" : nullptr}, {nullptr, "PORT"}};
    constexpr const char *kHeadings[][2] = {
        {"PKT IN", "PKT IN/S"},       {"PKT OUT", "PKT OUT/S"}, {"BYTES IN", "BYTES IN/S"},
        {"BYTES OUT", "BYTES OUT/S"}, {"DROP IN", "DROP IN/S"}, {"DROP OUT", "DROP OUT/S"},
    };
    for (const auto &heading : kHeadings)
        columns.push_back({nullptr, heading[perSecond ? 1 : 0], true});
    return columns;
}

void printSums(Output &out, const std::vector<Row> &rows, bool withSwitch) {
    Listing listing(out, columnsOfTraffic(withSwitch, false));
    for (const Row &row : rows) {
        const auto sums = trafficOf(*row.port->counters);
        listing.row(row.facts->name(), row.port->id, sums.packetsIn, sums.packetsOut, sums.bytesIn,
                    sums.bytesOut, sums.droppedIn, sums.droppedOut);
    }
    listing.finish();
}

void printRates(Output &out, const std::vector<Row> &rows, const Rates &rates, bool withSwitch) {
    Listing listing(out, columnsOfTraffic(withSwitch, true));
    for (const Row &row : rows) {
        const std::optional<RateValues> growth = rates.rateOf(row.facts->id, row.port->id);
        if (!growth) {
            const Rate none;
            listing.row(row.facts->name(), row.port->id, none, none, none, none, none, none);
            continue;
        }
        const auto sums = trafficOf(*growth);
        listing.row(row.facts->name(), row.port->id, Rate{sums.packetsIn}, Rate{sums.packetsOut},
                    Rate{sums.bytesIn}, Rate{sums.bytesOut}, Rate{sums.droppedIn}, Rate{sums.droppedOut});
    }
    listing.finish();
}

void printLook(const Arguments &arguments, Output &out, Rates &rates) {
    const std::vector<SwitchFacts> all = gather(arguments);
    rates.look(all, snapshotTime);
    const std::vector<Row> rows = rowsOf(arguments, all);
    if (out.json()) return printLines(out, rows, rates);
    out.write(utcTime(true) + "\n");
    if (arguments.given("PORT")) {
        printPort(out, rows[0], &rates);
    } else {
        printRates(out, rows, rates, !arguments.given("SWITCH"));
    }
    out.write("\n");
}

void printHost(Output &out, std::string_view text) {
    if (!out.json()) return out.write(utcTime(true) + " " + std::string(text) + "\n");
    out.write("{\"time\":\"" + utcTime(true) + "\",\"host\":");
    appendJson(out.buffer(), text);
    out.write("}\n");
}

void watch(const Arguments &arguments, Output &out) {
    const std::chrono::milliseconds time = intervalGiven(arguments, kInterval);
    Rates rates;
    printLook(arguments, out, rates);
    out.flush();
    endOnSignals();
    for (bool gone = false;;) {
        pause(time);
        const HYP_ReturnStatus status = loadSnapshot();
        if (status == HYP_OK) {
            printLook(arguments, out, rates);
        } else if (!gone) {
            printHost(out, fmt::format("the host is gone: {}", ReturnStatusToString(status)));
        }
        gone = status != HYP_OK;
        out.flush();
    }
}

void stats(const Arguments &arguments, Output &out) {
    if (arguments.given("--watch")) return watch(arguments, out);
    const std::vector<SwitchFacts> all = gather(arguments);
    const std::vector<Row> rows = rowsOf(arguments, all);
    if (!out.json() && arguments.given("PORT")) return printPort(out, rows[0], nullptr);
    if (!out.json()) return printSums(out, rows, !arguments.given("SWITCH"));
    printObjects(out, rows);
}

const Command kRows[] = {
    {.words = "port stats",
     .summary = "show the counters of ports, or with --watch how they grow",
     .arguments = {{"SWITCH", "alias of a switch; all switches without one", Kind::Switch, true},
                   {"PORT", "identifier of a port; all ports without one", Kind::Port, true}},
     .options = {{"--watch", nullptr, "show them again and again, with their growth per second"},
                 intervalOption("look at the host so often; a fraction is allowed (1)", "--watch")},
     .details =
         "Of one port, all sixteen counters are shown; of several, the sums over unicast, multicast and "
         "broadcast, and what was dropped. JSON has all counters of each port; with --watch, a line for each "
         "port. --watch ends with SIGINT or SIGTERM, with "
         "exit status 0, or when nobody reads its output any more. Of a counter that was set back no growth "
         "is shown.",
     .example = "qvs port stats sw1 port0 --watch --interval 5",
     .run = reads(stats)},
};

}  // namespace

const std::span<const Command> kPortStatsCommands = kRows;

}  // namespace qvs::cli
