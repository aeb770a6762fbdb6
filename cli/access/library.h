// SPDX-License-Identifier: Apache-2.0
// How commands reach the library: its calls, the lists of the kernel, and the names of places in messages.
#pragma once

#include <string>

#include "config/library/call.h"
#include "config/library/kernel_list.h"
#include "config/library/snapshot.h"
#include "tool/command.h"
#include "tool/failure.h"

namespace qvs::cli {

using qvs::named;
// "switch 'sw1'", or "switch 'sw1': port 'p'" for a port that is given as PORT or --port.
std::string named(const Arguments &arguments);

}  // namespace qvs::cli
