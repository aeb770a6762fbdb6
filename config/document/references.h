// SPDX-License-Identifier: Apache-2.0
// What is wrong with a document on a host: references to what neither of them has, and more ports than there
// is room for.
#pragma once

#include <string_view>
#include <vector>

#include "config/document/document.h"
#include "config/document/problem.h"

namespace qvs::config {

// Where problems of reading hide what a document has, nothing is said that these may have caused.

// Checks the settings of each switch of `wanted` against what there is once it is carried out: what it names,
// and what `now` has besides unless `prune` removes that. The settings that stay on the host are checked,
// too, for what the document removes.
std::vector<Problem> danglingReferences(const Document &now, const Document &wanted, bool prune,
                                        std::string_view origin);

// Checks whether the switches have room for their ports, those that stay on the host among them. Ports are
// added before others are removed, so that both count for a while.
std::vector<Problem> lackOfRoom(const Document &now, const Document &wanted, bool prune,
                                std::string_view origin);

struct Findings {
    std::vector<Problem> errors;
    std::vector<Problem> warnings;
};
// Both of these. References to nothing are errors with `strict`, and warnings without.
Findings checkOnHost(const Document &now, const Document &wanted, bool prune, bool strict,
                     std::string_view origin);

}  // namespace qvs::config
