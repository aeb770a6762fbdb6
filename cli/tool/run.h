// From the words of a command line to an exit code.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tool/command.h"
#include "tool/failure.h"

namespace qvs::cli {

// A command with its arguments.
struct Call {
    const Command *command = nullptr;
    Arguments arguments;
    GlobalOptions global;
};

// Takes words apart; global holds what was set before them. Throws a usage failure.
Call parseCall(std::vector<std::string> words, GlobalOptions global);

// Runs a call and writes out what it prints. Throws what fails.
void execute(const Call &call);

// Runs the command that the words name. Messages go to standard error.
Exit run(std::span<const std::string> words);

// The help of what the words name: nothing, a noun, or a command.
std::string helpFor(std::span<const std::string> words);

}  // namespace qvs::cli
