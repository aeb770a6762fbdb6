// SPDX-License-Identifier: Apache-2.0
// The rows of the command table, one for each command. The parser, help, completion and manual use them.
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

// What a word names, so that completion can offer names. The parser refuses an empty name of a file,
// directory or lab. A lab is a file, or the name of an installed lab.
// A Name is that of a new object.
enum class Kind {
    Word,
    Name,
    Switch,
    Port,
    Uplink,
    Session,
    Checkpoint,
    Command,
    File,
    Directory,
    Program,
    Lab
};
// Whether a value names an object of the host. It may be typed as it is shown, with escapes.
constexpr bool isName(Kind kind) {
    return kind == Kind::Name || kind == Kind::Switch || kind == Kind::Port || kind == Kind::Uplink ||
           kind == Kind::Session;
}

// The words that an argument or a value may be. Completion offers them.
using Choices = std::span<const char *const>;

// Throws a usage failure when an argument or option cannot have this value. Runs before the host is looked
// for, once for each value.
using Check = void (*)(std::string_view name, const std::string &value);

struct Argument {
    const char *name;
    const char *summary;
    Kind kind = Kind::Word;
    bool optional = false;
    bool repeated = false;  // takes all remaining words; only the last argument of a row
    bool verbatim = false;  // takes all words behind --, unchanged; only the sole argument of a row
    Choices choices = {};
    bool open = false;  // the command itself refuses words that are no choice
    Check check = nullptr;
};

// Whether an option is required: never, always, or as one of a choice. A choice is a group of adjacent
// options of which exactly one is required; a command has one at most.
enum class Need { Never, Always, Choice };

struct Option {
    const char *name;
    const char *value;  // the name of the value in the help; null for a flag
    const char *summary;
    Kind kind = Kind::Word;
    bool repeated = false;  // may be given several times
    Need need = Need::Never;
    const char *excludes = nullptr;  // an option that cannot be given together with this one
    Choices choices = {};
    bool open = false;  // the command itself refuses words that are no choice
    bool list = false;  // the value is a list with commas; each item may be one of the choices
    // An option without which this one has no meaning. Ignored in commands that do not have that option.
    const char *needs = nullptr;
    Check check = nullptr;
};

// Reads and Writes need a host; Local commands run anywhere.
enum class Access { Reads, Writes, Local };

// The parsed arguments and options of one call.
class Arguments {
  public:
    bool given(std::string_view name) const;
    // The value of an argument or option, which must be given.
    const std::string &text(std::string_view name) const;
    const std::vector<std::string> &all(std::string_view name) const;
    // The value, or null when it is not given, for optional names of library functions.
    const char *orNull(std::string_view name) const;
    // The number, in decimal or, with 0x, in hexadecimal. Throws a usage failure for other texts and for
    // numbers out of bounds.
    uint32_t number(std::string_view name, uint32_t absent, uint32_t least = 0,
                    uint32_t most = UINT32_MAX) const;

    void add(std::string_view name, std::vector<std::string> values);

    // The subject of the command's row.
    const void *subject = nullptr;

  private:
    const std::vector<std::string> *find(std::string_view name) const;

    std::vector<std::pair<std::string_view, std::vector<std::string>>> values_;
};

// The paths of the objects that a command reads or changes, from the switch down; null means all objects. A
// batch reloads the snapshot only before a command that reads what an earlier command changed.
using Touches = std::vector<std::string> (*)(const Arguments &);

// The function of a command, and what it reads and changes. Rows use reads(), writes() or local().
struct Run {
    Access access;
    void (*function)(const Arguments &, Output &);
    Touches touches;     // the objects that it reads and changes
    bool looksAtSwitch;  // it also reads the whole switch
    bool isLasting;      // what it changes cannot be undone

    void operator()(const Arguments &arguments, Output &out) const { function(arguments, out); }
};
constexpr Run reads(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Reads, function, touches, false, false};
}
constexpr Run writes(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Writes, function, touches, false, false};
}
// The same command, which also reads the whole switch.
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

// The arguments, options and help texts of a command.
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
    std::span<const Option> more = {};  // options shared with other commands, listed behind its own
    const char *details = nullptr;      // more for the manual
    const char *example = nullptr;
    bool json = true;  // whether it accepts --json
    Run run;
    Guard guard = Guard::Switch;  // used when it writes
    // Only in rows that are made from a table: the entry of that table, and a function that makes the shape.
    const void *subject = nullptr;
    Shape (*shape)(const Command &) = nullptr;
    // Throws a usage failure when an argument or option cannot have this value. Runs before the host is
    // looked for. Null: the command checks all values itself.
    void (*check)(const Command &, std::string_view name, const std::string &value) = nullptr;
    // Throws a usage failure when the arguments and options do not go together. Runs before the host is
    // looked for, behind the checks of the values.
    void (*agrees)(const Arguments &) = nullptr;
};
Shape shapeOf(const Command &command);

// All options of a command: its own and the shared ones. Their `needs` are options of the command.
std::vector<Option> optionsOf(const Command &command);

// A path of names, which may contain any character but NUL.
std::string touchedPath(std::initializer_list<std::string_view> names);

// Splits a text at its blanks, which are single.
std::vector<std::string_view> splitWords(std::string_view text);
// The words of a command: {"port", "vlan", "get"}.
std::vector<std::string_view> wordsOf(const Command &command);

// Commands that the help lists together. Rows of one noun may stand in several groups.
struct Noun {
    const char *name;
    const char *summary;
    std::span<const Command> commands;
    bool isProgram = false;  // a program of its own, which has the manual page
};

// The commands that every program has: help, completion and manual.
extern const std::span<const Command> kToolCommands;

// Options and arguments that many rows share.
inline constexpr const char *kKernelOption = "--kernel";
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
                              .excludes = kKernelOption};
inline constexpr Option kNames{.name = "--names",
                               .value = nullptr,
                               .summary = "print the names alone, one a line",
                               .excludes = kKernelOption};

}  // namespace qvs::cli
