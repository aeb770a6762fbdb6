// How a command fails: an exit code and a message, thrown from wherever it becomes certain.
#pragma once

#include <fmt/format.h>
#include <qvs/hyp.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

namespace qvs::cli {

// The documented exit codes of qvs.
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
    bool fromLibrary = false;  // a call failed, so it is worth asking whether there is a kernel at all
};

template <typename... Values>
[[noreturn]] void fail(Exit exit, fmt::format_string<Values...> format, Values &&...values) {
    throw Failure{exit, fmt::format(format, std::forward<Values>(values)...)};
}

// A line on standard error, or nothing where it cannot be written: that is no reason to stop.
template <typename... Values>
void complain(fmt::format_string<Values...> format, Values &&...values) {
    const std::string line = "qvs: " + fmt::format(format, std::forward<Values>(values)...) + '\n';
    std::fputs(line.c_str(), stderr);
}

// No answer in time, from the device or from the state library.
inline constexpr HYP_ReturnStatus kTimedOut = 0xbad0021u;

// The failure of a library call: "switch 'sw9': Not found (0xbad0003)", with a hint behind it when there is
// one.
Failure libraryFailure(std::string_view subject, HYP_ReturnStatus status, std::string_view hint = {});

// Throws libraryFailure unless the call succeeded.
void require(HYP_ReturnStatus status, std::string_view subject);

}  // namespace qvs::cli
