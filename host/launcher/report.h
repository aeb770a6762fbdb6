// SPDX-License-Identifier: Apache-2.0
// What `qvs-host status` and `qvs-host fault list` print for people.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tool/output.h"

namespace qvs::launcher {

// As it is, in lines, with no character that a terminal would obey.
void printJson(cli::Output &out, const nlohmann::json &value);
void printStatus(cli::Output &out, const nlohmann::json &status);
void printFaults(cli::Output &out, const nlohmann::json &faults);

}  // namespace qvs::launcher
