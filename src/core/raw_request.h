// SPDX-License-Identifier: Apache-2.0
// Requests of the families that return the result of ioctl instead of a status.
#pragma once

namespace qvs {

// Opens a device, issues one ioctl and closes the device. Returns the result of ioctl, or -1 if the device
// cannot be opened.
int rawRequest(const char *devicePath, unsigned int command, void *frame);

}  // namespace qvs
