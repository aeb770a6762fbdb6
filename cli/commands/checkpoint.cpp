// SPDX-License-Identifier: Apache-2.0
// qvs checkpoint: saves the state of switches under a name, and restores it.
#include "config/apply/checkpoint.h"

#include "access/changes.h"
#include "commands/apply.h"
#include "commands/nouns.h"
#include "config/document/export.h"
#include "config/document/write.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::Checkpoint;
using config::Checkpoints;
using config::Document;

void checkName(std::string_view, const std::string &name) {
    config::requireCheckpointName(name);
}

constexpr Argument kName{.name = "NAME",
                         .summary = "name of the checkpoint: letters, digits, '.', '_' and '-'",
                         .kind = Kind::Checkpoint,
                         .check = checkName};
constexpr Option kDirectory{.name = "--dir",
                            .value = "DIR",
                            .summary =
                                "keep checkpoints in DIR instead of /var/lib/qvs/checkpoints (root), "
                                "~/.local/state/qvs/checkpoints, or the directory of an emulated host",
                            .kind = Kind::Directory};

std::string directoryOf(const Arguments &arguments) {
    return arguments.given("--dir") ? arguments.text("--dir") : config::checkpointDirectory();
}

void save(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("NAME");
    std::vector<std::string> warnings;
    const Document document = config::exportDocument(
        arguments.given("SWITCH") ? arguments.all("SWITCH") : std::vector<std::string>(), {}, warnings);
    if (document.switches.empty()) fail(Exit::NotFound, "there are no switches to keep");
    Checkpoints(directoryOf(arguments), true)
        .save(name, config::writeYaml(document), static_cast<uint32_t>(document.switches.size()),
              arguments.given("--replace"));
    reportChange(out, name, {{"checkpoint", name}}, true);
}

void listNames(const Arguments &arguments, Output &out) {
    NameList names(out);
    for (const Checkpoints::Entry &entry : Checkpoints(directoryOf(arguments)).list())
        names.add(entry.name);
    names.finish();
}

void list(const Arguments &arguments, Output &out) {
    if (arguments.given(kNames.name)) return listNames(arguments, out);
    Listing listing(out, {{"name", "NAME"},
                          {"time", "TIME"},
                          {"host", "HOST"},
                          {"switches", "SWITCHES"},
                          {"bytes", nullptr},
                          {"problem", nullptr}});
    for (const Checkpoints::Entry &entry : Checkpoints(directoryOf(arguments)).list()) {
        const auto &kept = entry.checkpoint;
        if (!kept && !out.json()) warn("{}", entry.problem);
        const auto text = [&](const std::string Checkpoint::*member) {
            return kept ? std::optional<std::string_view>((*kept).*member) : std::nullopt;
        };
        listing.row(entry.name, text(&Checkpoint::time), text(&Checkpoint::host),
                    kept ? std::optional<uint32_t>(kept->switches) : std::nullopt,
                    kept ? std::optional<uint64_t>(kept->document.size()) : std::nullopt,
                    kept ? std::nullopt : std::optional<std::string_view>(entry.problem));
    }
    listing.finish();
}

// Reads the document of a checkpoint, with the same checks as any document.
Document documentOf(const std::string &name, const Checkpoint &checkpoint) {
    return checkedDocument(checkpoint.document, "checkpoint " + name);
}

void show(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("NAME");
    const Checkpoint kept = Checkpoints(directoryOf(arguments)).load(name);
    if (!out.json()) {
        // A document with comments is a document.
        out.write(fmt::format("# checkpoint {}, {}, host {}\n", name, kept.time, kept.host));
        return out.write(kept.document);
    }
    std::string document = config::writeJson(documentOf(name, kept));
    while (document.ends_with('\n'))
        document.pop_back();
    Record record(out);
    record.field("name", "", name);
    record.field("time", "", kept.time);
    record.field("host", "", kept.host);
    record.field("switches", "", kept.switches);
    record.field("bytes", "", uint64_t{kept.document.size()});
    out.write(",\"document\":" + document);
    record.finish();
}

Document loadDocument(const Arguments &arguments) {
    const std::string &name = arguments.text("NAME");
    return documentOf(name, Checkpoints(directoryOf(arguments)).load(name));
}

// Restores the switches of a checkpoint. Other switches are not changed.
Comparison wayBack(const Arguments &arguments) {
    return {.prune = true, .keepsSwitches = true, .origin = "checkpoint " + arguments.text("NAME")};
}

void diff(const Arguments &arguments, Output &out) {
    const std::vector<config::Change> changes = compareWithHost(loadDocument(arguments), wayBack(arguments));
    printDifference(changes, out);
}

void rollback(const Arguments &arguments, Output &out) {
    applyChanges(loadDocument(arguments), wayBack(arguments), arguments, out);
}

void remove(const Arguments &arguments, Output &out) {
    const std::string &name = arguments.text("NAME");
    Checkpoints(directoryOf(arguments)).remove(name);
    reportChange(out, name, {{"checkpoint", name}}, true);
}

void requireAnswer(const Arguments &arguments) {
    requireSomebodyToAsk(arguments);
}

const Command kRows[] = {
    {.words = "checkpoint save",
     .summary = "save the configuration of switches under a name",
     .arguments = {kName, {"SWITCH", "aliases of the switches; all without one", Kind::Switch, true, true}},
     .options = {kDirectory, {"--replace", nullptr, "overwrite a checkpoint of this name"}},
     .details = "A checkpoint holds what qvs export writes: switches, uplinks, ports, settings and other "
                "stored properties. It is a file that only its owner may read. A safe change: save a "
                "checkpoint, make the "
                "change, look at qvs checkpoint diff, and go back with qvs checkpoint rollback.",
     .example = "qvs checkpoint save before-upgrade",
     .run = lasting(reads(save))},
    {.words = "checkpoint list",
     .summary = "list the checkpoints",
     .options = {kDirectory, kNames},
     .example = "qvs checkpoint list",
     .run = local(list)},
    {.words = "checkpoint show",
     .summary = "print a checkpoint as a document, which qvs apply takes",
     .arguments = {kName},
     .options = {kDirectory},
     .example = "qvs checkpoint show before-upgrade",
     .run = local(show)},
    {.words = "checkpoint diff",
     .summary = "print what a rollback would change",
     .arguments = {kName},
     .options = {kDirectory},
     .details = "Exit status 4 when the host differs from the checkpoint. Switches that the checkpoint does "
                "not hold are not compared.",
     .example = "qvs checkpoint diff before-upgrade",
     .run = reads(diff)},
    {.words = "checkpoint rollback",
     .summary = "restore the switches of a checkpoint",
     .arguments = {kName},
     .options = {kDirectory, kYes, kDryRun, kConfirm},
     .details =
         "The checkpoint is applied as qvs apply --prune does it, all of it or nothing: what was added "
         "to its switches is removed. Switches that it does not hold stay as they are. Link states and the "
         "clients of ports are no part of a checkpoint.",
     .example = "qvs checkpoint rollback before-upgrade --yes",
     .run = writes(rollback),
     .guard = Guard::None,
     .agrees = requireAnswer},
    {.words = "checkpoint remove",
     .summary = "remove a checkpoint",
     .arguments = {kName},
     .options = {kDirectory},
     .example = "qvs checkpoint remove before-upgrade",
     .run = lasting(local(remove))},
};

}  // namespace

const std::span<const Command> kCheckpointCommands = kRows;

}  // namespace qvs::cli
