// SPDX-License-Identifier: Apache-2.0
// The functions of the steps of a plan.
#pragma once

#include <qvs/hyp.h>

#include <string>
#include <vector>

#include "config/document/diff.h"
#include "config/document/document.h"

namespace qvs::config {

// Steps use the snapshot of their stage.
HYP_ReturnStatus createSwitch(const SwitchEntry &sw);
HYP_ReturnStatus addPort(const std::string &alias, const PortEntry &port);
// Stores the value of a setting, or removes it.
HYP_ReturnStatus storeSetting(const Change &change);
HYP_ReturnStatus clearSetting(const Change &change);

// Stores the bytes of a property, or clears it when they are null.
HYP_ReturnStatus storeRaw(const Change &change, const char *key, uint32_t classes, const Blob *value);
// Changes both lists of uplinks, and the aliases of their ports, to the wanted uplinks.
HYP_ReturnStatus arrangeUplinks(const std::string &alias, const std::vector<UplinkEntry> &wanted);
// Returns the uplinks in the value of the member "uplinks".
std::vector<UplinkEntry> uplinksIn(const Value &value);

}  // namespace qvs::config
