// SPDX-License-Identifier: Apache-2.0
// The commands of qvs-agent, which makes this host a member of a fleet.
#include "agent/daemon/agent.h"
#include "agent/daemon/log.h"
#include "agent/programs.h"
#include "agent/settings/settings.h"
#include "tool/output.h"
#include "tool/run.h"

namespace qvs::fleet {
namespace {

using cli::Arguments;
using cli::Command;
using cli::Output;

void run(const Arguments &arguments, Output &) {
    Settings settings = readSettings(arguments, kAgentFile);
    logsJson = settings.jsonLog;
    Agent(std::move(settings)).run();
}

void printConfig(const Arguments &, Output &out) {
    out.write(exampleFile());
}

std::span<const Command> rows() {
    static const Command table[] = {
        {.words = "run",
         .summary = "follow the fleet until SIGTERM or SIGINT",
         .more = agentOptions(),
         .details =
             "Options win over the file. With Type=notify, the service manager is told when the agent is "
             "ready, and that it is alive. Messages go to standard error.",
         .example = "qvs-agent run --endpoints http://127.0.0.1:2379 --labels rack=a",
         .json = false,
         .run = cli::local(run)},
        {.words = "config",
         .summary = "print a configuration file with all settings and their defaults",
         .example = "qvs-agent config",
         .json = false,
         .run = cli::local(printConfig)},
    };
    return table;
}

constexpr cli::Passage kDescription[] = {
    {"qvs-agent makes the virtual switches of this host what a fleet of hosts shall have. It follows the "
     "published "
     "revision in a distributed store, carries it out when its turn comes, checks the result, and undoes "
     "what "
     "fails."},
    {"qvs fleet publishes revisions and shows how far they are. On an emulated host, qvs-host run -- "
     "qvs-agent run "
     "starts an agent."},
};
constexpr cli::Passage kExitCodes[] = {
    {.text = "success", .term = "0"},
    {.text = "the operation failed", .term = "1"},
    {.text = "wrong usage, or a wrong setting", .term = "2"},
};
constexpr cli::Passage kFiles[] = {
    {.text = "the settings", .term = kAgentFile.path},
    {.text = "what the agent remembers: the revision of the host, and those that it has refused",
     .term = "/var/lib/qvs/agent"},
};
constexpr cli::Section kSections[] = {{"Exit status", kExitCodes}, {"Files", kFiles}};

}  // namespace

const cli::Program &agentProgram() {
    static const cli::Noun nouns[] = {
        {"agent", "the agent of this host", rows()},
        {"tool", "the tool itself", cli::kToolCommands},
    };
    static const cli::Program self = {
        .name = "qvs-agent",
        .version = QVS_VERSION,
        .date = QVS_DATE,
        .summary = "the agent of a host in a fleet",
        .usage = "COMMAND [OPTION...]",
        .nouns = nouns,
        .options = {},
        .names = {},
        .description = kDescription,
        .sections = kSections,
        .failed = 1,
    };
    return self;
}

}  // namespace qvs::fleet
