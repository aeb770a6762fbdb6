// SPDX-License-Identifier: Apache-2.0
// Plans the steps that carry out changes, and records what was there before.
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

// An object is created before, and removed after, those that refer to it. Each stage begins with a snapshot
// that contains the results of the stages before it.
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

// Plans the changes that compare() found between the loaded snapshot and a document. Both must live as long
// as the plan. Throws when a change is impossible: another identity of an existing object, or a name that is
// in use.
Plan planOf(std::span<const Change> changes, const Document &wanted, bool prune);

}  // namespace qvs::config
