// SPDX-License-Identifier: Apache-2.0
// Starts the program of `qvs fleet`.
#pragma once

namespace qvs::cli {

// Whether the words of a command line begin with "fleet".
bool namesFleet(int argc, char **argv);

// Replaces this program by qvs-fleet, with the words behind "fleet". Returns the exit status when that fails.
int startFleet(char **argv);

}  // namespace qvs::cli
