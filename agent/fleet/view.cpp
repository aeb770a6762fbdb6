// SPDX-License-Identifier: Apache-2.0
// qvs fleet status, hosts, history and diff.
#include <algorithm>

#include "agent/fleet/fleet.h"
#include "agent/fleet/publish.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/library/clock.h"

namespace qvs::fleet {
namespace {

using cli::Arguments;
using cli::Command;
using cli::Output;
using Text = std::optional<std::string_view>;

Text orNothing(const std::string &text) {
    return text.empty() ? std::nullopt : Text(text);
}

cli::Words wordsOf(const std::set<std::string> &names) {
    return {{names.begin(), names.end()}};
}

void printStatus(const Fleet &fleet, const View &view, Output &out) {
    const Progress progress = progressOf(view);
    uint64_t drifting = 0;
    for (const auto &[host, status] : view.statuses)
        drifting += status.drift != 0 ? 1 : 0;
    cli::Record record(out);
    record.field("revision", "revision", view.head.revision);
    record.field("state", "state", std::string_view(wordOf(view.head.state)));
    record.field("reason", "reason", orNothing(view.head.reason));
    record.field("base", "last complete", view.head.base);
    record.field("wave", "wave", view.head.revision == 0 ? std::nullopt : std::optional(view.head.wave + 1));
    record.field("waves", "waves", view.manifest.waves);
    record.field("hosts", "hosts", uint64_t{fleet.hosts().size()});
    record.field("up", "up", uint64_t{view.statuses.size()});
    record.field("open", "in open waves", uint64_t{progress.hosts});
    record.field("done", "done", uint64_t{progress.done});
    record.field("waiting", "waiting", wordsOf(progress.waiting));
    record.field("away", "away", wordsOf(progress.away));
    record.field("failed", "failed", wordsOf(progress.failed));
    record.field("drained", "drained", cli::Words{{view.drained.begin(), view.drained.end()}});
    record.field("drifting", "drifting", drifting);
    record.field("coordinator", "coordinator", orNothing(view.coordinator));
    record.finish();
}

void status(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    if (!arguments.given("--watch")) return printStatus(fleet, fleet.view(), out);
    for (std::string last;;) {
        const std::string line = progressLine(fleet.view());
        if (line != last && out.json()) printStatus(fleet, fleet.view(), out);
        if (line != last && !out.json()) out.write(fmt::format("{} {}\n", utcTime(), line));
        last = line;
        out.flush();
        fleet.await();
    }
}

void hosts(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    const View &view = fleet.view();
    cli::Listing listing(out, {{"host", "HOST"},
                               {"state", "STATE"},
                               {"revision", "REVISION"},
                               {"drift", "DRIFT"},
                               {"reported", "REPORTED", true},
                               {"labels", "LABELS", true},
                               {"problem", "PROBLEM"},
                               {"differences", nullptr}});
    for (const auto &[host, labels] : fleet.hosts()) {
        const auto found = view.statuses.find(host);
        const Status *status = found == view.statuses.end() ? nullptr : &found->second;
        std::vector<std::string> pairs;
        for (const auto &[name, value] : labels)
            pairs.push_back(fmt::format("{}={}", name, value));
        const std::string problem = status == nullptr          ? ""
                                    : !status->problem.empty() ? status->problem
                                    : status->refused != 0
                                        ? fmt::format("{}: {}", status->step, status->reason)
                                        : "";
        const char *state = view.drained.contains(host) ? "drained"
                            : status == nullptr         ? "away"
                            : !status->problem.empty()  ? "failing"
                            : status->refused != 0      ? "refused"
                                                        : "up";
        const cli::Words differences =
            status == nullptr ? cli::Words{}
                              : cli::Words{{status->differences.begin(), status->differences.end()}};
        listing.row(std::string_view(host), std::string_view(state),
                    status == nullptr ? std::nullopt : std::optional(status->revision),
                    status == nullptr ? std::nullopt : std::optional(status->drift),
                    status == nullptr ? std::nullopt : orNothing(status->time),
                    cli::Words{{pairs.begin(), pairs.end()}}, orNothing(problem), differences);
    }
    listing.finish();
}

void history(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    std::map<uint64_t, Result> results;
    const std::string prefix = fleet.keys().results();
    for (const Entry &entry : fleet.store().range({prefix, true}).entries)
        if (const auto number = parseWideNumber(entry.key.substr(prefix.size())))
            results[*number] = readResult(entry.value);
    cli::Listing listing(out, {{"revision", "REVISION"},
                               {"time", "TIME"},
                               {"author", "AUTHOR"},
                               {"state", "STATE"},
                               {"waves", "WAVES"},
                               {"copies", nullptr},
                               {"message", "MESSAGE"},
                               {"reason", "REASON"}});
    for (const Entry &entry : fleet.store().range({fleet.keys().revisions(), true}).entries) {
        const Manifest manifest = readManifest(entry.value);
        const auto result = results.find(manifest.revision);
        const bool ended = result != results.end();
        const State state = ended ? result->second.state : fleet.view().head.state;
        listing.row(manifest.revision, std::string_view(manifest.time), std::string_view(manifest.author),
                    std::string_view(wordOf(state)), manifest.waves,
                    manifest.copies == 0 ? std::nullopt : std::optional(manifest.copies),
                    orNothing(manifest.message), ended ? orNothing(result->second.reason) : std::nullopt);
    }
    listing.finish();
}

void diff(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    std::vector<std::string> names;
    if (arguments.given("HOST")) {
        (void)fleet.labelsOf(arguments.text("HOST"));
        names.push_back(arguments.text("HOST"));
    } else {
        for (const auto &[host, labels] : fleet.hosts())
            names.push_back(host);
    }
    const std::vector<HostsPlan> plans =
        plansFor(fleet, names, fleet.revision(fleet.view().head.revision).documents);
    print(plans, out);
    bool drifts = false;
    for (const std::string &host : names) {
        const auto status = fleet.view().statuses.find(host);
        if (status == fleet.view().statuses.end() || status->second.drift == 0) continue;
        drifts = true;
        if (out.json()) continue;
        out.write(fmt::format("{} was changed by hand; to undo that:\n", host));
        for (const std::string &line : status->second.differences)
            out.write(shown(line) + '\n');
    }
    if (!plans.empty() || drifts) out.exitWith(static_cast<int>(Exit::Differs));
}

const Command kRows[] = {
    {.words = "status",
     .summary = "show the published revision, and how far its rollout is",
     .options = {{"--watch", nullptr, "print a line for each change until interrupted"}},
     .example = "qvs fleet status --watch",
     .run = cli::local(status)},
    {.words = "hosts",
     .summary = "list the hosts with their revision, their labels, and what differs on them",
     .details =
         "A host is away when its agent was not heard of for the time of its lease. It is failing when "
         "its agent cannot read or change the switches, or cannot write to its disk.",
     .example = "qvs fleet hosts",
     .run = cli::local(hosts)},
    {.words = "history",
     .summary = "list the revisions and how their rollouts ended",
     .example = "qvs fleet history",
     .run = cli::local(history)},
    {.words = "diff",
     .summary = "show what hosts lack of the published revision, and what was changed on them by hand",
     .arguments = {{"HOST", "name of the host; all without", cli::Kind::Word, true}},
     .details =
         "The exit status is 4 when there is a difference. The JSON has the changes by hand in the list "
         "of hosts.",
     .example = "qvs fleet diff h7",
     .run = cli::local(diff)},
};

}  // namespace

const std::span<const Command> kViewCommands = kRows;

}  // namespace qvs::fleet
