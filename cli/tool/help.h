// What is made from the command table for people and shells.
#pragma once

#include <span>
#include <string>

#include "tool/command.h"

namespace qvs::cli {

std::string words(const Command &command);      // "switch create"
std::string usageLine(const Command &command);  // "qvs switch create ALIAS [--id ID] ..."

std::string toolHelp();
// The commands that begin with these words.
std::string nounHelp(std::span<const std::string> words);
std::string commandHelp(const Command &command);

std::string bashCompletion();
std::string manualPage();      // troff
std::string markdownManual();  // the same as Markdown

// What the exit codes mean, in their order.
struct ExitCode {
    int code;
    const char *meaning;
};
inline constexpr ExitCode kExitCodes[] = {
    {0, "success"},
    {1, "the operation failed"},
    {2, "wrong usage, or a value that its record cannot hold"},
    {3, "not found"},
    {4, "exists already, or exists and differs"},
    {5, "no hypercore on this machine"},
    {6, "the host does not answer"},
    {7, "locked by another run"},
};

}  // namespace qvs::cli
