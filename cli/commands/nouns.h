// SPDX-License-Identifier: Apache-2.0
// The rows of each noun of qvs, by file, and the noun that is a program of its own.
#pragma once

#include "tool/command.h"

namespace qvs::cli {

extern const std::span<const Command> kSwitchCommands;
extern const std::span<const Command> kPortCommands;
extern const std::span<const Command> kUplinkCommands;
extern const std::span<const Command> kMirrorCommands;
extern const std::span<const Command> kMacCommands;
extern const std::span<const Command> kSinkCommands;
extern const std::span<const Command> kHealthCommands;
extern const std::span<const Command> kMulticastFilterCommands;
extern const std::span<const Command> kSpfCommands;
extern const std::span<const Command> kBfdCommands;
extern const std::span<const Command> kKcpCommands;
extern const std::span<const Command> kTraceCommands;
extern const std::span<const Command> kTelemetryCommands;
extern const std::span<const Command> kLivetraceCommands;
extern const std::span<const Command> kOptionsCommands;
extern const std::span<const Command> kRouteTableCommands;
extern const std::span<const Command> kPropCommands;
extern const std::span<const Command> kDocumentCommands;
extern const std::span<const Command> kDumpCommands;
extern const std::span<const Command> kStatusCommands;
extern const std::span<const Command> kApplyCommands;
extern const std::span<const Command> kDoctorCommands;
extern const std::span<const Command> kBatchCommands;
extern const std::span<const Command> kCheckpointCommands;
extern const std::span<const Command> kFleetCommands;
extern const std::span<const Command> kMonitorCommands;

// Tells whether the words of a command line begin with "fleet".
bool namesFleet(int argc, char **argv);
// Replaces this program by qvs-fleet, with the words behind "fleet". Returns the exit status when that fails.
int startFleet(char **argv);

}  // namespace qvs::cli
