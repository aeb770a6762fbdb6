// SPDX-License-Identifier: Apache-2.0
// The JSON Schema (2020-12) of documents.
#pragma once

#include <string>

namespace qvs::config {

std::string schemaText();

}  // namespace qvs::config
