// SPDX-License-Identifier: Apache-2.0
// What requests choose from: kinds of multicast groups, sessions of forwarding detection.
#pragma once

#include <qvs/vshyp.h>

#include <cstddef>
#include <cstdint>

namespace qvs::cli {

struct MulticastFamily {
    const char *name;
    int32_t type;
    size_t size;
};
inline constexpr MulticastFamily kMulticastFamilies[] = {
    {"mac", VSHYP_MCAST_MAC, 6}, {"ipv4", VSHYP_MCAST_IPV4, 4}, {"ipv6", VSHYP_MCAST_IPV6, 16}};

inline constexpr uint8_t kAllBfdSessions = 3;

}  // namespace qvs::cli
