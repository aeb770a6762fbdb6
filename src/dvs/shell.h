// Command lines of the kernel information shell.
#pragma once

#include <cstddef>
#include <string_view>

namespace qvs {

// True when a portset name can stand in a command line and in a node path and mean itself: no character that
// the shell or the path would interpret, not empty, not "." or "..". Bytes above 0x7f are fine.
bool isPlainNodeName(std::string_view name);

// One command line, in the 256 bytes it is given.
class ShellCommand {
  public:
    // Formats the line; false when it does not fit, and the command must not be run then.
    __attribute__((format(printf, 2, 3))) bool format(const char *format, ...);

    // Runs the line through the shell and waits: true when the result is 0.
    bool run() const;

    const char *line() const { return line_; }

  private:
    char line_[256] = {};
};

}  // namespace qvs
