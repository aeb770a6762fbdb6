// SPDX-License-Identifier: Apache-2.0
// A device of the emulated kernel: a connection to the daemon that looks like a descriptor of a device node.
#pragma once

#include <cstdint>

namespace qvs::preload {

// Which of the host's devices a path names, in a process that has a host, or which one a descriptor is that
// came from openDevice, in this process or in one that it was inherited from: an index of wire::kDevicePaths,
// -1 for anything else.
int deviceOf(const char *path);
int deviceOf(int descriptor);

// A descriptor, or -1 with errno as open leaves it: ENOENT when there is no host, ETIMEDOUT when it does not
// answer, else what keeps this process from it. Of `flags` only O_CLOEXEC means anything here.
int openDevice(int device, int flags);
int controlDevice(int descriptor, unsigned long request, uint64_t argument);

}  // namespace qvs::preload
