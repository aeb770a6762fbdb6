// SPDX-License-Identifier: Apache-2.0
#include "config/library/status.h"

namespace qvs {
namespace {

Exit exitFor(HYP_ReturnStatus status) {
    switch (status) {
        case HYP_NOT_FOUND:
            return Exit::NotFound;
        case HYP_EXISTS:
            return Exit::Differs;
        case HYP_BAD_PARAM:
            return Exit::Usage;
        case kTimedOut:
            return Exit::NoAnswer;
        default:
            return Exit::Failed;
    }
}

}  // namespace

Failure libraryFailure(std::string_view subject, HYP_ReturnStatus status, std::string_view hint) {
    return {exitFor(status),
            fmt::format("{}: {} (0x{:x}){}{}", subject, ReturnStatusToString(status), status,
                        hint.empty() ? "" : "; ", hint),
            true};
}

void require(HYP_ReturnStatus status, std::string_view subject) {
    if (status != HYP_OK) throw libraryFailure(subject, status);
}

}  // namespace qvs
