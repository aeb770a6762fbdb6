// SPDX-License-Identifier: Apache-2.0
// The information shell's node tree, as treesh shows it.
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

// `words` is the command line without the program's name.
ShellResult runShell(Model &model, const std::vector<std::string_view> &words);

}  // namespace qvs::kernel
