// SPDX-License-Identifier: Apache-2.0
#include "config/apply/recover.h"

#include "base/failure.h"
#include "config/apply/journal.h"
#include "config/apply/transaction.h"
#include "config/library/lock.h"

namespace qvs::config {
namespace {

Pending stateOf(const Journal &journal) {
    if (!journal.waits()) return Pending::Interrupted;
    return journal.expired() ? Pending::Expired : Pending::Waits;
}

bool isThere() {
    return !Transaction::underWay() && journalExists();
}

Restored undo(const Journal &journal) {
    Restored restored = restore(journal.before);
    if (restored.complete()) removeJournal();
    return restored;
}

}  // namespace

Pending pendingJournal() {
    return isThere() ? stateOf(readJournal()) : Pending::Nothing;
}

Restored recover(Recover which) {
    const Lock lock(Guard::Everything, "");
    if (!Transaction::underWay()) removeUnfinishedJournal();
    if (!isThere()) return {};
    const Journal journal = readJournal();
    if (which == Recover::NotWhatWaits && stateOf(journal) == Pending::Waits) return {};
    return undo(journal);
}

bool confirm() {
    const Lock lock(Guard::Everything, "");
    if (!isThere()) return false;
    const Journal journal = readJournal();
    switch (stateOf(journal)) {
        case Pending::Waits:
            removeJournal();
            return true;
        case Pending::Expired:
            requireRestored(undo(journal));
            fail(Exit::Failed, "the time to confirm was over; the change was undone");
        default:
            return false;
    }
}

std::string settlePending() {
    if (!isThere()) return {};
    const Lock lock(Guard::Everything, "");
    if (!isThere()) return {};
    const Journal journal = readJournal();
    const Pending pending = stateOf(journal);
    if (pending == Pending::Waits) {
        fail(Exit::Locked,
             "a change waits to be confirmed, for {} s more; 'qvs confirm' keeps it, 'qvs apply --recover' "
             "undoes it",
             journal.secondsLeft());
    }
    requireRestored(undo(journal));
    return pending == Pending::Expired ? "a change that was not confirmed in time was undone"
                                       : "a change that an earlier run did not finish was undone";
}

void requireRestored(const Restored &restored) {
    if (restored.complete()) return;
    std::string message = "not everything was undone";
    if (!restored.problem.empty()) message += fmt::format(" ({})", restored.problem);
    for (const std::string &left : restored.left)
        message += "\n  " + left;
    fail(Exit::Failed, "{}\n'qvs apply --recover' goes on with it; the journal is {}", message,
         inQuotes(journalPath()));
}

}  // namespace qvs::config
