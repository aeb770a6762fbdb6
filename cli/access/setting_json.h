// SPDX-License-Identifier: Apache-2.0
// Values of settings, read from the JSON that get and list print.
#pragma once

#include <string>

#include "config/settings/member.h"
#include "config/settings/value.h"

namespace qvs::cli {

// Reads the value of a member from a file, or from standard input for "-". Throws a usage failure about
// `what` in the file when the member cannot have this value.
config::Value valueOfFile(const config::Member &member, const char *what, const std::string &path);

}  // namespace qvs::cli
