// SPDX-License-Identifier: Apache-2.0
// qvs fleet: a program of its own, so that qvs does not load what only a fleet needs.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/text.h"
#include "commands/nouns.h"
#include "tool/failure.h"

namespace qvs::cli {
namespace {

constexpr std::string_view kWord = "fleet";

void refuse(const Arguments &, Output &) {
    fail(Exit::Usage, "'fleet' comes first, and is not for batches: 'qvs fleet COMMAND'");
}

const Command kRows[] = {
    {.words = "fleet",
     .summary = "one configuration for the switches of many hosts",
     .arguments = {{"COMMAND", "a command of qvs-fleet with its words", Kind::Word, true, true}},
     .details =
         "'qvs fleet help' lists its commands: apply, status, hosts, diff, history, rollback, stop, drain. "
         "The package qvs-agent contains them.",
     .example = "qvs fleet status",
     .run = local(refuse)},
};

}  // namespace

const std::span<const Command> kFleetCommands = kRows;

bool namesFleet(int argc, char **argv) {
    return argc > 1 && argv[1] == kWord;
}

int startFleet(char **argv) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    std::string program = self.parent_path() / "qvs-fleet";
    argv[1] = program.data();
    if (!error) execv(program.c_str(), argv + 1);
    complain("{}: {}; the package qvs-agent contains it", inQuotes(program), std::strerror(errno));
    return static_cast<int>(Exit::Failed);
}

}  // namespace qvs::cli
