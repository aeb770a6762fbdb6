// SPDX-License-Identifier: Apache-2.0
#include "config/library/call.h"

namespace qvs {
namespace trace {

void line(std::string_view name, const std::string &arguments, const std::string &outcome,
          std::chrono::steady_clock::duration elapsed) {
    auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
    onCall(fmt::format("{}({}) -> {}, {} us", name, arguments, outcome, microseconds));
}

std::string statusText(HYP_ReturnStatus status) {
    return fmt::format("0x{:x} ({})", status, ReturnStatusToString(status));
}

}  // namespace trace

}  // namespace qvs
