// SPDX-License-Identifier: Apache-2.0
// Running the kernel information shell as a child process.
#include "dvs/shell.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace qvs {

bool isPlainNodeName(std::string_view name) {
    constexpr std::string_view kInterpreted = " '\"`;&|<>()$\\*?[/";
    constexpr std::string_view kInterpretedInFront = "-~#";
    if (name.empty() || name == "." || name == "..") return false;
    if (kInterpretedInFront.find(name.front()) != std::string_view::npos) return false;
    return std::ranges::none_of(name, [=](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f || kInterpreted.find(c) != std::string_view::npos;
    });
}

bool ShellCommand::format(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(line_, sizeof line_, format, arguments);
    va_end(arguments);
    return length >= 0 && static_cast<size_t>(length) < sizeof line_;
}

// -1 (no child process) is a failure, too.
bool ShellCommand::run() const {
    return std::system(line_) == 0;
}

}  // namespace qvs
