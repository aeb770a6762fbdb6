// SPDX-License-Identifier: Apache-2.0
// Records what a command may change, so that the change can be undone.
#pragma once

#include "config/apply/before.h"

namespace qvs::cli {

struct Call;

// Records everything that is stored for the switch that a call names. Throws a usage failure when the call
// makes a change that cannot be undone.
void recordSwitches(config::Recorder &recorder, const Call &call);

}  // namespace qvs::cli
