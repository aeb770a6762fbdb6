// SPDX-License-Identifier: Apache-2.0
// Writes texts as scalars of documents.
#pragma once

#include <string>
#include <string_view>

namespace qvs::config {

// Returns a name as shown() does. U+FFFD is escaped, too, because readers take it for lost bytes.
std::string documentText(std::string_view bytes);

// Returns a text as a YAML scalar, in quotes if YAML 1.1 or 1.2 would otherwise read something else.
std::string quotedForYaml(std::string_view text);
std::string quotedForJson(std::string_view text);

}  // namespace qvs::config
