// Requests of the families that answer ioctl's own result in place of a status.
#pragma once

namespace qvs {

// Opens a device, issues one ioctl and closes it: the result of ioctl, or -1 when it cannot be opened.
int rawRequest(const char *devicePath, unsigned int command, void *frame);

}  // namespace qvs
