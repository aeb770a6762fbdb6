// SPDX-License-Identifier: Apache-2.0
// Prints the output of `qvs-host status` and `qvs-host fault list`.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tool/output.h"

namespace qvs::launcher {

// Prints indented JSON without control characters.
void printJson(cli::Output &out, const nlohmann::json &value);
void printStatus(cli::Output &out, const nlohmann::json &status);
void printFaults(cli::Output &out, const nlohmann::json &faults);

}  // namespace qvs::launcher
