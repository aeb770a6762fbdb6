// SPDX-License-Identifier: Apache-2.0
// Resolves the names of a switch inside the library.
#pragma once

#include "qvs/dvs.h"

namespace qvs {

// A resolved switch identifier, always NUL-terminated.
struct SwitchId {
    SwitchIdString text = {};

    // Of the switch of class "vswitch" that has this alias.
    [[nodiscard]] HYP_ReturnStatus resolve(const char *alias) { return DVSAliasToSwitchId(alias, text); }
};

// The portset name of a switch, NUL-terminated even if it has 128 bytes.
struct PortsetName {
    char text[sizeof(SwitchAliasName) + 1] = {};

    [[nodiscard]] HYP_ReturnStatus resolve(const char *alias) { return DVSAliasToPortsetName(alias, text); }
};

}  // namespace qvs
