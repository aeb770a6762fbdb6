// SPDX-License-Identifier: Apache-2.0
// Finds and ends the change of an earlier run that was interrupted or waits for confirmation.
#pragma once

#include "config/apply/restore.h"

namespace qvs::config {

enum class Pending {
    Nothing,
    Interrupted,  // a change was not carried out to the end; it is to be undone
    Expired,      // a change was not confirmed in time; it is to be undone
    Waits,        // a change may still be confirmed
};

// Returns the pending change. Throws when the journal cannot be used. The transaction of this process does
// not count.
Pending pendingJournal();

// Undoes the pending change; with NotWhatWaits, only if it was interrupted or has expired. If the result is
// complete, no change is pending afterwards. Locks the host.
enum class Recover { All, NotWhatWaits };
Restored recover(Recover which = Recover::All);

// Confirms the waiting change. Returns false when there is none. Undoes a change that has expired, and
// throws. Locks the host.
bool confirm();

// The first step of every change: undoes an interrupted or expired change, and throws while another waits for
// confirmation. Returns a sentence about what was undone, or nothing.
std::string settlePending();

// Throws a failure that lists what could not be restored.
void requireRestored(const Restored &restored);

}  // namespace qvs::config
