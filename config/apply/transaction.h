// SPDX-License-Identifier: Apache-2.0
// A change of many steps that is done as a whole or not at all, whatever ends it.
#pragma once

#include <csignal>

#include "config/apply/journal.h"
#include "config/apply/restore.h"

namespace qvs::config {

// From its making until it is committed or undone, the journal lies on disk, and a later run undoes what this
// one cannot. The caller holds the lock of everything.
class Transaction {
  public:
    explicit Transaction(Before before);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    // Makes everything as it was. The journal stays unless that was possible.
    Restored undo();
    // Keeps what was done; for good, or until the time that is returned, unless somebody confirms it before.
    void commit();
    uint64_t commitForNow(uint32_t seconds);

    // Whether this process is in a transaction: its journal is none that a run has left behind.
    static bool underWay();

  private:
    Before before_;
};

// Holds back the signals that end a run, so that the run can see them between two steps.
class Interruptions {
  public:
    Interruptions();
    // What has come in since is delivered, but for what was taken.
    ~Interruptions();
    Interruptions(const Interruptions &) = delete;
    Interruptions &operator=(const Interruptions &) = delete;

    // The name of a signal that came in; null for none. Each is told once.
    const char *take();

  private:
    sigset_t watched_;
    sigset_t before_;
};

}  // namespace qvs::config
