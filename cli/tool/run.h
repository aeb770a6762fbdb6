// SPDX-License-Identifier: Apache-2.0
// From the words of a command line to an exit code.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tool/command.h"

namespace qvs::cli {

// A command with its arguments and options.
struct Call {
    const Command *command = nullptr;
    Arguments arguments;
};

// Takes the words of a line apart. Throws a usage failure.
Call parseCall(std::vector<std::string> words);

// Takes the words behind the command's own apart. Throws a usage failure.
Arguments parseArguments(const Command &command, std::span<const std::string> words);

// Runs a call, writes out what it prints and returns the exit code. Throws what fails.
int execute(const Call &call);

// Runs the command that the words name and returns the exit code. Messages go to standard error.
int run(int argc, char **argv);

// The help of what the words name: nothing, a noun, or a command.
std::string helpFor(std::span<const std::string> words);

}  // namespace qvs::cli
