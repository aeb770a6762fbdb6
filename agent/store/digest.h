// SPDX-License-Identifier: Apache-2.0
// SHA-256: documents are stored under their digest.
#pragma once

#include <string>
#include <string_view>

namespace qvs::fleet {

// In 64 hexadecimal digits.
std::string digestOf(std::string_view text);

}  // namespace qvs::fleet
