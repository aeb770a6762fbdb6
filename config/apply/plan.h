// SPDX-License-Identifier: Apache-2.0
// The steps that carry out changes, and what was there before.
#pragma once

#include <qvs/hyp.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "config/apply/before.h"
#include "config/document/diff.h"
#include "config/document/document.h"

namespace qvs::config {

// What is referred to is created before, and removed after, what refers to it. Each stage begins with a
// snapshot that has what the stages before it did.
enum class Stage { Switches, Ports, Contents, Removals };

struct Step {
    Stage stage;
    std::string what;  // "switch 'sw1': port 'web': vlan", for messages
    std::function<HYP_ReturnStatus()> run;
};

struct Plan {
    std::vector<Step> steps;  // by stage
    Before before;            // of all that the steps touch
};

// The steps for changes that compare() found between the loaded snapshot and a document. Both have to live as
// long as the plan. Throws a failure when they cannot be carried out: an identity that cannot be changed, a
// name that is taken.
Plan planOf(std::span<const Change> changes, const Document &wanted, bool prune);

}  // namespace qvs::config
