// SPDX-License-Identifier: Apache-2.0
// Devices of the emulated kernel. An open device is a connection to the daemon that looks like the descriptor
// of a device node.
#pragma once

#include <cstdint>

namespace qvs::preload {

// Return the device that a path names, or the device that a descriptor from openDevice stands for, as an
// index of wire::kDevices. Return -1 for anything else. A path names a device only in a process that has
// a host. Another process can have opened the descriptor.
int deviceOf(const char *path);
int deviceOf(int descriptor);

// Opens a device. Returns a descriptor, or -1 with errno: ENOENT if there is no host, ETIMEDOUT if it does
// not answer, or the error of the connection. O_CLOEXEC is the only flag that is used.
int openDevice(int device, int flags);
// Performs an ioctl on a descriptor of a device.
int controlDevice(int descriptor, unsigned long request, uint64_t argument);

}  // namespace qvs::preload
