// SPDX-License-Identifier: Apache-2.0
// What an earlier run has left: a change that was interrupted, or one that waits to be confirmed.
#pragma once

#include "config/apply/restore.h"

namespace qvs::config {

enum class Pending {
    Nothing,
    Interrupted,  // a change was not carried out to the end; it is to be undone
    Expired,      // a change was not confirmed in time; it is to be undone
    Waits,        // a change may still be confirmed
};

// What there is. Throws for a journal that cannot be used. The change that this process is at does not count.
Pending pendingJournal();

// Undoes what is pending, or only what has expired or was interrupted. Nothing is pending afterwards if the
// result is complete. Takes the lock of everything.
enum class Recover { All, NotWhatWaits };
Restored recover(Recover which = Recover::All);

// Keeps the change that waits. False when there is none. One that has expired is undone, and throws. Takes
// the lock of everything.
bool confirm();

// What every change begins with: undoes what is to be undone, and throws while something waits. Returns what
// was undone, as a sentence, or nothing.
std::string settlePending();

// "undone" for messages, or what is left. Throws the latter.
void requireRestored(const Restored &restored);

}  // namespace qvs::config
