// SPDX-License-Identifier: Apache-2.0
// The request to a character device of the kernel, which returns a status or the result of ioctl.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "core/raw_request.h"
#include "core/status.h"

namespace qvs {

// A null path is passed to the kernel (EFAULT), although open is declared not to accept one.
__attribute__((no_sanitize("nonnull-attribute"))) int rawRequest(const char *devicePath, unsigned int command,
                                                                 void *frame) {
    // O_CLOEXEC: a shell command started by another thread must not inherit the device.
    const int fd = open(devicePath, O_RDWR | O_CLOEXEC, 0);
    if (fd < 0) return -1;
    const int result = ioctl(fd, command, frame);
    const int requestErrno = errno;
    close(fd);
    errno = requestErrno;
    return result;
}

}  // namespace qvs

extern "C" HYP_ReturnStatus HYPIoctl(const char *devicePath, int request, void *argument) {
    // Request numbers are 32 bits wide; bit 31 must not be extended.
    const int result = qvs::rawRequest(devicePath, static_cast<unsigned int>(request), argument);
    return result >= 0 ? HYP_OK : qvs::ErrnoToReturnStatus(errno);
}
