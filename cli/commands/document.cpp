// SPDX-License-Identifier: Apache-2.0
// qvs export, diff and schema: the configuration of the host as a document.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "commands/nouns.h"
#include "config/document/diff.h"
#include "config/document/export.h"
#include "config/document/reader.h"
#include "config/document/references.h"
#include "config/document/schema.h"
#include "config/document/write.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using config::Change;
using config::Document;

// --- export ---

void exportSwitches(const Arguments &arguments, Output &out) {
    std::vector<std::string> aliases;
    if (arguments.given("SWITCH")) aliases = arguments.all("SWITCH");
    std::vector<std::string> warnings;
    const Document document =
        config::exportDocument(aliases, {.withDefaults = arguments.given("--with-defaults")}, warnings);
    for (const std::string &warning : warnings)
        warn("{}", warning);
    out.write(out.json() ? writeJson(document) : writeYaml(document));
}

// --- diff ---

std::string_view nameOfFile(const Arguments &arguments) {
    const std::string &path = arguments.text("FILE");
    return path == "-" ? std::string_view("standard input") : path;
}

std::string messageOf(const std::vector<config::Problem> &problems) {
    std::string message;
    for (const config::Problem &problem : problems)
        message += (message.empty() ? "" : "\n") + messageOf(problem);
    return message;
}

Document readDocumentFile(const Arguments &arguments) {
    const std::vector<uint8_t> bytes = readFile(arguments.text("FILE"), config::kMostDocumentBytes);
    std::vector<config::Problem> problems;
    Document document = config::readDocument({reinterpret_cast<const char *>(bytes.data()), bytes.size()},
                                             nameOfFile(arguments), problems);
    if (!problems.empty()) throw Failure{Exit::Usage, messageOf(problems)};
    return document;
}

void reportReferences(const std::vector<config::Problem> &problems, const Arguments &arguments) {
    if (!problems.empty() && arguments.given("--strict")) throw Failure{Exit::Usage, messageOf(problems)};
    for (const config::Problem &problem : problems)
        warn("{}", messageOf(problem));
}

// Leaves those switches that --switch names.
void narrow(Document &document, const Arguments &arguments) {
    if (!arguments.given("--switch")) return;
    const std::vector<std::string> &names = arguments.all("--switch");
    for (const std::string &name : names)
        if (document.findSwitch(name) == nullptr)
            fail(Exit::NotFound, "{}: the document has no such switch", named(name));
    std::erase_if(document.switches, [&](const config::SwitchEntry &entry) {
        return std::ranges::find(names, entry.alias) == names.end();
    });
}

// What the host has of the switches of a document; of all switches when others are to go.
Document documentOfHost(const Document &wanted, bool all, std::vector<std::string> &warnings) {
    if (all) return config::exportDocument({}, {}, warnings);
    std::vector<std::string> aliases;
    for (const config::SwitchEntry &entry : wanted.switches)
        if (DVSState_SwitchFindByAlias(entry.alias.c_str()) != nullptr) aliases.push_back(entry.alias);
    if (aliases.empty()) return {};
    return config::exportDocument(aliases, {}, warnings);
}

// How each kind of change is shown.
struct Look {
    const char *name;  // in JSON
    char mark;
    const char *colour;
};
constexpr Look kLooks[] = {
    {"added", '+', "\x1b[32m"}, {"removed", '-', "\x1b[31m"}, {"changed", '~', "\x1b[33m"}};

const Look &lookOf(const Change &change) {
    return kLooks[static_cast<size_t>(change.kind)];
}

std::string lineOf(const Change &change) {
    std::string line = fmt::format("{} {}", change.conflict ? '!' : lookOf(change).mark, change.path());
    const std::string &one = change.beforeText.empty() ? change.afterText : change.beforeText;
    if (!one.empty()) line += ": " + one;
    if (change.kind == Change::Kind::Changed) line += " -> " + change.afterText;
    if (change.conflict) line += " (an existing switch cannot change it)";
    return line;
}

bool inColour(const Output &out) {
    const char *noColour = std::getenv("NO_COLOR");
    return out.terminal() && (noColour == nullptr || *noColour == '\0');
}

void printText(const std::vector<Change> &changes, Output &out) {
    const bool colour = inColour(out);
    for (const Change &change : changes) {
        if (colour) out.write(std::string_view(lookOf(change).colour));
        out.write(lineOf(change));
        out.write(std::string_view(colour ? "\x1b[0m\n" : "\n"));
    }
}

// Text that is JSON already.
struct Json {
    std::string text;
};
void appendJson(fmt::memory_buffer &out, const Json &json) {
    out.append(json.text);
}
[[maybe_unused]] void appendText(fmt::memory_buffer &out, const Json &json) {
    out.append(json.text);
}

void printJson(const std::vector<Change> &changes, Output &out) {
    const auto orNull = [](const std::string &text) {
        return text.empty() ? std::nullopt : std::optional<std::string_view>(text);
    };
    Listing listing(out, {{"change", "CHANGE"},
                          {"switch", "SWITCH"},
                          {"port", "PORT"},
                          {"host", "HOST"},
                          {"member", "MEMBER"},
                          {"property", "PROPERTY"},
                          {"before", "BEFORE"},
                          {"after", "AFTER"},
                          {"conflict", "CONFLICT"}});
    for (const Change &change : changes) {
        const std::string key = change.property ? change.member : std::string();
        listing.row(std::string_view(lookOf(change).name), std::string_view(change.alias),
                    orNull(change.port), Flag{change.scope == Scope::Host},
                    change.property ? std::nullopt : orNull(change.member), orNull(key),
                    Json{config::jsonOf(change.before)}, Json{config::jsonOf(change.after)},
                    Flag{change.conflict});
    }
    listing.finish();
}

void diff(const Arguments &arguments, Output &out) {
    Document wanted = readDocumentFile(arguments);
    narrow(wanted, arguments);
    const bool prune = arguments.given("--prune");
    std::vector<std::string> warnings;
    const Document now = documentOfHost(wanted, prune && !arguments.given("--switch"), warnings);
    for (const std::string &warning : warnings)
        warn("{}", warning);
    reportReferences(danglingReferences(now, wanted, prune, nameOfFile(arguments)), arguments);
    const std::vector<Change> changes = compare(now, wanted, prune);
    if (out.json()) {
        printJson(changes, out);
    } else {
        printText(changes, out);
    }
    if (!changes.empty()) out.exitWith(static_cast<int>(Exit::Differs));
}

// --- schema ---

void schema(const Arguments &, Output &out) {
    out.write(config::schemaText());
}

constexpr Option kSwitchOption{.name = "--switch",
                               .value = "SWITCH",
                               .summary = "this switch of the document alone",
                               .kind = Kind::Switch,
                               .repeated = true};

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
                 kSwitchOption,
                 {"--strict", nullptr,
                  "fail when a setting names an uplink, port or VLAN that does not exist"}},
     .details = "Lists what has to change on the host: + is added, - is removed, ~ is changed. ! marks what "
                "an existing switch cannot change: its identifier, portset, version, opacity and number of "
                "ports. Without --prune, what the document does not name stays as it is. The exit status is "
                "0 when nothing differs, and 4 otherwise.",
     .example = "qvs diff sw1.yaml --prune",
     .run = reads(diff)},
    {.words = "schema",
     .summary = "print the JSON Schema of documents",
     .details = "Editors and validators read it. It is installed as share/qvs/schema.json.",
     .example = "qvs schema",
     .json = false,
     .run = local(schema)},
};

}  // namespace

const std::span<const Command> kDocumentCommands = kRows;

}  // namespace qvs::cli
