// SPDX-License-Identifier: Apache-2.0
// The names of connections that stand for devices.
#pragma once

#include <sys/socket.h>

namespace qvs::preload {

// Each connection has a name in the abstract namespace. The start of the name identifies a device in every
// process that inherits or receives the descriptor, even if its environment differs. The rest contains the
// device and the program that opened it.
constexpr char kDeviceMark[11] = {'\0', 'q', 'v', 's', '-', 'd', 'e', 'v', 'i', 'c', 'e'};

struct DeviceName {
    sa_family_t family = AF_UNIX;
    char mark[sizeof kDeviceMark];
    char device;
    char program[16];  // the only program that uses this connection
    char number[16];   // makes the name unique
};

// Names a connection after this device and this program.
bool nameDevice(int connection, int device);
// Reads the name of a descriptor. Returns false if it is not a device of the host. Does not change errno.
bool readName(int descriptor, DeviceName *name);
// Returns true if this program opened the device itself.
bool belongsHere(const DeviceName &name);

}  // namespace qvs::preload
