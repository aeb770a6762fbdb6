// SPDX-License-Identifier: Apache-2.0
// What the commands about uplinks share.
#pragma once

#include <string>
#include <vector>

#include "access/remains.h"
#include "base/text.h"
#include "tool/command.h"

namespace qvs::cli {

// The uplinks of a switch as stored now. A switch without lists has none. Where the lists do not agree with
// one another or with the ports, that is a failure, or goes into `broken`, with the uplinks that are whole.
// The snapshot may have been loaded again.
std::vector<Uplink> readUplinks(const std::string &alias, std::string *broken = nullptr);

// The uplinks that are given: each once, and short enough.
const std::vector<std::string> &uplinkArguments(const Arguments &arguments, const Limit &limit);

void addUplinks(const Arguments &arguments, Output &out);
void removeUplinks(const Arguments &arguments, Output &out);
void setUplinks(const Arguments &arguments, Output &out);
void clearUplinks(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
