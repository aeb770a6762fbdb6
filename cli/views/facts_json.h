// SPDX-License-Identifier: Apache-2.0
// What was gathered about a switch, as JSON.
#pragma once

#include <fmt/format.h>

#include <vector>

#include "access/overview.h"
#include "access/policy.h"
#include "tool/output.h"

namespace qvs::cli {

// The names of policies with their values, as commands print them: {"security":{"promiscuous":"allow",...}}.
// A value that cannot be read is null.
void appendJson(fmt::memory_buffer &out, const std::vector<Policy> &policies);

void appendJson(fmt::memory_buffer &out, const SwitchFacts &facts);

}  // namespace qvs::cli
