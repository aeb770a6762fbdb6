// SPDX-License-Identifier: Apache-2.0
// How the agent changes the switches of this host: with a journal, so that each change is confirmed or
// undone.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "config/document/document.h"

namespace qvs::fleet {

// All functions throw Failure. After NoAnswer, NoHost, Locked and Differs, a retry can succeed.

// Undoes a change that is not confirmed, of this or an earlier run. Returns whether there was one.
bool undoPending();

// Changes the host to match a document. The change has to be confirmed. Removes the settings and properties
// that only the previous document names, and with `prune` everything that the document does not name. Returns
// whether anything was changed; only then is there a change to confirm.
bool change(const config::Document &before, const config::Document &wanted, bool prune,
            uint32_t confirmSeconds);

// Confirms the change. Returns false if it had expired and was undone.
bool confirmChange();

// A fingerprint (hash) of the state of the host; nothing if the host does not answer. Copies the state.
std::optional<uint64_t> stateSum();

// The differences between the host and a document, as lines of qvs diff.
std::vector<std::string> differencesFrom(const config::Document &wanted);

// The link state of each uplink of this host, by "sw1/uplink0".
std::map<std::string, bool> uplinks();

}  // namespace qvs::fleet
