// SPDX-License-Identifier: Apache-2.0
// The two programs of a fleet.
#pragma once

#include "tool/program.h"

namespace qvs::fleet {

const cli::Program &agentProgram();
const cli::Program &fleetProgram();

}  // namespace qvs::fleet
