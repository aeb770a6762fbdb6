// SPDX-License-Identifier: Apache-2.0
// The journal: what was there before a change, on disk while the change goes on or waits to be confirmed. One
// file a host, readable for its owner alone: one head line, one line for each switch and port, and a line
// with the checksum of what stands before it.
#pragma once

#include <cstdint>
#include <string>

#include "config/apply/before.h"

namespace qvs::config {

struct Journal {
    // A change that waits to be confirmed: when the time is over, on the clock of the boot that is named.
    // Zero: the change was not carried out to the end.
    uint64_t deadline = 0;
    std::string bootId;
    Before before;

    bool waits() const { return deadline != 0; }
    // Of a change that waits. A restart of the machine ends the time.
    bool expired() const;
    uint64_t secondsLeft() const;
};

// The path, for messages.
std::string journalPath();
// Whether there is one; cheap.
bool journalExists();
// Throws when there is none, and for one that is damaged, of a newer version, or not to be trusted.
Journal readJournal();
// On disk when it returns, in the place of an earlier one. Throws.
void writeJournal(const Journal &journal);
void removeJournal();
// Removes what a run that was killed while it wrote a journal has left. Needs the lock of everything.
void removeUnfinishedJournal();

// The time `seconds` from now.
Journal waiting(Before before, uint32_t seconds);

}  // namespace qvs::config
