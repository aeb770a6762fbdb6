// SPDX-License-Identifier: Apache-2.0
// What single steps of a plan do.
#pragma once

#include <qvs/hyp.h>

#include <string>
#include <vector>

#include "config/document/diff.h"
#include "config/document/document.h"

namespace qvs::config {

// They run on the snapshot of their stage.
HYP_ReturnStatus createSwitch(const SwitchEntry &sw);
HYP_ReturnStatus addPort(const std::string &alias, const PortEntry &port);
// Stores the value of a setting, or removes what is stored for it.
HYP_ReturnStatus storeSetting(const Change &change);
HYP_ReturnStatus clearSetting(const Change &change);

// A property at the place of a change, byte by byte; null clears it.
HYP_ReturnStatus storeRaw(const Change &change, const char *key, uint32_t classes, const Blob *value);
// Makes both lists of uplinks and the aliases of their ports those that are wanted.
HYP_ReturnStatus arrangeUplinks(const std::string &alias, const std::vector<UplinkEntry> &wanted);
// The uplinks in the value of the member "uplinks".
std::vector<UplinkEntry> uplinksIn(const Value &value);

}  // namespace qvs::config
