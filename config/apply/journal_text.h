// SPDX-License-Identifier: Apache-2.0
// The text of a journal.
#pragma once

#include <string>
#include <string_view>

#include "config/apply/journal.h"

namespace qvs::config {

std::string textOf(const Journal &journal);
// Throws a Failure that says what is wrong with it.
Journal parseJournal(std::string_view text);

}  // namespace qvs::config
