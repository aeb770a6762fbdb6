// SPDX-License-Identifier: Apache-2.0
// Adds a port with its initial properties, and removes a port.
#pragma once

#include "dvs/property.h"

namespace qvs {

enum class PortKind : uint8_t { Ordinary, Uplink };

// Adds the port of a place; its identifier is also its alias. An uplink port starts as a trunk of all VLANs
// from 1 on. Both answer the place's status first, and HYP_BAD_PARAM for a place without a port.
[[nodiscard]] HYP_ReturnStatus addPort(const Place &port, uint32_t connectId, PortKind kind);
[[nodiscard]] HYP_ReturnStatus removePort(const Place &port);

}  // namespace qvs
