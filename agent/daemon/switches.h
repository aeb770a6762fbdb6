// SPDX-License-Identifier: Apache-2.0
// The switches of this host, as the agent changes them: with a journal, until the change is confirmed or
// undone.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "config/document/document.h"

namespace qvs::fleet {

// Every function throws Failure. NoAnswer, NoHost, Locked and Differs say that it may succeed later.

// Undoes what an earlier run has left, or what waits to be confirmed. Returns whether there was something.
bool undoPending();

// Makes the host match a document, until it is confirmed. What only the document from before names is
// removed: settings and properties, and with `prune` all that the document does not name. Returns whether
// anything was changed; only then there is something to confirm.
bool change(const config::Document &before, const config::Document &wanted, bool prune,
            uint32_t confirmSeconds);

// Whether the change is kept. It is not when its time was over, and it was undone.
bool confirmChange();

// A number for the present state, which another state hardly has; nothing when the host does not answer.
// Costs a copy of the state.
std::optional<uint64_t> stateSum();

// The differences between the host and a document, as lines of qvs diff.
std::vector<std::string> differencesFrom(const config::Document &wanted);

// Whether each uplink of this host has a link, by "sw1/uplink0".
std::map<std::string, bool> uplinks();

}  // namespace qvs::fleet
