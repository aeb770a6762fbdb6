// SPDX-License-Identifier: Apache-2.0
// The order in which people expect names.
#pragma once

#include <string_view>

namespace qvs {

// Whether one name stands before another, with numbers in them by their value: "port2" before "port10".
bool namedBefore(std::string_view left, std::string_view right);

}  // namespace qvs
