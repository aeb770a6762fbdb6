// SPDX-License-Identifier: Apache-2.0
// How an operation of a program fails: an exit status and a message, thrown from where it becomes certain.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <utility>

namespace qvs {

// Exit statuses. Failed is what each program documents for a failure that has no status of its own.
enum class Exit {
    Success = 0,
    Failed = 1,
    Usage = 2,
    NotFound = 3,
    Differs = 4,
    NoHost = 5,
    NoAnswer = 6,
    Locked = 7,
    NotConfirmed = 8
};

struct Failure {
    Exit exit = Exit::Failed;
    std::string message;
    bool ofCall = false;  // a call of the library failed, so that the host may be gone
};

// Throws a Failure.
template <typename... Values>
[[noreturn]] void fail(Exit exit, fmt::format_string<Values...> format, Values &&...values) {
    throw Failure{exit, fmt::format(format, std::forward<Values>(values)...)};
}

// Receives warnings of the libraries below the program. Null discards them.
inline void (*onWarning)(std::string_view text) = nullptr;

template <typename... Values>
void warn(fmt::format_string<Values...> format, Values &&...values) {
    if (onWarning != nullptr) onWarning("warning: " + fmt::format(format, std::forward<Values>(values)...));
}

}  // namespace qvs
