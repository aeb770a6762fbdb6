// SPDX-License-Identifier: Apache-2.0
// The node tree of the information shell, which treesh shows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "daemon/model/model.h"

namespace qvs::kernel {

struct [[nodiscard]] ShellResult {
    int exitCode = 0;
    std::string out;
    std::string err;
};

// Executes a command line of treesh. `words` does not contain the name of the program.
ShellResult runShell(Model &model, const std::vector<std::string_view> &words);

}  // namespace qvs::kernel
