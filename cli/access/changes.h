// SPDX-License-Identifier: Apache-2.0
// Differences between a document and the host, as text and as JSON.
#pragma once

#include <vector>

#include "config/document/diff.h"

namespace qvs::cli {

class Output;

void printText(const std::vector<config::Change> &changes, Output &out);
void printJson(const std::vector<config::Change> &changes, Output &out);

}  // namespace qvs::cli
