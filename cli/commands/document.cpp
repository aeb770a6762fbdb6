// SPDX-License-Identifier: Apache-2.0
// qvs export, diff and schema: the configuration of the host as a document.
#include <string>
#include <vector>

#include "access/changes.h"
#include "access/wanted.h"
#include "commands/nouns.h"
#include "config/document/export.h"
#include "config/document/schema.h"
#include "config/document/write.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

// --- export ---

void exportSwitches(const Arguments &arguments, Output &out) {
    std::vector<std::string> aliases;
    if (arguments.given("SWITCH")) aliases = arguments.all("SWITCH");
    std::vector<std::string> warnings;
    const config::Document document =
        config::exportDocument(aliases, {.withDefaults = arguments.given("--with-defaults")}, warnings);
    for (const std::string &warning : warnings)
        warn("{}", warning);
    out.write(out.json() ? writeJson(document) : writeYaml(document));
}

// --- diff ---

void diff(const Arguments &arguments, Output &out) {
    const std::vector<config::Change> changes =
        compareWithHost(readWanted(arguments), comparisonOf(arguments));
    printDifference(changes, out);
}

// --- schema ---

void schema(const Arguments &, Output &out) {
    out.write(config::schemaText());
}

const Command kRows[] = {
    {.words = "export",
     .summary = "print switches, their ports, uplinks and settings as a document",
     .arguments = {{.name = "SWITCH",
                    .summary = "alias of a switch; all switches when none is given",
                    .kind = Kind::Switch,
                    .optional = true,
                    .repeated = true}},
     .options = {{"--with-defaults", nullptr, "write the settings that are not stored, too, as they hold"}},
     .details = "The document is YAML, or JSON with --json. Properties that are no setting are written as "
                "base64, and so are those of a setting whose members cannot express the stored bytes; a "
                "warning names these. What the kernel keeps for itself is left out.",
     .example = "qvs export sw1 >sw1.yaml",
     .run = reads(exportSwitches)},
    {.words = "diff",
     .summary = "compare a document with the host",
     .arguments = {{"FILE", "document in YAML or JSON; - for standard input", Kind::File}},
     .options = {{"--prune", nullptr, "list what the document does not name as removed"},
                 kOnlySwitch,
                 kStrict},
     .details = "Lists what has to change on the host: + is added, - is removed, ~ is changed. ! marks what "
                "an existing switch cannot change: its identifier, portset, version, opacity and number of "
                "ports. Without --prune, what the document does not name stays as it is. The exit status is "
                "0 when nothing differs, and 4 otherwise.",
     .example = "qvs diff sw1.yaml --prune",
     .run = reads(diff)},
    {.words = "schema",
     .summary = "print the JSON Schema of documents",
     .details = "Editors and validators read it. The package installs it as /usr/share/qvs/schema.json.",
     .example = "qvs schema",
     .json = false,
     .run = local(schema)},
};

}  // namespace

const std::span<const Command> kDocumentCommands = kRows;

}  // namespace qvs::cli
