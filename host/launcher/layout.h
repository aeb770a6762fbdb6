// SPDX-License-Identifier: Apache-2.0
// Finds the parts of the emulated host, in the build tree or in an installation.
#pragma once

#include <string>
#include <vector>

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

// An installed lab.
struct Lab {
    std::string name;
    std::string file;
};
// Returns the installed labs, sorted by name.
std::vector<Lab> findLabs();

// Returns the file of a lab: the named file, or the installed lab of that name if there is no such file.
std::string findLab(const std::string &name);

}  // namespace qvs::launcher
