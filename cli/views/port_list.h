// SPDX-License-Identifier: Apache-2.0
// qvs port list and the settings that port show adds: ports with their VLANs and policies.
#pragma once

#include <string>

#include "config/library/snapshot.h"
#include "tool/command.h"
#include "tool/output.h"

namespace qvs::cli {

// The ports of a switch, in the columns that --columns chooses.
void listPorts(DVSSwitch *sw, const Arguments &arguments, Output &out);
extern const Option kColumnsOption;
extern const Option kVlanOption;

// All settings of a port: what holds, and whether it is stored.
void addSettings(Record &record, Output &out, const std::string &alias, DVSPort *port);

}  // namespace qvs::cli
