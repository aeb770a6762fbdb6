// SPDX-License-Identifier: Apache-2.0
// Differences between documents, as text and as JSON.
#pragma once

#include <fmt/format.h>

#include <vector>

#include "config/document/diff.h"

namespace qvs::cli {

// One line each: "+ PATH: NEW", "- PATH: OLD", "~ PATH: OLD -> NEW".
void appendChanges(fmt::memory_buffer &out, const std::vector<config::Change> &changes);
// An array of objects.
void appendChangesJson(fmt::memory_buffer &out, const std::vector<config::Change> &changes);

}  // namespace qvs::cli
