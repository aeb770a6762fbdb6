// SPDX-License-Identifier: Apache-2.0
// The columns that UTF-8 text takes on a terminal, and how text is cut and padded to them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qvs {

// The columns of a text: none for combining characters and for colours, two for wide characters.
size_t columnsOf(std::string_view text);

// Returns the text, or its first characters and `mark` when it has more columns. The mark has one column.
std::string cutTo(std::string_view text, size_t columns, std::string_view mark = "…");

}  // namespace qvs
