// From the words of a command line to an exit code.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "command.h"
#include "failure.h"

namespace qvs::cli {

// Runs the command that the words name. Messages go to standard error.
Exit run(std::span<const std::string> words);

// The help of what the words name: nothing, a noun, or a command.
std::string helpFor(std::span<const std::string> words);

}  // namespace qvs::cli
