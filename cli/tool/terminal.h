// SPDX-License-Identifier: Apache-2.0
// The width of the terminal, and how text is wrapped to fit it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/columns.h"

namespace qvs::cli {

// The columns of the terminal behind standard output; nothing when standard output is no terminal.
std::optional<size_t> terminalColumns();

// The columns that help texts may fill: at most 100 of a terminal, or of COLUMNS. Without both, lines are not
// broken.
size_t proseColumns();
// The columns that messages may fill behind the name of the program: those of a terminal behind standard
// error, at most 100. Without one, lines are not broken.
size_t messageColumns();

// Whether standard output is a terminal that may show bold text.
bool showsBold();

// Appends words that are separated by blanks, the first at the column `at`. Breaks lines between words so
// that they fit `most` columns, and begins each new line at the column `indent`. Keeps the line breaks of the
// text.
void appendWrapped(std::string &out, std::string_view text, size_t at, size_t indent,
                   size_t most = proseColumns());

}  // namespace qvs::cli
