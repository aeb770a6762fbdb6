// SPDX-License-Identifier: Apache-2.0
// The description of a program: its commands, and the texts of its help and manual.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "base/text.h"
#include "tool/command.h"

namespace qvs::cli {

struct Call;

// A piece of the manual: a paragraph, an entry of a list with its term, or preformatted lines.
struct Passage {
    const char *text;
    const char *term = nullptr;
    bool asIs = false;
};
struct Section {
    const char *title;
    std::span<const Passage> passages;
};

// A command that prints the names of one kind, one a line, for completion. $switch stands for the switch on
// the command line, and $--port for the option --port and its value, if it is there. With a limit, a name of
// this kind that does not fit is refused before the command runs.
struct NameSource {
    Kind kind;
    const char *words;
    const Limit *limit = nullptr;
};

// A group of nouns in the short help. Nouns without a topic are listed behind all topics.
struct Topic {
    const char *title;
    const char *nouns;
};

// Words for what the tool can do, and the commands that do it: their beginnings, separated by commas.
struct OtherName {
    const char *theirs;
    const char *ours;
};

struct Program {
    const char *name;
    const char *version;
    const char *date;  // of the version, for the manual pages
    const char *summary;
    const char *usage;  // the usage line behind the name
    std::span<const Noun> nouns;
    // Options of all commands, besides --json, --wide and --help.
    std::span<const Option> options;
    std::span<const NameSource> names;
    std::span<const Passage> description;
    std::span<const Section> sections;  // of the manual, behind its commands
    int failed;                         // the exit status for Exit::Failed
    std::span<const Topic> topics = {};
    std::span<const OtherName> otherNames = {};
    // Nouns whose commands stand with those of another noun, with summaries of their own.
    std::span<const Noun> parts = {};
    // Whether each noun has a manual page of its own.
    bool hasPagesOfNouns = false;
    // Runs the command of a call, with the work of the program before and after it. Null: runs only the
    // command.
    void (*run)(const Call &, Output &) = nullptr;
};

// The running program. Each program defines this function.
const Program &program();

// The options that every command of the program has.
std::span<const Option *const> commonOptions();
// The option with this name: of the command, which may be null, or of every command.
std::optional<Option> optionNamed(const Command *command, std::string_view name);
// Whether a command accepts an option of every command.
bool takes(const Command &command, const Option &common);

}  // namespace qvs::cli
