// SPDX-License-Identifier: Apache-2.0
// A program as the framework sees it: its rows, and what its help and manual say of it as a whole.
#pragma once

#include <span>

#include "tool/command.h"

namespace qvs::cli {

struct Call;

// A piece of the manual: a paragraph, an entry behind its term, or lines that stay as they are.
struct Passage {
    const char *text;
    const char *term = nullptr;
    bool asIs = false;
};
struct Section {
    const char *title;
    std::span<const Passage> passages;
};

// A command that prints the names of one kind, one a line, for the completion. $switch is the switch that was
// typed before.
struct NameSource {
    Kind kind;
    const char *words;
};

struct Program {
    const char *name;
    const char *version;
    const char *summary;
    const char *usage;  // the words behind the name
    std::span<const Noun> nouns;
    // Those that every command takes besides --json and --help.
    std::span<const Option> options;
    std::span<const NameSource> names;
    std::span<const Passage> description;
    std::span<const Section> sections;  // of the manual, behind the commands
    int failed;                         // what Exit::Failed is documented as
    // Runs the row of a call with what this program does before and after it; null: the row alone.
    void (*run)(const Call &, Output &);
};

// The program at hand; each defines its own.
const Program &program();

// The options of every command of the program.
std::span<const Option *const> commonOptions();

}  // namespace qvs::cli
