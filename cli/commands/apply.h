// SPDX-License-Identifier: Apache-2.0
// Applying documents, for the commands that have one.
#pragma once

#include "access/wanted.h"
#include "config/document/document.h"
#include "tool/command.h"
#include "tool/output.h"

namespace qvs::cli {

// Options that applyChanges takes from the arguments.
inline constexpr Option kYes{"--yes", nullptr, "do not ask"};
inline constexpr Option kDryRun{"--dry-run", nullptr, "only print what would be changed"};
inline constexpr Option kConfirm{"--confirm", "SECONDS",
                                 "undo everything unless 'qvs confirm' is run within this time"};

// Throws a usage failure when a person would have to be asked, and cannot.
void requireSomebodyToAsk(const Arguments &arguments, bool inputIsTaken = false);

// Prints what a document changes, asks, carries it out and reports it.
void applyChanges(const config::Document &document, const Comparison &how, const Arguments &arguments,
                  Output &out);

}  // namespace qvs::cli
