// SPDX-License-Identifier: Apache-2.0
// The view of the coordinator and of operators of a fleet. Events of a watch keep it up to date.
#pragma once

#include "agent/rollout/machine.h"
#include "agent/store/store.h"

namespace qvs::fleet {

View readView(Store &store, const KeyNames &keys);

// A head with another revision requires reading again. A status that cannot be read is one with a problem.
void take(View &view, const KeyNames &keys, const Event &event);

// Watches all keys that `take` understands, from the revision at which the view was read.
void follow(Watch &watch, const KeyNames &keys, const View &view);

// A revision. Throws Failure (NotFound) when there is none.
Manifest readRevision(Store &store, const KeyNames &keys, uint64_t number);

}  // namespace qvs::fleet
