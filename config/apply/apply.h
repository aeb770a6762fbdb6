// SPDX-License-Identifier: Apache-2.0
// Carries out a document: all of it or nothing.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "config/apply/plan.h"
#include "config/apply/recover.h"
#include "config/apply/transaction.h"
#include "config/document/diff.h"
#include "config/document/document.h"
#include "config/document/problem.h"

namespace qvs::config {

struct ApplyOptions {
    bool prune = false;           // what the document does not name is removed
    bool keepsSwitches = false;   // but no switches
    uint32_t confirmSeconds = 0;  // undone unless it is confirmed within this time; 0: kept
    // The changes that the user has confirmed. If the comparison finds others, nothing is changed.
    const std::vector<Change> *agreed = nullptr;
    // Returns the name of a signal that was received, or null. Called between steps.
    std::function<const char *()> interrupted;
};

// Called before each step, and with `done` equal to `total` at the end.
using Progress = std::function<void(size_t done, size_t total, const std::string &what)>;

struct ApplyResult {
    enum class Outcome { Unchanged, Applied, Undone, NotUndone };
    Outcome outcome = Outcome::Unchanged;
    std::vector<Change> changes;
    uint64_t deadline = 0;  // on the clock of bootTime(), of a change that has to be confirmed
    std::string problem;    // why it was undone
    HYP_ReturnStatus status = HYP_FAILURE;  // of the step that failed
    Restored undone;                        // and what of it is left
};

// Returns the document of the loaded snapshot: of the switches that `wanted` names, or of all switches when
// others are to be removed.
Document documentOfHost(const Document &wanted, bool all, std::vector<std::string> &warnings);

// The most seconds for which a change can wait to be confirmed.
inline constexpr uint32_t kMostConfirmSeconds = 7 * 86400;

// Adds to the problems that reading a document has found those that it has on the host of the snapshot, so
// that all are told at once. A host that does not answer adds none.
void addHostProblems(const Document &wanted, bool prune, bool strict, std::string_view origin,
                     std::vector<Problem> &problems);

// Locks the host, compares it with the document, and carries out the difference. Throws before anything is
// changed; a later failure is in the result.
ApplyResult applyDocument(const Document &wanted, const ApplyOptions &options, const Progress &progress = {});

}  // namespace qvs::config
