// SPDX-License-Identifier: Apache-2.0
// Restores the state before a change.
#pragma once

#include <string>
#include <vector>

#include "config/apply/before.h"

namespace qvs::config {

struct Restored {
    size_t changes = 0;             // what had to be changed
    std::vector<std::string> left;  // what is not as it was, in words; empty: all is
    std::string problem;            // the first failure

    bool complete() const { return left.empty(); }
};

// Changes only what differs from the recorded state, so that it is idempotent. Loads the snapshot again.
Restored restore(const Before &before);

}  // namespace qvs::config
