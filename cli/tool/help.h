// SPDX-License-Identifier: Apache-2.0
// What is made from the command table for people and shells.
#pragma once

#include <span>
#include <string>

#include "tool/command.h"

namespace qvs::cli {

std::string words(const Command &command);      // "switch create"
std::string usageLine(const Command &command);  // "qvs switch create ALIAS [--id ID] ..."

// An option and its value.
std::string words(const Option &option);
// The example of a command; in those of rows that several programs have, % stands for the program.
std::string exampleOf(const Command &command);

std::string programHelp();
// The commands that begin with these words.
std::string nounHelp(std::span<const std::string> words);
std::string commandHelp(const Command &command);

std::string bashCompletion();
std::string manualPage();      // troff
std::string markdownManual();  // the same as Markdown

}  // namespace qvs::cli
