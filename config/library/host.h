// SPDX-License-Identifier: Apache-2.0
// Checks that there is a host and that it answers.
#pragma once

#include "config/library/status.h"

namespace qvs {

inline constexpr const char kSwitchDevice[] = "/dev/vswitch";

// The errno with which a device cannot be opened; 0 when it can.
int openError(const char *path);
// Whether such an errno says that there is no such device.
bool isAbsence(int error);

// Throws unless the kernel's switch device can be opened and the state of the switches was loaded. Asks once
// in a run.
void requireHost();

// Throws unless the state was loaded.
void requireState(HYP_ReturnStatus status);

// Called after a call of the library has failed or found nothing. If that is because the host is gone or does
// not answer, throws a failure that says so. Returns otherwise.
void blameHost(const std::string &message);

}  // namespace qvs
