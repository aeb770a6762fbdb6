// Making a port with its first properties.
#pragma once

#include <cstdint>

#include "qvs/hyp.h"

namespace qvs {

enum class PortKind : uint8_t { Ordinary, Uplink };

// Adds a port called name, which is also its alias. An uplink port starts as a trunk of all VLANs from 1 on.
HYP_ReturnStatus addPort(const char *switchId, const char *name, uint32_t connectId, PortKind kind);

}  // namespace qvs
