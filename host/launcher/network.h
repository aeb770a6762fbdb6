// SPDX-License-Identifier: Apache-2.0
// The commands for frames and attachments.
#pragma once

#include <span>
#include <string>

#include "tool/command.h"

namespace qvs::launcher {

extern const std::span<const cli::Command> kNetworkCommands;

// Returns the socket of the host that a command applies to.
std::string socketOf(const cli::Arguments &arguments);
// Returns the whole name of a file of the user.
std::string absolute(const std::string &path);

inline constexpr cli::Option kRunning{
    "--state", "DIR", "directory of the host (default: the host that this runs on)", cli::Kind::Directory};

}  // namespace qvs::launcher
