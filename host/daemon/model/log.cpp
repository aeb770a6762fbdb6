// SPDX-License-Identifier: Apache-2.0
// Writes the log. Control characters are escaped, so that each message is one line.
#include "daemon/model/log.h"

#include <unistd.h>

#include <string>

#include "wire/escape.h"

namespace qvs::kernel {
namespace {

int target = -1;

}  // namespace

void logTo(int file) {
    target = file;
}

void logArguments(Level level, fmt::string_view format, fmt::format_args values) {
    if (target < 0) return;
    static constexpr const char *kNames[] = {"info ", "warning ", "error "};
    const std::string line =
        kNames[static_cast<int>(level)] + wire::escaped(fmt::vformat(format, values)) + '\n';
    [[maybe_unused]] const ssize_t written = write(target, line.data(), line.size());
}

}  // namespace qvs::kernel
