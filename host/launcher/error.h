// The launcher's own failures.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace qvs::launcher {

constexpr int kExitFailed = 125;
constexpr int kExitUsage = 2;

class Error : public std::runtime_error {
  public:
    explicit Error(const std::string &message, int exitCode = kExitFailed)
        : std::runtime_error(message), exitCode_(exitCode) {}
    int exitCode() const { return exitCode_; }

  private:
    int exitCode_;
};

// A line on standard error, or nothing where it cannot be written: that is no reason to stop.
template <typename... Values>
void complain(fmt::format_string<Values...> format, Values &&...values) {
    const std::string line = "qvs-host: " + fmt::format(format, std::forward<Values>(values)...) + '\n';
    std::fputs(line.c_str(), stderr);
}

}  // namespace qvs::launcher
