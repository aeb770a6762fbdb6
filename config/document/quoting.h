// SPDX-License-Identifier: Apache-2.0
// Texts as documents write them.
#pragma once

#include <string>
#include <string_view>

namespace qvs::config {

// The bytes of a name as text, as shown() has them. U+FFFD is escaped, too: readers take it for lost bytes.
std::string documentText(std::string_view bytes);

// Text as a scalar of YAML, in quotes when YAML 1.1 or 1.2 would read something else without.
std::string quotedForYaml(std::string_view text);
std::string quotedForJson(std::string_view text);

}  // namespace qvs::config
