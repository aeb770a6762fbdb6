// SPDX-License-Identifier: Apache-2.0
// Values of settings, read from the JSON that get and list print.
#pragma once

#include <string>
#include <string_view>

#include "config/settings/member.h"
#include "config/settings/value.h"

namespace qvs::cli {

// The value of a member. Anything else than the member takes is a usage failure about `what`.
config::Value parseJson(const config::Member &member, const std::string &what, std::string_view text);

}  // namespace qvs::cli
