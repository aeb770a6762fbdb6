// SPDX-License-Identifier: Apache-2.0
// Finds and removes what an incomplete change leaves behind, when it was killed or could not be undone:
// switches without a data path, data paths without a switch, uplinks without a port and ports without an
// uplink.
#pragma once

#include <qvs/mesh_public.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/library/portset.h"
#include "tool/command.h"

namespace qvs::cli {

class Output;

struct Uplink {
    std::string name;
    std::string port;
};

// Returns the names of the parts that a switch of class "vswitch" lacks. Empty when the switch is complete.
std::vector<std::string> missingParts(DVSSwitch *sw, const KernelSwitches &kernel);

// The uplinks of a switch in the snapshot.
struct UplinkState {
    std::vector<Uplink> whole;            // those with a name, an entry for their port, and the port
    std::vector<std::string> broken;      // what is listed and is no such uplink, in words
    std::vector<std::string> strayPorts;  // as they were made for uplinks, unused and in no list
    bool readable = true;                 // both lists are lists
    bool listed = false;                  // there is a list
};
UplinkState uplinkState(DVSSwitch *sw);

// Describes everything that incomplete changes have left behind in a switch.
std::vector<std::string> remainsOf(DVSSwitch *sw, const std::optional<KernelSwitches> &kernel);

// Returns the end of a message that says how to repair the uplinks. Empty when they are consistent. Loads the
// snapshot again.
std::string mendingHint(const std::string &alias);

// Removes a switch of which parts are missing, and the portset that is its own.
void removeHalfMade(DVSSwitch *sw, const std::string &subject);
// Removes the switch without an alias that has this identifier, or the portset of this name that belongs to
// no switch. Returns true when there was one.
bool removeNameless(const std::string &name);

void repair(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
