// SPDX-License-Identifier: Apache-2.0
// Running a command on a host.
#pragma once

#include <string>
#include <vector>

#include "launcher/host.h"

namespace qvs::launcher {

// Runs the command on the host of the options' directory, or without one on a private host, and returns the
// exit status to pass on.
int runCommand(HostOptions options, const std::vector<std::string> &command);

}  // namespace qvs::launcher
