// SPDX-License-Identifier: Apache-2.0
// Writes the log. Control characters are escaped, so that each message is one line.
#include "daemon/model/log.h"

#include <unistd.h>

#include <exception>
#include <string>

#include "wire/escape.h"

namespace qvs::kernel {
namespace {

int target = -1;

}  // namespace

void logTo(int file) {
    target = file;
}

// A failure to log is no failure of its caller, which may be about to report that memory is exhausted.
void logArguments(Level level, fmt::string_view format, fmt::format_args values) try {
    if (target < 0) return;
    static constexpr const char *kNames[] = {"info ", "warning ", "error "};
    const std::string line =
        kNames[static_cast<int>(level)] + wire::escaped(fmt::vformat(format, values)) + '\n';
    [[maybe_unused]] const ssize_t written = write(target, line.data(), line.size());
} catch (const std::exception &) {
}

}  // namespace qvs::kernel
