// qvs-host: gives a command an emulated host, and manages one that stays up.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "launcher/checks.h"
#include "launcher/error.h"
#include "launcher/fault.h"
#include "launcher/host.h"
#include "launcher/layout.h"
#include "launcher/report.h"
#include "launcher/run.h"

namespace qvs::launcher {

namespace {

using namespace std::chrono_literals;
using nlohmann::json;

std::string absolute(const std::string &path) {
    if (path.empty()) return path;
    std::string whole = std::filesystem::absolute(path).lexically_normal();
    if (whole.size() > 1 && whole.back() == '/') whole.pop_back();
    return whole;
}

void withHostOptions(CLI::App *command, HostOptions *options, bool stateRequired) {
    auto *state = command->add_option("--state", options->directory, "Directory that holds the host's state");
    state->check(namesDirectory);
    if (stateRequired) state->required();
    command->add_option("--lab", options->lab, "Lab to set up (JSON)")->check(namesFile);
    command->add_option("--trace", options->trace, "File to which a line for each request is appended")
        ->check(namesFile);
    command->add_option("--max-state-mib", options->maxStateMib, "Cap on the database, to try a full disk")
        ->check(isNumber(1, UINT32_MAX));
}

HostOptions resolved(HostOptions options) {
    for (std::string *path : {&options.directory, &options.lab, &options.trace})
        *path = absolute(*path);
    return options;
}

// The socket of the host that a command is about.
std::string socketOf(const std::string &directory) {
    if (!directory.empty()) return absolute(directory) + "/socket";
    const char *socket = getenv(wire::kSocketVariable);
    if (socket != nullptr && socket[0] != '\0') return socket;
    throw Error("no host is named: give --state DIR, or run this on a host", kExitUsage);
}

int start(const HostOptions &options) {
    const pid_t daemon = startAlone(findLayout().daemon, options);
    fmt::print("serving {} (pid {})\n", options.directory, daemon);
    return 0;
}

int stop(const std::string &socket) {
    wire::Client client;
    connectTo(&client, socket);
    const std::string who = processBehind(client);
    wire::Writer message(wire::Kind::Control);
    message.text(R"({"op":"stop"})");
    std::string payload;
    if (!client.call(message, &payload)) throw noAnswer(socket, who);
    // The connection lasts as long as the daemon does.
    client.setTimeout(millisecondsOf(kEndsWithin));
    client.receive(wire::Kind::Reply, &payload);
    if (errno == ETIMEDOUT) throw Error(fmt::format("the host at {}{} does not end", socket, who));
    return 0;
}

int status(const std::string &socket, bool asJson) {
    const json answer = control(socket, {{"op", "status"}});
    if (asJson) {
        printJson(answer);
    } else {
        printStatus(answer);
    }
    return 0;
}

int followTrace(const std::string &socket) {
    wire::Client client;
    connectTo(&client, socket);
    const std::string who = processBehind(client);
    wire::Writer message(wire::Kind::TraceFollow);
    std::string payload;
    if (!client.call(message, &payload)) throw noAnswer(socket, who);
    // The next request may be long in coming.
    client.setTimeout(0);
    while (client.receive(wire::Kind::TraceLine, &payload)) {
        const std::string_view line = wire::Reader(payload).text();
        fmt::print("{}\n", line);
        if (fflush(stdout) != 0) return 0;
    }
    return 0;
}

constexpr char kTraceLines[] = R"(A line is the request, and behind " -> " its result:
  device ioctl "/dev/vswitch" 0x100b GetUplinks in=268 out=8 input=[0:737731] -> 0
  state PortAdd switch="73 77 31" port="port0" length=420 -> 0xbad0005
  shell treesh -e set /net/create sw1 "128\n" vswitch -> exit 0)";

// Each command with its options, and what is to be done once they are read.
class CommandLine {
  public:
    explicit CommandLine(const std::vector<std::string> &command) : command_(command) {
        app_.require_subcommand(1);
        app_.set_help_all_flag("--help-all", "Print the help of all commands");
        app_.set_version_flag("--version", "qvs-host " QVS_VERSION);
        addRunning();
        addManaging();
        addFaults();
    }

    int parseAndRun(std::vector<std::string> arguments) {
        if (arguments == std::vector<std::string>{"help"}) arguments = {"--help"};
        std::reverse(arguments.begin(), arguments.end());
        try {
            app_.parse(arguments);
        } catch (const CLI::ExtrasError &) {
            throw Error(fmt::format("\"{}\" is not expected here; a command to run follows \"--\"",
                                    app_.remaining(true).front()),
                        kExitUsage);
        } catch (const CLI::ParseError &error) {
            if (error.get_exit_code() == 0) return app_.exit(error);
            throw Error(error.what(), kExitUsage, "Try \"qvs-host --help\".");
        }
        return action_();
    }

