// SPDX-License-Identifier: Apache-2.0
// Statuses inside the library.
#pragma once

#include "qvs/hyp.h"

namespace qvs {

// The status of an errno: 0 for 0, HYP_FAILURE for one without a status of its own.
[[nodiscard]] HYP_ReturnStatus ErrnoToReturnStatus(int errnoValue);

}  // namespace qvs
