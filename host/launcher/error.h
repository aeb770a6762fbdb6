// The launcher's own failures.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include "wire/escape.h"

namespace qvs::launcher {

constexpr int kExitFailed = 125;
constexpr int kExitUsage = 2;

class Error : public std::runtime_error {
  public:
    explicit Error(const std::string &message, int exitCode = kExitFailed, std::string hint = {})
        : std::runtime_error(message), exitCode_(exitCode), hint_(std::move(hint)) {}
    int exitCode() const { return exitCode_; }
    // A line of its own behind the message; may be empty.
    const std::string &hint() const { return hint_; }

  private:
    int exitCode_;
    std::string hint_;
};

// A line on standard error, or nothing where it cannot be written: that is no reason to stop.
template <typename... Values>
void complain(fmt::format_string<Values...> format, Values &&...values) {
    const std::string message = fmt::format(format, std::forward<Values>(values)...);
    std::fputs(("qvs-host: " + wire::escaped(message) + '\n').c_str(), stderr);
}

}  // namespace qvs::launcher
