// SPDX-License-Identifier: Apache-2.0
// The rows of a command table, one per command. Parsing, help, completion and the manual are made from them.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/guard.h"

namespace qvs::cli {

class Output;

// What a word stands for, so that completion can offer it. A file or directory has a name that is not empty.
enum class Kind { Word, Switch, Port, Uplink, File, Directory, Program, Shell };

struct Argument {
    const char *name;
    const char *summary;
    Kind kind = Kind::Word;
    bool optional = false;
    bool repeated = false;  // the last one of a row only
    bool verbatim = false;  // the only one of a row: all words behind --, to the letter
};

// Whether a call does without an option: always, never, or when another one of its row's choice is given. A
// choice is a run of such options; that one of them is given is for the command to see.
enum class Need { Never, Always, Choice };

struct Option {
    const char *name;
    const char *value;  // what the value is called, or null for a flag
    const char *summary;
    Kind kind = Kind::Word;
    bool repeated = false;  // may be given several times
    Need need = Need::Never;
    const char *excludes = nullptr;  // an option that cannot be given together with this one
};

// Reads and Writes need a host; Local commands run anywhere.
enum class Access { Reads, Writes, Local };

// The words of one call, taken apart as its row says.
class Arguments {
  public:
    bool given(std::string_view name) const;
    // The value of an argument or option that is there.
    const std::string &text(std::string_view name) const;
    const std::vector<std::string> &all(std::string_view name) const;
    // The value or null, as the library takes names that may be left out.
    const char *orNull(std::string_view name) const;
    // A number in decimal or, after 0x, hexadecimal; anything else, or one beyond the bounds, is a usage
    // failure.
    uint32_t number(std::string_view name, uint32_t absent, uint32_t least = 0,
                    uint32_t most = UINT32_MAX) const;

    void add(std::string_view name, std::vector<std::string> values);

    // The subject of the row that the words were taken apart by.
    const void *subject = nullptr;

  private:
    const std::vector<std::string> *find(std::string_view name) const;

    std::vector<std::pair<std::string_view, std::vector<std::string>>> values_;
};

// Paths from the switch down to what a command concerns; null: everything. A batch loads the snapshot again
// only before a command that looks at what an earlier one has touched.
using Touches = std::vector<std::string> (*)(const Arguments &);

// What a command does: its function, and what that needs and changes. Rows say reads(), writes() or local().
struct Run {
    Access access;
    void (*function)(const Arguments &, Output &);
    Touches touches;     // what it changes, and looks at
    bool looksAtSwitch;  // it looks at the whole switch besides
    bool isLasting;      // what it changes cannot be undone

    void operator()(const Arguments &arguments, Output &out) const { function(arguments, out); }
};
constexpr Run reads(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Reads, function, touches, false, false};
}
constexpr Run writes(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Writes, function, touches, false, false};
}
// The same command when it looks at the whole switch besides what it touches.
constexpr Run looking(Run run) {
    run.looksAtSwitch = true;
    return run;
}
// The same command when an atomic batch cannot undo it: it changes what only the kernel holds, what is not
// known before, or a file.
constexpr Run lasting(Run run) {
    run.isLasting = true;
    return run;
}
constexpr Run local(void (*function)(const Arguments &, Output &)) {
    return {Access::Local, function, nullptr, false, false};
}

// What a command takes, and what its help says.
struct Shape {
    const char *summary;
    std::span<const Argument> arguments;
    std::span<const Option> options;
    const char *details;
    const char *example;
};

struct Command {
    const char *words;  // one to three: "status", "switch create", "port vlan get"
    const char *summary = nullptr;
    std::initializer_list<Argument> arguments = {};
    std::initializer_list<Option> options = {};
    std::span<const Option> more = {};  // those that it shares with others, behind its own
    const char *details = nullptr;      // more for the manual
    const char *example = nullptr;
    bool json = true;  // --json is understood; refused otherwise
    Run run;
    Guard guard = Guard::Switch;  // when it writes
    // Of rows that are made from a table: what the row is about, and a function that makes the shape when it
    // is asked for.
    const void *subject = nullptr;
    Shape (*shape)(const Command &) = nullptr;
};
Shape shapeOf(const Command &command);

// All options of a command.
std::vector<Option> optionsOf(const Command &command);

// A path of names, which may contain any character but NUL.
std::string touchedPath(std::initializer_list<std::string_view> names);

// The words that call a command, one by one.
std::vector<std::string_view> wordsOf(const Command &command);

// Commands that the help lists together. Rows of one noun may stand in several groups.
struct Noun {
    const char *name;
    const char *summary;
    std::span<const Command> commands;
};

// help, completion and manual, which every program has.
extern const std::span<const Command> kToolCommands;

// Options and arguments that many rows share.
inline constexpr Argument kSwitchArgument{"SWITCH", "alias of the switch", Kind::Switch};
inline constexpr Argument kPortArgument{"PORT", "identifier of the port", Kind::Port};
inline constexpr Option kMayExist{"--may-exist", nullptr,
                                  "succeed when it is there already and agrees with what is given"};
inline constexpr Option kIfExists{"--if-exists", nullptr, "succeed when it is not there"};
inline constexpr Option kRaw{.name = "--raw",
                             .value = "FILE",
                             .summary = "write the kernel's bytes to FILE (- for standard output) instead",
                             .kind = Kind::File,
                             .excludes = "--json"};
inline constexpr Option kById{.name = "--by-id",
                              .value = nullptr,
                              .summary = "SWITCH is an identifier, not an alias",
                              .excludes = "--kernel"};
inline constexpr Option kNames{.name = "--names",
                               .value = nullptr,
                               .summary = "print the names alone, one a line",
                               .excludes = "--kernel"};

}  // namespace qvs::cli
