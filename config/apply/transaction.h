// SPDX-License-Identifier: Apache-2.0
// A change of several steps that is carried out as a whole or not at all.
#pragma once

#include <csignal>

#include "config/apply/journal.h"
#include "config/apply/restore.h"

namespace qvs::config {

// The journal exists from construction until the transaction is committed or undone. If the process ends
// before, a later run undoes the change. The caller holds the lock of the host.
class Transaction {
  public:
    explicit Transaction(Before before);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    // Restores the state before the change. The journal is kept if that was not possible in full.
    Restored undo();
    // commit makes the change permanent. commitForNow keeps it until the time that it returns, on the clock
    // of bootTime(); if it is not confirmed before, it is undone.
    void commit();
    uint64_t commitForNow(uint32_t seconds);

    // Whether this process is in a transaction, so that the journal is its own.
    static bool underWay();

  private:
    Before before_;
};

// Blocks the signals that end a run, so that the run can look for them between two steps.
class Interruptions {
  public:
    Interruptions();
    // Delivers the signals that were received and not taken.
    ~Interruptions();
    Interruptions(const Interruptions &) = delete;
    Interruptions &operator=(const Interruptions &) = delete;

    // Returns the name of a signal that was received, or null. Each signal is returned once.
    const char *take();

  private:
    sigset_t watched_;
    sigset_t before_;
};

}  // namespace qvs::config
