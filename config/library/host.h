// SPDX-License-Identifier: Apache-2.0
// Whether there is a host, and whether it answers.
#pragma once

#include "config/library/status.h"

namespace qvs {

// Throws unless the kernel's switch device can be opened and the state of the switches was loaded. Asks once
// in a run.
void requireHost();

// Throws unless the switch state could be loaded.
void requireState(HYP_ReturnStatus status);

// What a library call that failed, or that found nothing, comes from when the host is gone or has stopped
// answering; nothing when it answers.
void blameHost(const std::string &message);

}  // namespace qvs
