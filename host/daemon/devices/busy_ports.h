// SPDX-License-Identifier: Apache-2.0
// The statistics of busy ports grow whenever someone looks at them.
#pragma once

#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

// To be called before the statistics of a port, a property, or everything is read.
void lookAt(Model &model, Port &port);
void lookAt(Model &model, const Place &place, std::string_view key);
void lookAtAll(Model &model);

}  // namespace qvs::kernel
