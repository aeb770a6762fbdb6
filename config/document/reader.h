// SPDX-License-Identifier: Apache-2.0
// Reads documents, in YAML or JSON.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "config/document/document.h"
#include "config/document/problem.h"

namespace qvs::config {

// Larger documents are refused.
inline constexpr size_t kMostDocumentBytes = size_t{64} << 20;

// Reads a document and checks it against the table of settings. All problems are collected; the document
// has what is right. The values of settings are completed.
Document readDocument(std::string_view text, std::string_view origin, std::vector<Problem> &problems);

}  // namespace qvs::config
