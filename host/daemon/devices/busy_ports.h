// SPDX-License-Identifier: Apache-2.0
// Busy ports, whose statistics grow with every read, and ports whose frames the data path counts.
#pragma once

#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

// Update the statistics of a port, of the port at a place, and of all ports or those of a switch. Call them
// before reading.
void lookAt(Model &model, Port &port);
void lookAt(Model &model, const Place &place, std::string_view key);
void lookAtAll(Model &model, const Switch *of = nullptr);

}  // namespace qvs::kernel
