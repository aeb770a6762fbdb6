// The command table: one row per command. Parsing, help, completion and the manual are made from these rows.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvs::cli {

class Output;

// What a word stands for, so that completion can offer it.
enum class Kind { Word, Switch, Port, Uplink, File, Shell };

struct Argument {
    const char *name;
    const char *summary;
    Kind kind = Kind::Word;
    bool optional = false;
    bool repeated = false;  // the last one of a row only
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
};

// Reads and Writes need a host; Local commands run anywhere.
enum class Access { Reads, Writes, Local };

// What a command that writes keeps other runs of the tool from changing while it runs: the switch it names,
// or the host when it names none; every switch; nothing.
enum class Guard { Switch, Everything, None };

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

  private:
    const std::vector<std::string> *find(std::string_view name) const;

    std::vector<std::pair<std::string_view, std::vector<std::string>>> values_;
};

// What a command touches when it writes, and all that it looks at, as paths from the switch down; null:
// everything. A batch loads the snapshot again only before a command that looks at what was touched.
using Touches = std::vector<std::string> (*)(const Arguments &);

// What a command does: its function, and what that needs and changes. Rows say reads(), writes() or local().
struct Run {
    Access access;
    void (*function)(const Arguments &, Output &);
    Touches touches;

    void operator()(const Arguments &arguments, Output &out) const { function(arguments, out); }
};
constexpr Run reads(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Reads, function, touches};
}
constexpr Run writes(void (*function)(const Arguments &, Output &), Touches touches = nullptr) {
    return {Access::Writes, function, touches};
}
constexpr Run local(void (*function)(const Arguments &, Output &)) {
    return {Access::Local, function, nullptr};
}

struct Command {
    const char *words;  // one to three: "status", "switch create", "port vlan get"
    const char *summary;
    std::initializer_list<Argument> arguments = {};
    std::initializer_list<Option> options = {};
    const char *details = nullptr;  // more for the manual
    const char *example;
    bool json = true;  // --json is understood; refused otherwise
    Run run;
    Guard guard = Guard::Switch;
};

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

// Every group with its rows, in the order of the help.
std::span<const Noun> nouns();

extern const std::span<const Command> kSwitchCommands;
extern const std::span<const Command> kPortCommands;
extern const std::span<const Command> kUplinkCommands;
extern const std::span<const Command> kMtuCommands;
extern const std::span<const Command> kMirrorCommands;
extern const std::span<const Command> kPrivateVlanCommands;
extern const std::span<const Command> kPortVlanCommands;
extern const std::span<const Command> kPortSecurityCommands;
extern const std::span<const Command> kTeamingCommands;
extern const std::span<const Command> kLsTeamingCommands;
extern const std::span<const Command> kMacLearningCommands;
extern const std::span<const Command> kMacCommands;
extern const std::span<const Command> kMulticastCommands;
extern const std::span<const Command> kHealthCommands;
extern const std::span<const Command> kDiscoveryCommands;
extern const std::span<const Command> kIpfixCommands;
extern const std::span<const Command> kTeamingStatsCommands;
extern const std::span<const Command> kMirrorRuntimeCommands;
extern const std::span<const Command> kMulticastFilterCommands;
extern const std::span<const Command> kIpfixStatsCommands;
extern const std::span<const Command> kSpfCommands;
extern const std::span<const Command> kBfdCommands;
extern const std::span<const Command> kKcpCommands;
extern const std::span<const Command> kTraceCommands;
extern const std::span<const Command> kTelemetryCommands;
extern const std::span<const Command> kLivetraceCommands;
extern const std::span<const Command> kOptionsCommands;
extern const std::span<const Command> kRouteTableCommands;
extern const std::span<const Command> kPropCommands;
extern const std::span<const Command> kDumpCommands;
extern const std::span<const Command> kStatusCommands;
extern const std::span<const Command> kBatchCommands;
extern const std::span<const Command> kToolCommands;

// Options and arguments that many rows share.
inline constexpr Argument kSwitchArgument{"SWITCH", "alias of the switch", Kind::Switch};
inline constexpr Argument kPortArgument{"PORT", "identifier of the port", Kind::Port};
inline constexpr Option kMayExist{"--may-exist", nullptr,
                                  "succeed when it is there already and agrees with what is given"};
inline constexpr Option kIfExists{"--if-exists", nullptr, "succeed when it is not there"};
inline constexpr Option kRaw{"--raw", "FILE",
                             "write the kernel's bytes to FILE (- for standard output) instead", Kind::File};
inline constexpr Option kById{"--by-id", nullptr, "SWITCH is an identifier, not an alias"};
inline constexpr Option kNames{"--names", nullptr, "print the names alone, one a line"};

// Options that every command takes.
struct GlobalOptions {
    bool json = false;
    bool trace = false;
    uint32_t timeout = 0;  // seconds; 0: not given
    bool help = false;
    bool version = false;
};
inline constexpr Option kGlobalOptions[] = {
    {"--json", nullptr, "print JSON"},
    {"--trace", nullptr, "print each library call, its status and its time to standard error"},
    {"--timeout", "SECONDS",
     "wait so long for the host to answer, and for other runs that change the same (10)"},
    {"--help", nullptr, "print the help of the command"},
};
inline constexpr uint32_t kMostTimeout = 86400;
// The value of --timeout. Throws a usage failure.
uint32_t timeoutGiven(std::string_view text);

// Takes the words behind the command's own apart. Throws a usage failure.
Arguments parseArguments(const Command &command, std::span<const std::string> words, GlobalOptions &global);

}  // namespace qvs::cli
