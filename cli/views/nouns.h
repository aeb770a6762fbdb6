// SPDX-License-Identifier: Apache-2.0
// The rows of the commands that look at what runs, by file.
#pragma once

#include "tool/command.h"

namespace qvs::cli {

extern const std::span<const Command> kShowCommands;
extern const std::span<const Command> kPortStatsCommands;
extern const std::span<const Command> kNicCommands;
extern const std::span<const Command> kTopCommands;
extern const std::span<const Command> kMirrorRuntimeCommands;
extern const std::span<const Command> kTeamingStatsCommands;
extern const std::span<const Command> kIpfixStatsCommands;
extern const std::span<const Command> kMetricsCommands;
extern const std::span<const Command> kTopologyCommands;

}  // namespace qvs::cli
