// SPDX-License-Identifier: Apache-2.0
// Statuses of the library as failures of the tool.
#pragma once

#include <qvs/hyp.h>

#include <string_view>

#include "base/failure.h"

namespace qvs {

// No answer in time, from the device or from the state library.
inline constexpr HYP_ReturnStatus kTimedOut = 0xbad0021u;

// The failure of a library call: "switch 'sw9': Not found (0xbad0003)", with a hint behind it when there is
// one.
Failure libraryFailure(std::string_view subject, HYP_ReturnStatus status, std::string_view hint = {});

// Throws libraryFailure unless the call succeeded.
void require(HYP_ReturnStatus status, std::string_view subject);

}  // namespace qvs