  private:
    CLI::App *add(CLI::App *parent, const char *name, const char *help, std::function<int()> action) {
        CLI::App *command = parent->add_subcommand(name, help);
        command->final_callback([this, action = std::move(action)] { action_ = action; });
        return command;
    }

    // A command about a host that is up.
    CLI::App *addManaged(CLI::App *parent, const char *name, const char *help,
                         std::function<int(const std::string &socket)> action) {
        CLI::App *command = add(parent, name, help,
                                [this, action = std::move(action)] { return action(socketOf(directory_)); });
        command->add_option("--state", directory_, "Directory of the host (default: the host this runs on)")
            ->check(namesDirectory);
        return command;
    }

    void addRunning() {
        CLI::App *run = add(&app_, "run", "Run a command on a host: run [OPTIONS] -- COMMAND...", [this] {
            if (command_.empty()) throw Error("the command to run follows \"--\"", kExitUsage);
            return runCommand(resolved(options_), command_);
        });
        withHostOptions(run, &options_, false);
        CLI::App *shell = add(&app_, "shell", "Open a shell on a host", [this] {
            const char *program = getenv("SHELL");
            return runCommand(resolved(options_),
                              {program != nullptr && program[0] != '\0' ? program : "/bin/sh"});
        });
        withHostOptions(shell, &options_, false);
        CLI::App *begin =
            add(&app_, "start", "Start a host that stays up", [this] { return start(resolved(options_)); });
        withHostOptions(begin, &options_, true);
    }

    void addManaging() {
        addManaged(&app_, "stop", "Stop a host that was started", stop);
        addManaged(&app_, "status", "Show what a host holds", [this](const std::string &socket) {
            return status(socket, asJson_);
        })->add_flag("--json", asJson_, "Print JSON");
        addManaged(&app_, "reset", "Make a host empty, as new, and remove its faults",
                   [](const std::string &socket) {
                       control(socket, {{"op", "reset"}});
                       return 0;
                   });
        addManaged(&app_, "trace", "Print each request as it happens", followTrace)->footer(kTraceLines);
    }

    void addFaults() {
        CLI::App *group = app_.add_subcommand("fault", "Make requests fail")->require_subcommand(1);
        group->footer(
            "\"qvs-host trace\" shows the requests, \"qvs-host fault add --help\" what can happen to them.");
        CLI::App *command = addManaged(group, "add", "Add a fault", [this](const std::string &socket) {
            control(socket, requestOf(fault_));
            return 0;
        });
        addFaultOptions(command, &fault_);
        addManaged(group, "list", "List the faults", [this](const std::string &socket) {
            const json faults = control(socket, {{"op", "fault.list"}})["faults"];
            if (asJson_) {
                printJson(faults);
            } else {
                printFaults(faults);
            }
            return 0;
        })->add_flag("--json", asJson_, "Print JSON");
        addManaged(group, "clear", "Remove all faults", [](const std::string &socket) {
            control(socket, {{"op", "fault.clear"}});
            return 0;
        });
    }

    CLI::App app_{"Emulated hosts for qvs: run commands on one, keep one up, look into it, make it fail.",
                  "qvs-host"};
    const std::vector<std::string> &command_;
    std::function<int()> action_;
    HostOptions options_;
    std::string directory_;
    bool asJson_ = false;
    FaultOptions fault_;
};

}  // namespace

}  // namespace qvs::launcher

int main(int argc, char **argv) {
    using namespace qvs::launcher;
    // What follows "--" is the command, to the letter.
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto mark = std::find(words.begin(), words.end(), "--");
    const std::vector<std::string> command(mark == words.end() ? mark : mark + 1, words.end());
    try {
        const int exitCode = CommandLine(command).parseAndRun({words.begin(), mark});
        if (fflush(stdout) != 0) throw Error(fmt::format("standard output: {}", strerror(errno)));
        return exitCode;
    } catch (const Error &error) {
        complain("{}", error.what());
        if (!error.hint().empty()) std::fputs((error.hint() + '\n').c_str(), stderr);
        return error.exitCode();
    } catch (const std::exception &error) {
        complain("{}", error.what());
        return kExitFailed;
    }
}
