// SPDX-License-Identifier: Apache-2.0
// qvs fleet apply, rollback, stop and drain.
#include <algorithm>
#include <filesystem>
#include <set>

#include "agent/fleet/fleet.h"
#include "agent/fleet/publish.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/document/merge.h"
#include "config/document/reader.h"
#include "config/library/clock.h"
#include "tool/values.h"

namespace qvs::fleet {
namespace {

using cli::Arguments;
using cli::Command;
using cli::Output;
using Kind = DocumentOf::Kind;

// Reads all files, and reports the problems of all of them at once.
std::vector<FleetFile> readFiles(const Arguments &arguments) {
    std::vector<FleetFile> files;
    std::vector<config::Problem> problems;
    std::map<std::pair<Kind, std::string>, std::string> seen;
    for (const std::string &path : arguments.all("FILE")) {
        const std::vector<uint8_t> bytes = cli::readFile(path, config::kMostDocumentBytes);
        const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        FleetFile file = readFleetFile(text, path, std::filesystem::path(path).stem().string(), problems);
        const auto [other, isNew] = seen.emplace(std::pair(file.of.kind, file.of.name), path);
        if (!isNew && file.of.kind != Kind::Switch)
            problems.push_back(
                {path, 1, 1, "", fmt::format("{} is already for {}", other->second, file.of.name)});
        files.push_back(std::move(file));
    }
    std::string message;
    for (const config::Problem &problem : problems)
        message += (message.empty() ? "" : "\n") + messageOf(problem);
    if (!message.empty()) throw Failure{Exit::Usage, message};
    return files;
}

// Two groups, or two documents for all hosts, must not set different values on one host, because the result
// would depend on their order.
void requireAgreement(const Fleet &fleet, const std::vector<FleetFile> &files) {
    for (size_t one = 0; one < files.size(); one++)
        for (size_t other = one + 1; other < files.size(); other++) {
            if (files[one].of.kind != files[other].of.kind || files[one].of.kind == Kind::Host) continue;
            const auto shared = std::ranges::find_if(fleet.hosts(), [&](const auto &host) {
                return isFor(files[one].of, host.first, host.second) &&
                       isFor(files[other].of, host.first, host.second);
            });
            if (shared == fleet.hosts().end()) continue;
            const auto paths = config::disagreements(files[one].document, files[other].document);
            if (!paths.empty())
                fail(Exit::Usage, "{} and {} disagree about {}, and both are for host {}", files[one].of.name,
                     files[other].of.name, paths.front(), shared->first);
        }
}

void apply(const Arguments &arguments, Output &out) {
    const std::vector<FleetFile> files = readFiles(arguments);
    Fleet fleet(arguments);
    requireAgreement(fleet, files);
    Manifest manifest;
    std::map<std::string, std::string> texts;
    for (const FleetFile &file : files) {
        manifest.documents.push_back(file.of);
        texts[file.of.digest] = file.text;
        fleet.add(file);
    }
    publish(fleet, std::move(manifest), texts, arguments, out);
}

void rollback(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    const uint64_t number = cli::wideNumber(arguments, "REVISION");
    if (number == 0) fail(Exit::Usage, "revisions begin with 1");
    const Manifest old = fleet.revision(number);
    Manifest manifest;
    manifest.documents = old.documents;
    manifest.copies = old.copies != 0 ? old.copies : old.revision;
    publish(fleet, std::move(manifest), {}, arguments, out);
}

void stop(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    const KeyNames &keys = fleet.keys();
    for (;;) {
        Head head = fleet.view().head;
        const bool running = head.isUnderWay();
        if (running) {
            head.state = State::Stopped;
            head.reason = "stopped by an operator";
            Transaction transaction;
            transaction.comparisons = {{keys.head(), Comparison::What::Modified, fleet.view().headModified}};
            transaction.puts = {
                {keys.head(), write(head)},
                {keys.result(head.revision), write(Result{head.state, head.reason, utcTime()})}};
            if (!fleet.store().commit(transaction)) {
                fleet.read();
                continue;
            }
        }
        const std::string name = fmt::format("revision {}", head.revision);
        return cli::reportChange(out, name, {}, running);
    }
}

void drain(const Arguments &arguments, Output &out) {
    Fleet fleet(arguments);
    const std::string &host = arguments.text("HOST");
    (void)fleet.labelsOf(host);
    const std::string key = fleet.keys().drain(host);
    const bool undo = arguments.given("--undo");
    Transaction transaction;
    transaction.comparisons = {{key, Comparison::What::Created, 0}};
    if (!undo) transaction.puts = {{key, utcTime()}};
    const bool absent = fleet.store().commit(transaction);
    if (undo && !absent) (void)fleet.store().commit({{}, {}, {{key}}});
    cli::reportChange(out, host, {{"host", host}}, undo != absent);
}

const Command kRows[] = {
    {.words = "apply",
     .summary = "publish documents as the next revision of the fleet, and roll it out",
     .arguments = {{"FILE", "a document; all of them are the new revision", cli::Kind::File, false, true}},
     .more = kRolloutOptions,
     .details =
         "A revision consists of the documents that are given, and of no others. A document is for all "
         "hosts, or begins with 'group: NAME' and 'labels: {NAME: VALUE}', or with 'host: NAME'. Where "
         "several are for a host, the host's own wins over those of groups, and these win over those for "
         "all hosts. The coordinating agent goes on with the rollout when this command is interrupted. The "
         "exit "
         "status is 1 when a rollout was stopped or taken back.",
     .example = "qvs fleet apply fleet/*.yaml --canary 1 --batch 10 --rollback-on-failure",
     .run = cli::local(apply)},
    {.words = "rollback",
     .summary = "publish the documents of an earlier revision again, and roll them out",
     .arguments = {{"REVISION", "the number of the revision"}},
     .more = kRolloutOptions,
     .example = "qvs fleet rollback 3",
     .run = cli::local(rollback)},
    {.words = "stop",
     .summary = "end the rollout; hosts keep what they have",
     .example = "qvs fleet stop",
     .run = cli::local(stop)},
    {.words = "drain",
     .summary = "leave a host out of rollouts",
     .arguments = {{"HOST", "name of the host"}},
     .options = {{"--undo", nullptr, "let the host take part again"}},
     .details = "A drained host keeps the revision that it has.",
     .example = "qvs fleet drain h7",
     .run = cli::local(drain)},
};

}  // namespace

const std::span<const Command> kChangeCommands = kRows;

}  // namespace qvs::fleet
