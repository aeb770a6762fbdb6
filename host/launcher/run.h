// SPDX-License-Identifier: Apache-2.0
// Runs a command on a host.
#pragma once

#include <string>
#include <vector>

#include "launcher/host.h"

namespace qvs::launcher {

// Runs a command on the host of the directory in the options, or on a private host if there is none. Returns
// the exit status of the command.
int runCommand(HostOptions options, const std::vector<std::string> &command);

}  // namespace qvs::launcher
