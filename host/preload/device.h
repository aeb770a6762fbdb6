// A device of the emulated kernel: a connection to the daemon that looks like a descriptor of a device node.
#pragma once

#include <cstdint>

namespace qvs::preload {

// True when this process has a host and `path` is one of its devices.
bool isDevicePath(const char *path);
// A descriptor, or -1 with errno as open leaves it. Of `flags` only O_CLOEXEC means anything here.
int openDevice(const char *path, int flags);

// True when the descriptor came from openDevice, in this process or in one that it was inherited from.
bool isDevice(int descriptor);
int controlDevice(int descriptor, unsigned long request, uint64_t argument);

}  // namespace qvs::preload
