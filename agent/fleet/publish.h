// SPDX-License-Identifier: Apache-2.0
// Publishes revisions and follows their rollouts.
#pragma once

#include "agent/fleet/fleet.h"

namespace qvs::fleet {

// How a revision is rolled out.
extern const std::span<const cli::Option> kRolloutOptions;

// Publishes these documents as the next revision, with the options of the command, and follows its rollout to
// the end. `texts` are the documents that the store may lack, by digest.
void publish(Fleet &fleet, Manifest manifest, const std::map<std::string, std::string> &texts,
             const cli::Arguments &arguments, cli::Output &out);

// Removes old revisions from the store during a rollout. Keeps the newest, those that hosts have, and all
// while a host is away. What is kept now can be removed with the next revision.
void removeOld(Fleet &fleet, uint32_t keep);

// "revision 3: running, wave 2 of 4: 5 of 8 hosts, waits for h3"
std::string progressLine(const View &view);

}  // namespace qvs::fleet
