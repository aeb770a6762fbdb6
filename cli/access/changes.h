// SPDX-License-Identifier: Apache-2.0
// Differences between a document and the host, as text and as JSON.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

#include "config/document/diff.h"

namespace qvs::cli {

class Output;

// "+ PATH: NEW", "- PATH: OLD", "~ PATH: OLD -> NEW".
std::string lineOf(const config::Change &change);
// The members "path", "change", "before" and "after" of a JSON object. Without a change, "change" is the
// word, and the others are null.
void appendChangeMembers(fmt::memory_buffer &out, const config::Change &change);
void appendNoChangeMembers(fmt::memory_buffer &out, std::string_view word);

void printText(const std::vector<config::Change> &changes, Output &out);
void printJson(const std::vector<config::Change> &changes, Output &out);

// Prints changes as text or JSON. The program ends with the status of a difference when there is one.
void printDifference(const std::vector<config::Change> &changes, Output &out);

}  // namespace qvs::cli
