// SPDX-License-Identifier: Apache-2.0
// How a command fails: an exit code and a message, thrown from wherever it becomes certain.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <utility>

namespace qvs::cli {

// Exit codes. Failed is what each program documents for a failure that has none of its own.
enum class Exit {
    Success = 0,
    Failed = 1,
    Usage = 2,
    NotFound = 3,
    Differs = 4,
    NoHost = 5,
    NoAnswer = 6,
    Locked = 7
};

struct Failure {
    Exit exit = Exit::Failed;
    std::string message;
    bool ofCall = false;  // a call of what the commands are about failed: is it there at all?
};

template <typename... Values>
[[noreturn]] void fail(Exit exit, fmt::format_string<Values...> format, Values &&...values) {
    throw Failure{exit, fmt::format(format, std::forward<Values>(values)...)};
}

// Lines on standard error behind the name of the program, or nothing where they cannot be written: that is no
// reason to stop.
void complainLines(std::string_view lines);
template <typename... Values>
void complain(fmt::format_string<Values...> format, Values &&...values) {
    complainLines(fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace qvs::cli
