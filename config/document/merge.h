// SPDX-License-Identifier: Apache-2.0
// Puts documents together, and takes one out of another.
#pragma once

#include <string>
#include <vector>

#include "config/document/document.h"

namespace qvs::config {

// Adds what `with` names. Where both name a setting, a property or a member, that of `with` stays.
void overlay(Document &onto, const Document &with);

// Removes the settings and properties that `what` names. Switches and ports stay, and what makes them so.
void subtract(Document &from, const Document &what);

// The paths that both name with different values.
std::vector<std::string> disagreements(const Document &one, const Document &other);

}  // namespace qvs::config
