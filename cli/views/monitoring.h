// SPDX-License-Identifier: Apache-2.0
// The rows of the nouns that show the host to other programs: monitoring and browsers.
#pragma once

#include "tool/command.h"

namespace qvs::cli {

extern const std::span<const Command> kMetricsCommands;
extern const std::span<const Command> kTopologyCommands;

}  // namespace qvs::cli
