// SPDX-License-Identifier: Apache-2.0
// Reads what the coordinator and operators see of a fleet, and keeps it up to date by the events of a watch.
#pragma once

#include "agent/rollout/machine.h"
#include "agent/store/store.h"

namespace qvs::fleet {

View readView(Store &store, const KeyNames &keys);

// A head with another revision needs another reading. A status that cannot be read is one with a problem.
void take(View &view, const KeyNames &keys, const Event &event);

// Follows all that `take` understands from the moment when the view was read.
void follow(Watch &watch, const KeyNames &keys, const View &view);

// A revision. Throws Failure (NotFound) when there is none.
Manifest readRevision(Store &store, const KeyNames &keys, uint64_t number);

}  // namespace qvs::fleet
