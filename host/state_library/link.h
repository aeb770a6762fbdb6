// SPDX-License-Identifier: Apache-2.0
// The connection of the process to the emulated kernel.
#pragma once

#include <qvs/hyp.h>

#include "wire/message.h"

namespace qvs::mesh {

// The statuses for a kernel that could not be reached. Device requests have the same statuses.
constexpr HYP_ReturnStatus kNoDescriptor = 0xbad0018u;
constexpr HYP_ReturnStatus kTimeout = 0xbad0021u;
constexpr HYP_ReturnStatus kNoConnection = 0xbad0040u;  // there is no kernel, or it ended during the request
constexpr HYP_ReturnStatus kNoAccess = 0xbad005au;
constexpr HYP_ReturnStatus kNotPermitted = 0xbad005bu;

// Returns an empty message with the memory of the last one. A change that consists of several requests thus
// does not run out of memory between them.
[[nodiscard]] wire::Writer messageOf(wire::Kind kind);

// Sends a request and waits for its reply, at most for wire::hostTimeout. Only one thread at a time sends a
// request. After kTimeout, all requests fail with it at once until the kernel answers again. Returns the
// status of the kernel, one of the statuses above, HYP_NO_MEMORY, or HYP_FAILURE for an invalid reply.
[[nodiscard]] HYP_ReturnStatus request(wire::Writer &message);

// Does the same for a reply that contains bytes. The result is allocated with malloc and followed by a zero
// byte. After a failure, the outputs are null and 0.
[[nodiscard]] HYP_ReturnStatus requestBytes(wire::Writer &message, void **bytes, uint32_t *length);

// Requests the whole state in the same way.
[[nodiscard]] HYP_ReturnStatus requestState(void **bytes, uint32_t *length);

}  // namespace qvs::mesh
