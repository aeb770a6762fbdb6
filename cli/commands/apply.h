// SPDX-License-Identifier: Apache-2.0
// Applying documents, for the commands that have one.
#pragma once

#include "access/wanted.h"
#include "config/apply/apply.h"
#include "config/document/document.h"
#include "tool/command.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {

// Options that applyChanges takes from the arguments.
inline constexpr Option kYes{"--yes", nullptr, "do not ask"};
inline constexpr Option kDryRun{"--dry-run", nullptr, "only print what would be changed"};
inline constexpr Option kConfirm{.name = "--confirm",
                                 .value = "SECONDS",
                                 .summary = "undo everything unless 'qvs confirm' is run within this time",
                                 .check = checkNumber<1, config::kMostConfirmSeconds>};

// Throws a usage failure when the change needs an answer and there is no terminal.
void requireSomebodyToAsk(const Arguments &arguments, bool inputIsTaken = false);

// Prints the changes of a document, asks for confirmation, carries them out and reports them.
void applyChanges(const config::Document &document, const Comparison &how, const Arguments &arguments,
                  Output &out);

}  // namespace qvs::cli
