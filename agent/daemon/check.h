// SPDX-License-Identifier: Apache-2.0
// Runs the check command of the configuration.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace qvs::fleet {

// Runs a program with its arguments, without a shell and without input, and kills it at the time limit. Calls
// `meanwhile` several times a second. Returns the reason of a failed check, or nothing.
std::string runCheck(std::vector<std::string> words, std::chrono::seconds limit,
                     const std::function<void()> &meanwhile);

}  // namespace qvs::fleet
