// SPDX-License-Identifier: Apache-2.0
// Executes the control requests of the launcher and of tests, which are JSON.
#pragma once

#include <string>
#include <string_view>

#include "daemon/front/server.h"

namespace qvs::kernel {

struct ControlAnswer {
    std::string json;
    bool stops = false;  // whether the daemon ends after the answer is sent
};

ControlAnswer runControl(std::string_view request, Server &server);

}  // namespace qvs::kernel
