// SPDX-License-Identifier: Apache-2.0
// The control requests of the launcher and of tests, in JSON.
#pragma once

#include <string>
#include <string_view>

#include "daemon/front/server.h"

namespace qvs::kernel {

struct ControlAnswer {
    std::string json;
    bool stops = false;  // the daemon ends once the answer is sent
};

ControlAnswer runControl(std::string_view request, Server &server);

}  // namespace qvs::kernel
