// SPDX-License-Identifier: Apache-2.0
// Command lines of the kernel information shell.
#pragma once

#include <cstddef>
#include <string_view>

namespace qvs {

// Returns whether a portset name is safe in a command line and in a node path: it contains no character that
// the shell or the path would interpret, and it is not empty, "." or "..". Bytes above 0x7f are allowed.
bool isPlainNodeName(std::string_view name);

// One command line of at most 255 characters.
class ShellCommand {
  public:
    // Formats the line. Returns false if it does not fit; the command must then not be run.
    __attribute__((format(printf, 2, 3))) bool format(const char *format, ...);

    // Runs the line with the shell and waits for it. Returns whether the result is 0.
    bool run() const;

    const char *line() const { return line_; }

  private:
    char line_[256] = {};
};

}  // namespace qvs
