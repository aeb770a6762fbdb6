// SPDX-License-Identifier: Apache-2.0
// One look at everything that qvs metrics reports.
#pragma once

#include "tool/command.h"
#include "views/exposition.h"

namespace qvs::cli {

enum class PortChoice { None, Uplinks, All };
inline constexpr const char *kPortChoices[] = {"none", "uplinks", "all"};

// Gathers all metrics. A part that fails is warned of, and counted, and does not stop the rest. Returns the
// number of requests that have failed. Throws when there is no host.
uint32_t scrape(const Arguments &arguments, PortChoice ports, Exposition &page);

}  // namespace qvs::cli
