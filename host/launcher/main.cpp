// SPDX-License-Identifier: Apache-2.0
// qvs-host: runs commands on an emulated host, and manages hosts.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "launcher/error.h"
#include "launcher/fault.h"
#include "launcher/host.h"
#include "launcher/layout.h"
#include "launcher/manual.h"
#include "launcher/network.h"
#include "launcher/report.h"
#include "launcher/run.h"
#include "launcher/shell.h"
#include "tool/command.h"
#include "tool/output.h"
#include "tool/run.h"
#include "wire/host_files.h"

namespace qvs::launcher {

std::string absolute(const std::string &path) {
    if (path.empty()) return path;
    std::string whole = std::filesystem::absolute(path).lexically_normal();
    if (whole.size() > 1 && whole.back() == '/') whole.pop_back();
    return whole;
}

std::string socketOf(const cli::Arguments &arguments) {
    if (arguments.given("--state")) return wire::socketFile(absolute(arguments.text("--state")));
    const char *socket = getenv(wire::kSocketVariable);
    if (socket != nullptr && socket[0] != '\0') return socket;
    throw Error("no host is named; give --state DIR, or run the command on a host", qvs::Exit::Usage);
}

namespace {

using cli::Arguments;
using cli::Command;
using cli::Kind;
using cli::local;
using cli::Option;
using cli::Output;
using nlohmann::json;

std::string pathGiven(const Arguments &arguments, std::string_view option) {
    return arguments.given(option) ? absolute(arguments.text(option)) : "";
}

void listLabs(const Arguments &, Output &out) {
    cli::NameList names(out);
    for (const Lab &lab : findLabs())
        names.add(lab.name);
    names.finish();
}

HostOptions hostOptions(const Arguments &arguments) {
    HostOptions options;
    options.directory = pathGiven(arguments, "--state");
    if (arguments.given("--lab")) options.lab = absolute(findLab(arguments.text("--lab")));
    options.trace = pathGiven(arguments, "--trace");
    options.network = arguments.given("--network");
    options.maxStateMib = arguments.number("--max-state-mib", 0, 1);
    return options;
}

void run(const Arguments &arguments, Output &out) {
    out.exitWith(runCommand(hostOptions(arguments), arguments.all("COMMAND")));
}

void shell(const Arguments &arguments, Output &out) {
    const HostOptions options = hostOptions(arguments);
    out.exitWith(runCommand(options, shellFor(options.directory)));
}

void start(const Arguments &arguments, Output &out) {
    const HostOptions options = hostOptions(arguments);
    const pid_t daemon = startAlone(findLayout().daemon, options);
    out.write(fmt::format("serving {} (pid {})\n", qvs::shown(options.directory), daemon));
}

void stop(const Arguments &arguments, Output &) {
    const std::string socket = socketOf(arguments);
    HostClient host(socket);
    wire::Writer message(wire::Kind::Control);
    std::string payload = host.call(message.text(R"({"op":"stop"})"));
    // The connection stays open until the daemon ends.
    host.client.setTimeout(millisecondsOf(kEndsWithin));
    host.client.receive(wire::Kind::Reply, &payload);
    if (errno == ETIMEDOUT) throw Error(fmt::format("the host at {}{} does not stop", socket, host.who));
}

void status(const Arguments &arguments, Output &out) {
    const json answer = control(socketOf(arguments), {{"op", "status"}});
    (out.json() ? printJson : printStatus)(out, answer);
}

void reset(const Arguments &arguments, Output &) {
    control(socketOf(arguments), {{"op", "reset"}});
}

void followTrace(const Arguments &arguments, Output &out) {
    HostClient host(socketOf(arguments));
    wire::Writer message(wire::Kind::TraceFollow);
    std::string payload = host.call(message);
    // It can take any time until the next request.
    host.client.setTimeout(0);
    while (host.client.receive(wire::Kind::TraceLine, &payload)) {
        out.write(wire::Reader(payload).text());
        out.write("\n");
        out.flush();
    }
}

void addFault(const Arguments &arguments, Output &) {
    const json request = requestOf(arguments);
    control(socketOf(arguments), request);
}

void listFaults(const Arguments &arguments, Output &out) {
    const json answer = control(socketOf(arguments), {{"op", "fault.list"}});
    (out.json() ? printJson : printFaults)(out, answer["faults"]);
}

void clearFaults(const Arguments &arguments, Output &) {
    control(socketOf(arguments), {{"op", "fault.clear"}});
}

constexpr cli::NameSource kNames[] = {{Kind::Lab, "labs"}};

constexpr Option kState{"--state", "DIR",
                        "directory of the host's state; without it the host is private and ends "
                        "with the command",
                        Kind::Directory};
constexpr Option kLab{"--lab", "LAB",
                      "set the host up from a JSON file, or from an installed lab: NICs, switches, ports, "
                      "properties, clients",
                      Kind::Lab};
constexpr Option kTrace{"--trace", "FILE", "append a line for each request to FILE before it is answered",
                        Kind::File};
constexpr Option kMaxState{"--max-state-mib", "N", "limit the size of the state, to try a full disk"};
constexpr Option kNetwork{"--network", nullptr,
                          "start the data path, so that frames flow between attachments"};

constexpr cli::Topic kTopics[] = {
    {"Hosts", "run shell start stop status reset labs"},
    {"Network", "attach detach enter send expect drops"},
    {"Requests", "trace fault"},
};

const Command kHostRows[] = {
    {.words = "run",
     .summary = "run a command on a host",
     .arguments = {{.name = "COMMAND",
                    .summary = "the command and its words",
                    .kind = Kind::Program,
                    .repeated = true,
                    .verbatim = true}},
     .options = {kState, kLab, kTrace, kMaxState, kNetwork},
     .details = "Starts a host, or joins the one that serves DIR, runs COMMAND on it and exits with its "
                "status. A host that run started ends with the last command on it.",
     .example = "qvs-host run -- qvs switch create sw1",
     .json = false,
     .run = local(run)},
    {.words = "shell",
     .summary = "open a shell on a host",
     .options = {kState, kLab, kTrace, kMaxState, kNetwork},
     .details = "Runs $SHELL as run does. The prompt begins with the name of the state directory.",
     .example = "qvs-host shell --state lab",
     .json = false,
     .run = local(shell)},
    {.words = "start",
     .summary = "start a host that stays up",
     .options = {{"--state", "DIR", "directory of the host's state", Kind::Directory, false,
                  cli::Need::Always},
                 kLab,
                 kTrace,
                 kMaxState,
                 kNetwork},
     .example = "qvs-host start --state lab",
     .json = false,
     .run = local(start)},
    {.words = "stop",
     .summary = "stop a host that was started",
     .options = {kRunning},
     .example = "qvs-host stop --state lab",
     .json = false,
     .run = local(stop)},
    {.words = "status",
     .summary = "show what a host holds: switches, NICs, its network, faults",
     .options = {kRunning},
     .example = "qvs-host status --state lab --json",
     .run = local(status)},
    {.words = "reset",
     .summary = "make a host empty, as new, and remove its faults",
     .options = {kRunning},
     .example = "qvs-host reset --state lab",
     .json = false,
     .run = local(reset)},
    {.words = "labs",
     .summary = "list the installed labs",
     .details = "--lab accepts these names.",
     .example = "% labs",
     .run = local(listLabs)},
    {.words = "trace",
     .summary = "print each request as it happens, until interrupted",
     .options = {kRunning},
     .details = "A line is the request and, behind \" -> \", its result. The manual shows one of each kind.",
     .example = "qvs-host trace --state lab",
     .json = false,
     .run = local(followTrace)},
};

const Command kFaultRows[] = {
    {.words = "fault add",
     .summary = "make requests fail",
     .arguments = {{"MATCH", "part of a trace line without its result; * and ? stand for other text"}},
     .options =
         {kRunning,
          {"--nth", "N", "begin with the N-th match (1)"},
          {.name = "--count", .value = "N", .summary = "how many matches (1)", .excludes = "--forever"},
          {"--forever", nullptr, "all matches from then on"},
          {"--errno", "NAME", "a device request fails with this error, such as EIO"},
          {"--status", "STATUS", "a state request fails with this status, such as 0xbad0014"},
          {"--exit", "CODE", "a shell request (treesh) fails with this exit code"},
          {"--delay", "MILLISECONDS", "any request waits so long first"},
          {.name = "--kill",
           .value = "MOMENT",
           .summary = "before, middle or after: the host dies before the request, before its change is "
                      "committed, or after that and before it answers",
           .choices = kMoments},
          {.name = "--output",
           .value = "OFFSET:HEX",
           .summary = "any answer holds these bytes at OFFSET",
           .repeated = true},
          {"--truncate", "N", "any answer is cut to N bytes"},
          {"--lab", "LAB", "this lab is applied just before the request", Kind::Lab}},
     .details = "MATCH is looked for in the line that qvs-host trace prints for a request, up to \" -> \": "
                "watch that first. At least one of --errno, --status, --exit, --delay, --kill, --output, "
                "--truncate and --lab is needed. A request that is to fail and was given nothing of its kind "
                "fails with EIO, 0xbad0001 or exit code 1. A failed request changes nothing.",
     .example = "qvs-host fault add 'state PortAdd*port=\"port3\"' --status 0xbad0014",
     .json = false,
     .run = local(addFault)},
    {.words = "fault list",
     .summary = "list the faults",
     .options = {kRunning},
     .example = "qvs-host fault list",
     .run = local(listFaults)},
    {.words = "fault clear",
     .summary = "remove all faults",
     .options = {kRunning},
     .example = "qvs-host fault clear",
     .json = false,
     .run = local(clearFaults)},
};

}  // namespace

}  // namespace qvs::launcher

namespace qvs::cli {

const Program &program() {
    static const Noun nouns[] = {
        {"host", "hosts and what runs on them", launcher::kHostRows},
        {"network", "frames, and what is attached to ports", launcher::kNetworkCommands},
        {"fault", "requests that are to fail", launcher::kFaultRows},
        {"tool", "the tool itself", kToolCommands},
    };
    static const Program self = {
        .name = "qvs-host",
        .version = QVS_VERSION,
        .date = QVS_DATE,
        .summary = "an emulated hypervisor host for programs that manage virtual switches",
        .usage = "COMMAND [ARGUMENT...] [OPTION...]",
        .nouns = nouns,
        .options = {},
        .names = launcher::kNames,
        .description = launcher::kDescription,
        .sections = launcher::kSections,
        .failed = 125,
        .topics = launcher::kTopics,
    };
    return self;
}

}  // namespace qvs::cli

int main(int argc, char **argv) {
    return qvs::cli::run(argc, argv);
}
