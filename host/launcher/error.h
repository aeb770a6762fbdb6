// The launcher's own failures.
#pragma once

#include <stdexcept>
#include <string>

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

}  // namespace qvs::launcher
