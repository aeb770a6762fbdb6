// SPDX-License-Identifier: Apache-2.0
// Suggestions for wrong words of a command line.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/command.h"

namespace qvs::cli {

// The words that can follow these words in a command, in the order of the rows.
std::vector<std::string_view> wordsBehind(std::span<const std::string> words);

// "; did you mean 'a' or 'b'?" with the first three suggestions, or an empty text.
std::string didYouMean(const std::vector<std::string> &suggestions);

// Suggests commands for words of which the first `known` exist: commands with a similar word, and the
// commands that do what a word of another tool says.
std::vector<std::string> commandsMeant(std::span<const std::string> words, size_t known);

// The beginnings of the commands that do what a word of another tool, or of everyday language, says. A noun
// may be in the plural.
std::vector<std::string> meaningsOf(std::string_view word);

// Suggests options of a command, which may be null, and of every command: those that are called so in other
// tools, or else those with a similar name.
std::vector<std::string> optionsMeant(const Command *command, std::string_view word);

// Suggests options of a command that accept the word as their value: "--id 100".
std::vector<std::string> optionsFor(const Command &command, const Arguments &given, std::string_view word);

}  // namespace qvs::cli
