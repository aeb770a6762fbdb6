// SPDX-License-Identifier: Apache-2.0
// What the commands about mirror sessions share.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/library.h"
#include "access/mirror_session.h"
#include "access/policy.h"
#include "tool/command.h"

namespace qvs::cli {

// Those of --port, or else of the uplinks of this host.
const Policy &mirrorPolicy(const Arguments &arguments);

std::string sessionNamed(const PolicyPlace &place, std::string_view id);
std::optional<std::string_view> portGiven(const PolicyPlace &place);

// The stored list; null without one.
VsdvsBuffer readMirrorList(const PolicyPlace &place);
std::vector<MirrorSession> readSessions(const PolicyPlace &place);
const MirrorSession *findSession(const std::vector<MirrorSession> &sessions, const std::string &id);

void listSessions(const Arguments &arguments, Output &out);
void showSession(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
