// SPDX-License-Identifier: Apache-2.0
// What the commands about uplinks share.
#pragma once

#include <string>
#include <vector>

#include "access/remains.h"
#include "base/text.h"
#include "tool/command.h"

namespace qvs::cli {

// Reads the stored uplinks of a switch. A switch without lists has none. Throws when the lists disagree with
// each other or with the ports; if `broken` is given, describes that there and returns the uplinks that are
// consistent. May load the snapshot again.
std::vector<Uplink> readUplinks(const std::string &alias, std::string *broken = nullptr);

// Warns, or with `strict` fails, when these uplinks have the only links of their switch and are about to lose
// them. An uplink is given by its name, its port or its NIC.
void checkLinksLeft(const std::string &alias, const std::vector<std::string> &taken, bool strict);

void addUplinks(const Arguments &arguments, Output &out);
void removeUplinks(const Arguments &arguments, Output &out);
void setUplinks(const Arguments &arguments, Output &out);
void clearUplinks(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
