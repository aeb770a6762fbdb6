// SPDX-License-Identifier: Apache-2.0
// The launcher's own failures.
#pragma once

#include <string_view>

#include "tool/failure.h"
#include "tool/text.h"

namespace qvs::launcher {

using cli::complain;

// Paths, and what the host and the system say, stand in the message: they are shown as a terminal may see
// them.
struct Error : cli::Failure {
    explicit Error(std::string_view what, cli::Exit code = cli::Exit::Failed)
        : Failure{code, cli::shown(what)} {}
};

}  // namespace qvs::launcher
