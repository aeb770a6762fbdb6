// SPDX-License-Identifier: Apache-2.0
// The multicast groups of ports, and how a switch filters them.
#pragma once

#include <functional>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

enum class FilterMode : uint32_t { Legacy = 0, Snooping = 1 };
FilterMode filterModeOf(const Switch &sw);

// Visits the groups that a lab lets a port join. A group and the addresses of its sources have 6 bytes (MAC),
// 4 (IPv4) or 16 (IPv6). No sources stand for every sender.
using VisitGroup = std::function<void(std::string_view group, std::string_view sources)>;
void forEachGroup(const Model &model, const Port &port, const VisitGroup &visit);

}  // namespace qvs::kernel
