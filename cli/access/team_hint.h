// SPDX-License-Identifier: Apache-2.0
// The uplink that teaming would choose for a port, as the kernel says.
#pragma once

#include <qvs/qvs.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "access/opaque.h"
#include "access/overview.h"

namespace qvs::cli {

using TeamHint = std::array<uint8_t, VSHYP_TEAM_UPLINK_HINT_SIZE>;
inline constexpr RecordKind kTeamHint{"team-uplink-hint", "teamHint", "team uplink hint"};

// Nothing when the kernel does not know the port with this number. Throws Failure.
std::optional<TeamHint> teamHint(uint32_t number, const std::string &subject);

// The uplink that is bound to the NIC of the hint: its place in SwitchFacts::uplinks. Nothing without a
// layout of the hint, and for a port that carries an uplink or that nobody uses.
std::optional<size_t> carrierOf(const Arguments &arguments, const SwitchFacts &facts, const PortFacts &port,
                                const TeamHint &hint);

// Asks the kernel for each port, and sets PortFacts::carrier.
void askCarriers(const Arguments &arguments, SwitchFacts &facts);

}  // namespace qvs::cli
