// SPDX-License-Identifier: Apache-2.0
// What is wrong with a switch, as far as its facts tell.
#pragma once

#include <string>
#include <vector>

#include "access/overview.h"

namespace qvs::cli {

struct Problem {
    const char *kind;  // of the object: "switch", "uplink", "port" or "mirror session"
    std::string name;
    std::string text;
};

// Expects facts that were asked of the kernel: others lack the missing references.
std::vector<Problem> problemsOf(const SwitchFacts &facts);

}  // namespace qvs::cli
