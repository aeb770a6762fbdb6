// The one-shot request to a character device of the kernel.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "core/status.h"

// A null path is the kernel's to judge (EFAULT), although open is declared not to take one.
extern "C" __attribute__((no_sanitize("nonnull-attribute"))) HYP_ReturnStatus HYPIoctl(const char *devicePath,
                                                                                       int request,
                                                                                       void *argument) {
    // O_CLOEXEC: a shell command started by another thread must not inherit the device.
    const int fd = open(devicePath, O_RDWR | O_CLOEXEC);
    if (fd < 0) return qvs::ErrnoToReturnStatus(errno);

    // Request numbers are 32 bits wide; bit 31 must not be extended.
    const int result = ioctl(fd, static_cast<unsigned int>(request), argument);
    const int requestErrno = errno;
    close(fd);
    errno = requestErrno;
    return result >= 0 ? HYP_OK : qvs::ErrnoToReturnStatus(requestErrno);
}
