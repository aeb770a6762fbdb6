// SPDX-License-Identifier: Apache-2.0
// The process's one connection to the emulated kernel.
#pragma once

#include <qvs/hyp.h>

#include "wire/message.h"

namespace qvs::mesh {

// Why the kernel could not be asked, as a device request says it.
constexpr HYP_ReturnStatus kNoDescriptor = 0xbad0018u;
constexpr HYP_ReturnStatus kTimeout = 0xbad0021u;
constexpr HYP_ReturnStatus kNoConnection = 0xbad0040u;  // there is none, or it went in the middle
constexpr HYP_ReturnStatus kNoAccess = 0xbad005au;
constexpr HYP_ReturnStatus kNotPermitted = 0xbad005bu;

// Each sends one request and waits for its reply, one thread after the other, no longer than
// wire::hostTimeout; after a kTimeout each fails with it at once until the kernel answers again. The result
// is the kernel's status, or one of those above, HYP_NO_MEMORY, and HYP_FAILURE for a reply that makes no
// sense.
[[nodiscard]] HYP_ReturnStatus request(wire::Writer &message);

// For replies that carry bytes: they are handed over in memory from malloc with a zero byte behind them.
// After a failure the outputs are null and 0.
[[nodiscard]] HYP_ReturnStatus requestBytes(wire::Writer &message, void **bytes, uint32_t *length);

// The same for the whole state.
[[nodiscard]] HYP_ReturnStatus requestState(void **bytes, uint32_t *length);

}  // namespace qvs::mesh
