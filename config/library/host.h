// SPDX-License-Identifier: Apache-2.0
// Checks that there is a host and that it answers.
#pragma once

#include "config/library/status.h"

namespace qvs {

// Throws unless the switch device can be opened and the state was loaded. Checks only once in a run.
void requireHost();

// Throws unless the state was loaded.
void requireState(HYP_ReturnStatus status);

// Called after a call of the library has failed or found nothing. If that is because the host is gone or does
// not answer, throws a failure that says so. Returns otherwise.
void blameHost(const std::string &message);

}  // namespace qvs
