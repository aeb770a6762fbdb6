// SPDX-License-Identifier: Apache-2.0
// The launcher's own failures.
#pragma once

#include <string_view>

#include "base/text.h"
#include "tool/failure.h"

namespace qvs::launcher {

using cli::complain;

// Paths, and what the host and the system say, stand in the message: they are shown as a terminal may see
// them.
struct Error : qvs::Failure {
    explicit Error(std::string_view what, qvs::Exit code = qvs::Exit::Failed)
        : Failure{code, qvs::shown(what)} {}
};

}  // namespace qvs::launcher
