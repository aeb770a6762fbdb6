// SPDX-License-Identifier: Apache-2.0
#include "tool/failure.h"

#include <cstdio>

#include "tool/program.h"

namespace qvs::cli {

void complainLines(std::string_view lines) {
    std::string text;
    for (;;) {
        const size_t end = lines.find('\n');
        text += fmt::format("{}: {}\n", program().name, lines.substr(0, end));
        if (end == std::string_view::npos) break;
        lines.remove_prefix(end + 1);
    }
    std::fputs(text.c_str(), stderr);
}

}  // namespace qvs::cli
