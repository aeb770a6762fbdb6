// SPDX-License-Identifier: Apache-2.0
// The shell of `qvs-host shell`.
#pragma once

#include <string>
#include <vector>

namespace qvs::launcher {

// Returns the words that run the user's shell, and changes the environment so that its prompt names the state
// directory. An empty directory stands for a private host.
std::vector<std::string> shellFor(const std::string &directory);

}  // namespace qvs::launcher
