// SPDX-License-Identifier: Apache-2.0
// What a command may change, recorded so that it can be undone.
#pragma once

#include "config/apply/before.h"

namespace qvs::cli {

struct Call;

// Records all that is stored of the switches that a call names. Throws a usage failure when it changes what
// cannot be undone.
void recordSwitches(config::Recorder &recorder, const Call &call);

}  // namespace qvs::cli
