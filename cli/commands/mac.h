// SPDX-License-Identifier: Apache-2.0
// What the commands about MAC tables share.
#pragma once

#include <string>
#include <string_view>

#include "tool/command.h"

namespace qvs::cli {

// The port's identifier, or null when the command is about the switch.
const char *macPort(const Arguments &arguments);

// Refuses what is no entry of a MAC table, or more than one.
void checkMacEntry(std::string_view name, const std::string &text);
void addMacEntry(const Arguments &arguments, Output &out);
void removeMacEntry(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
