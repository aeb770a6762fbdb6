// SPDX-License-Identifier: Apache-2.0
// Values of settings, read from the JSON that get and list print.
#pragma once

#include <string>
#include <string_view>

#include "config/settings/member.h"
#include "config/settings/value.h"

namespace qvs::cli {

// Reads the value of a member. Throws a usage failure about `what` when the member cannot have this value.
config::Value parseJson(const config::Member &member, const std::string &what, std::string_view text);

}  // namespace qvs::cli
