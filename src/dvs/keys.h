// SPDX-License-Identifier: Apache-2.0
// Properties that several families read.
#pragma once

#include "dvs/property.h"

namespace qvs {

constexpr Property kVersion = propertyOf(QVS_KEY_VERSION);
constexpr Property kPortSecurity = propertyOf(QVS_KEY_PORT_SECURITY);

}  // namespace qvs
