// SPDX-License-Identifier: Apache-2.0
// The name of a connection that stands for a device.
#pragma once

#include <sys/socket.h>

namespace qvs::preload {

// The connection gets a name of its own in the abstract namespace. By its beginning it is known for a device
// wherever it is inherited or passed to, whatever the environment there and however the daemon's path is
// spelled; by the rest, which device it is and whose.
constexpr char kDeviceMark[11] = {'\0', 'q', 'v', 's', '-', 'd', 'e', 'v', 'i', 'c', 'e'};

struct DeviceName {
    sa_family_t family = AF_UNIX;
    char mark[sizeof kDeviceMark];
    char device;
    char program[16];  // that speaks on this connection, and nobody else does
    char number[16];   // so that every name is another one
};

// Gives a connection its name: that of this device and this program.
bool nameDevice(int connection, int device);
// False for what is no device of ours. Leaves errno alone.
bool readName(int descriptor, DeviceName *name);
// True when this program opened the device itself.
bool belongsHere(const DeviceName &name);

}  // namespace qvs::preload
