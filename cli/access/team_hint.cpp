// SPDX-License-Identifier: Apache-2.0
#include "access/team_hint.h"

#include <algorithm>
#include <variant>

#include "access/library.h"

namespace qvs::cli {
namespace {

// The field of the layout that names the NIC.
constexpr std::string_view kNicField = "nic";

bool isCarried(const PortFacts &port) {
    return port.inUse && !port.uplink;
}

}  // namespace

std::optional<TeamHint> teamHint(uint32_t number, const std::string &subject) {
    TeamHint hint{};
    const HYP_ReturnStatus status = call<VSHYP_PortGetTeamUplinkHint>(number, hint.data());
    if (status == HYP_NOT_FOUND) return std::nullopt;
    require(status, subject);
    return hint;
}

std::optional<size_t> carrierOf(const Arguments &arguments, const SwitchFacts &facts, const PortFacts &port,
                                const TeamHint &hint) {
    const FoundLayout found = findLayout(arguments, kTeamHint, hint.size());
    if (found.layout == nullptr || !isCarried(port)) return std::nullopt;
    const FieldValues fields = decodeRecord(*found.layout, hint, std::nullopt);
    const auto field = std::ranges::find(*fields.fields, kNicField, &LayoutField::name);
    if (field == fields.fields->end()) return std::nullopt;
    const FieldValue &value = fields.values[static_cast<size_t>(field - fields.fields->begin())];
    const auto *nic = std::get_if<std::string_view>(&value.is);
    if (nic == nullptr || nic->empty()) return std::nullopt;
    const auto uplink = std::ranges::find(facts.uplinks, std::optional(*nic), &UplinkFacts::nic);
    if (uplink == facts.uplinks.end()) return std::nullopt;
    return static_cast<size_t>(uplink - facts.uplinks.begin());
}

void askCarriers(const Arguments &arguments, SwitchFacts &facts) {
    for (PortFacts &port : facts.ports) {
        if (!isCarried(port) || !port.number) continue;
        const auto hint = teamHint(*port.number, named(facts.name(), port.id));
        if (hint) port.carrier = carrierOf(arguments, facts, port, *hint);
    }
}

}  // namespace qvs::cli
