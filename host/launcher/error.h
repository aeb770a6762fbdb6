// SPDX-License-Identifier: Apache-2.0
// The errors of the launcher.
#pragma once

#include <string_view>

#include "base/text.h"
#include "tool/failure.h"

namespace qvs::launcher {

using cli::complain;

// An error of the launcher. Control characters are escaped, because messages contain paths and texts of the
// host.
struct Error : qvs::Failure {
    explicit Error(std::string_view what, qvs::Exit code = qvs::Exit::Failed)
        : Failure{code, qvs::shown(what)} {}
};

}  // namespace qvs::launcher
