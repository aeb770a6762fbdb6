// SPDX-License-Identifier: Apache-2.0
// Runs the check command of the configuration.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace qvs::fleet {

// Runs a program with its words, without a shell and without input, and ends it when it takes too long.
// `meanwhile` is called several times a second. Returns why the check has failed, or nothing.
std::string runCheck(std::vector<std::string> words, std::chrono::seconds limit,
                     const std::function<void()> &meanwhile);

}  // namespace qvs::fleet
