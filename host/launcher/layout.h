// SPDX-License-Identifier: Apache-2.0
// Where the parts of the emulated host lie: beside the launcher, in the build tree as in an installed one.
#pragma once

#include <string>

namespace qvs::launcher {

struct Layout {
    std::string bin;
    std::string lib;       // what the dynamic linker is to search
    std::string toolPath;  // of the emulated shell
    std::string daemon;
    std::string treesh;
    std::string preload;  // as the dynamic linker is to be given it
};

// Throws when a part is missing.
Layout findLayout();

}  // namespace qvs::launcher
