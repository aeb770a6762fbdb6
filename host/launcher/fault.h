// SPDX-License-Identifier: Apache-2.0
// Reads the options of `qvs-host fault add`.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tool/command.h"

namespace qvs::launcher {

// The values of --kill.
inline constexpr const char *kMoments[] = {"before", "middle", "after"};

// Returns the control request that adds the fault.
nlohmann::json requestOf(const cli::Arguments &arguments);

}  // namespace qvs::launcher
