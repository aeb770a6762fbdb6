// SPDX-License-Identifier: Apache-2.0
// The neighbours of uplinks that LLDP has found.
#pragma once

#include <map>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "daemon/model/model.h"

namespace qvs::kernel {

// Describes neighbours by the parts of their messages.
nlohmann::json describeNeighbours(const Model &model, const std::map<uint32_t, std::string> &neighbours);

}  // namespace qvs::kernel
