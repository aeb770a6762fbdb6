// SPDX-License-Identifier: Apache-2.0
// Finds the parts of the emulated host, in the build tree or in an installation.
#pragma once

#include <string>

namespace qvs::launcher {

struct Layout {
    std::string bin;
    std::string lib;       // search path for the dynamic linker
    std::string toolPath;  // directory of the emulated shell
    std::string daemon;
    std::string treesh;
    std::string preload;  // value for LD_PRELOAD
    std::string records;  // the layout file of the records of the emulated kernel
};

// Finds the parts relative to the launcher. Throws if one is missing.
Layout findLayout();

}  // namespace qvs::launcher
