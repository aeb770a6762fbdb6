// The process's one connection to the emulated kernel.
#pragma once

#include <qvs/hyp.h>

#include "wire/message.h"

namespace qvs::mesh {

constexpr HYP_ReturnStatus kTimeout = 0xbad0021u;
constexpr HYP_ReturnStatus kNoConnection = 0xbad0040u;

// Each sends one request and waits for its reply, one thread after the other. The result is the kernel's
// status, or kNoConnection, kTimeout, HYP_NO_MEMORY, and HYP_FAILURE for a reply that makes no sense.
HYP_ReturnStatus request(wire::Writer &message);

// For replies that carry bytes: they are handed over in memory from malloc with a zero byte behind them.
// After a failure the outputs are null and 0.
HYP_ReturnStatus requestBytes(wire::Writer &message, void **bytes, uint32_t *length);

// The same for the whole state.
HYP_ReturnStatus requestState(void **bytes, uint32_t *length);

}  // namespace qvs::mesh
