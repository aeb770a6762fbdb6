// SPDX-License-Identifier: Apache-2.0
// What the settings of a document refer to although neither the document nor the host has it.
#pragma once

#include <string_view>
#include <vector>

#include "config/document/document.h"
#include "config/document/problem.h"

namespace qvs::config {

// Checks the settings of `wanted` against what there is once it is carried out: what it names, and what `now`
// has besides unless `prune` removes that.
std::vector<Problem> danglingReferences(const Document &now, const Document &wanted, bool prune,
                                        std::string_view origin);

}  // namespace qvs::config
