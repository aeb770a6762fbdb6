// SPDX-License-Identifier: Apache-2.0
// The messages of the emulated kernel before it answers a request. These functions do not allocate memory.
#pragma once

#include "wire/protocol.h"
#include "wire/stream.h"

namespace qvs::preload {

using wire::Head;
using wire::Kind;
using wire::receiveAll;
using wire::sendAll;

// Receives the head of the next message. Delay messages before it extend the wait.
bool receiveHead(int descriptor, wire::Head *head, wire::LongerWait *wait);

// Sends a device request, with its frame and its input if the program's memory can be read.
bool sendRequest(int descriptor, const wire::FrameLayout &layout, uint32_t request, uint64_t argument);
// Serves CopyIn and CopyOut until the kernel answers. Returns false if the connection is closed or a message
// is invalid.
bool converse(int descriptor, int *result, int *error);

}  // namespace qvs::preload
