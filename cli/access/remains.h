// SPDX-License-Identifier: Apache-2.0
// What changes that were killed, or that could not be undone, leave behind: switches without data path, data
// paths without switch, uplinks without port and ports without uplink.
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

// What a switch lacks that a switch of class "vswitch" has once it is created, in words; nothing when it is
// whole.
std::vector<std::string> missingParts(DVSSwitch *sw, const KernelSwitches &kernel);

// The uplinks of a switch, as the snapshot has them.
struct UplinkState {
    std::vector<Uplink> whole;            // those with a name, an entry for their port, and the port
    std::vector<std::string> broken;      // what is listed and is no such uplink, in words
    std::vector<std::string> strayPorts;  // as they were made for uplinks, unused and in no list
    bool readable = true;                 // both lists are lists
    bool listed = false;                  // there is a list
};
UplinkState uplinkState(DVSSwitch *sw);

// Everything that is left of unfinished changes of a switch, in words.
std::vector<std::string> remainsOf(DVSSwitch *sw, const std::optional<KernelSwitches> &kernel);

// The words behind a message that tell how to mend the uplinks; none when they are whole. The snapshot is
// loaded again.
std::string mendingHint(const std::string &alias);

// Removes a switch of which parts are missing, and the portset that is its own.
void removeHalfMade(DVSSwitch *sw, const std::string &subject);
// What the name stands for beside the alias of a switch: the identifier of one without alias, or a portset
// without switch. True when that was there, and has been removed.
bool removeNameless(const std::string &name);

void repair(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
