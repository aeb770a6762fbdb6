// SPDX-License-Identifier: Apache-2.0
// Whether a program can be given a host.
#pragma once

#include <string>

#include "launcher/layout.h"

namespace qvs::launcher {

// Why the program that `command` names, or the interpreter of that script, will not see the host, and what
// helps; empty for every other program and for what cannot be read.
std::string whyNotOnHost(const std::string &command, const Layout &layout);

}  // namespace qvs::launcher
