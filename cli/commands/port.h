// SPDX-License-Identifier: Apache-2.0
// The commands that change the ports of a switch.
#pragma once

#include "tool/command.h"

namespace qvs::cli {

// Throw usage failures when the ports that are given cannot be changed together.
void requirePortsOnce(const Arguments &arguments);
void requirePortsToAdd(const Arguments &arguments);

void addPorts(const Arguments &arguments, Output &out);
void removePorts(const Arguments &arguments, Output &out);
void blockPorts(const Arguments &arguments, Output &out);
void unblockPorts(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
