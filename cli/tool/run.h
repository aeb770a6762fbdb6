// SPDX-License-Identifier: Apache-2.0
// Runs the command that a command line names.
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

// Parses a command line. Throws a usage failure.
Call parseCall(std::vector<std::string> words);

// Parses the words behind the words of the command. Throws a usage failure.
Arguments parseArguments(const Command &command, std::span<const std::string> words);

// Runs a call and leaves its output in `out`. Throws Failure.
void runCall(const Call &call, Output &out);

// Runs a call, writes its output and returns the exit code. Throws Failure.
int execute(const Call &call);

// Runs the command that the words name and returns the exit code. Messages go to standard error.
int run(int argc, char **argv);

// The help of the program (without words), of a noun, or of a command.
std::string helpFor(std::span<const std::string> words);

}  // namespace qvs::cli
