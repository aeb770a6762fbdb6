// SPDX-License-Identifier: Apache-2.0
// One hash for the slots of locks and the sums of journals. Both are on disk, so that it cannot change.
#pragma once

#include <cstdint>
#include <string_view>

namespace qvs {

// FNV-1a in 64 bits.
inline uint64_t hashOf(std::string_view text) {
    uint64_t hash = 0xcbf29ce484222325u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return hash;
}

}  // namespace qvs
