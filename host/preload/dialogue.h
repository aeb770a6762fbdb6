// SPDX-License-Identifier: Apache-2.0
// What the emulated kernel says on a connection before it answers a request. Nothing here allocates.
#pragma once

#include <cstdint>

#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::preload {

// Receives the head of the next message, but for those that say that it will come late.
bool receiveHead(int descriptor, wire::Head *head, wire::LongerWait *wait);

// Serves the kernel's copies until it answers. False when it is gone or talks nonsense.
bool converse(int descriptor, int *result, int *error);

}  // namespace qvs::preload
