// SPDX-License-Identifier: Apache-2.0
// A tree of lines, drawn with branches in front of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/output.h"

namespace qvs::cli {

struct Branch {
    std::string text;  // safe to show
    std::vector<Branch> branches = {};

    Branch &add(std::string line) { return branches.emplace_back(Branch{std::move(line)}); }
};

enum class Tint { Red, Yellow };
// The text in a colour, on a terminal that may show one.
std::string tinted(std::string_view text, Tint tint);

// Pads all cells of a column but the last to one width. Rows may be of different lengths.
std::vector<std::string> aligned(const std::vector<std::vector<std::string>> &rows);

// Draws with lines on a terminal that shows Unicode, and with plain characters elsewhere.
void printTree(Output &out, const Branch &root);

}  // namespace qvs::cli
