// SPDX-License-Identifier: Apache-2.0
// The commands of qvs-fleet, which publishes revisions of the switches of many hosts. `qvs fleet` starts it.
#include "agent/fleet/fleet.h"
#include "agent/programs.h"
#include "tool/run.h"

namespace qvs::fleet {
namespace {

constexpr cli::Passage kDescription[] = {
    {"qvs fleet publishes the configuration of virtual switches for many hosts as numbered revisions, and "
     "shows how "
     "far they are. On each host, qvs-agent carries them out. Both meet in a distributed store."},
    {"The options of the store may stand in a file in YAML: the one that --config names, or the variable "
     "QVS_FLEET, or /etc/qvs/fleet.yaml. 'qvs-agent config' prints such a file with all settings."},
};
constexpr cli::Passage kExitCodes[] = {
    {.text = "success", .term = "0"},
    {.text = "the operation failed, or a rollout was stopped or taken back", .term = "1"},
    {.text = "wrong usage, or a document with a problem", .term = "2"},
    {.text = "not found", .term = "3"},
    {.text = "there are differences, or another revision was published meanwhile", .term = "4"},
    {.text = "the store does not answer", .term = "6"},
    {.text = "another rollout is under way", .term = "7"},
};
constexpr cli::Passage kSeeAlso[] = {{"qvs(1), qvs-agent(1), qvs-document(5)"}};
constexpr cli::Section kSections[] = {{"Exit status", kExitCodes}, {"See also", kSeeAlso}};

}  // namespace

const cli::Program &fleetProgram() {
    static const cli::Noun nouns[] = {
        {"change", "publish revisions", kChangeCommands},
        {"view", "see what is there", kViewCommands},
        {"tool", "the tool itself", cli::kToolCommands},
    };
    static const cli::Program self = {
        .name = "qvs-fleet",
        .version = QVS_VERSION,
        .date = QVS_DATE,
        .summary = "one configuration for the virtual switches of many hosts",
        .usage = "COMMAND [ARGUMENT...] [OPTION...]",
        .nouns = nouns,
        .options = storeOptions(),
        .names = {},
        .description = kDescription,
        .sections = kSections,
        .failed = 1,
    };
    return self;
}

}  // namespace qvs::fleet
