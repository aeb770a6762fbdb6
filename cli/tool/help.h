// SPDX-License-Identifier: Apache-2.0
// Texts that are made from the command table: usage, help, completion and manual.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/command.h"

namespace qvs::cli {

class Output;

std::string words(const Command &command);      // "switch create"
std::string usageLine(const Command &command);  // "qvs switch create ALIAS [--id ID] ..."
// The same behind a text, in lines of at most so many columns.
std::string wrappedUsage(const Command &command, size_t columns, std::string text = "usage: ");

// An option with the name of its value: "--id ID".
std::string words(const Option &option);
// What the option does, and which other option it needs.
std::string summaryOf(const Option &option);
// The example of a command. In rows that several programs share, % stands for the name of the program.
std::string exampleOf(const Command &command);

// The summary of the noun or command with these words, or of the first group with commands that begin with
// them.
std::string summaryOf(std::string_view words);
// The text of a row with each % replaced by the name of the program.
std::string ofProgram(std::string text);

// The short help: the nouns, on one screen.
std::string programHelp();
// The long help: all commands.
std::string wholeHelp();
// The commands in whose names, summary or options a word begins with each of these words, and those that a
// single word of another tool means.
std::string searchHelp(std::span<const std::string> words);
// The commands that begin with these words.
std::string nounHelp(std::span<const std::string> words);
std::string commandHelp(const Command &command);

// The script that makes a shell complete the program: "bash", "zsh" or "fish".
std::string completionScript(std::string_view shell);
// Prints the words that may complete the last of these words of a command line.
void offerNext(std::span<const std::string> words, Output &out);

std::string manualPage();  // troff
// The first words of all commands, if the program has a manual page for each of them. Otherwise empty.
std::vector<std::string_view> nounsWithPages();
std::string manualPageOf(std::string_view noun);
std::string markdownManual();  // the same as Markdown

}  // namespace qvs::cli
