// SPDX-License-Identifier: Apache-2.0
// Turns statuses of the library into failures.
#pragma once

#include <qvs/hyp.h>

#include <string_view>

#include "base/failure.h"

namespace qvs {

// The status of a device or state library that does not answer in time.
inline constexpr HYP_ReturnStatus kTimedOut = 0xbad0021u;

// Makes the failure of a library call: "switch 'sw9': Not found (0xbad0003)", followed by a hint if there is
// one.
Failure libraryFailure(std::string_view subject, HYP_ReturnStatus status, std::string_view hint = {});

// Throws libraryFailure unless the call succeeded.
void require(HYP_ReturnStatus status, std::string_view subject);

}  // namespace qvs
