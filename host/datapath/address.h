// SPDX-License-Identifier: Apache-2.0
// The bytes of MAC addresses.
#pragma once

#include <array>
#include <cstdint>

#include "datapath/frame.h"

namespace qvs::datapath {

// Returns the address in six bytes.
inline MacAddress addressAt(const uint8_t *bytes) {
    MacAddress address = 0;
    for (int i = 0; i < 6; ++i)
        address = address << 8 | bytes[i];
    return address;
}

inline std::array<uint8_t, 6> bytesOf(MacAddress address) {
    std::array<uint8_t, 6> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(address >> (40 - 8 * i));
    return bytes;
}

}  // namespace qvs::datapath
