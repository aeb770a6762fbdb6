// SPDX-License-Identifier: Apache-2.0
// `qvs-host fault add`: a fault as it is typed.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tool/command.h"

namespace qvs::launcher {

// The control request that adds the fault.
nlohmann::json requestOf(const cli::Arguments &arguments);

}  // namespace qvs::launcher
