// SPDX-License-Identifier: Apache-2.0
// Checks whether a program can use a host.
#pragma once

#include <string>

#include "launcher/layout.h"

namespace qvs::launcher {

// Returns why the program that `command` names, or the interpreter of a script, cannot use the host, and the
// remedy. Returns an empty text for other programs and for files that cannot be read.
std::string whyNotOnHost(const std::string &command, const Layout &layout);

}  // namespace qvs::launcher
