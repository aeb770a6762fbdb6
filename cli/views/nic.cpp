// SPDX-License-Identifier: Apache-2.0
// qvs nic: the physical NICs that uplinks are bound to.
#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "access/overview.h"
#include "base/natural.h"
#include "tool/output.h"
#include "views/nouns.h"

namespace qvs::cli {
namespace {

struct BoundNic {
    std::string_view name;
    const SwitchFacts *facts;
    const UplinkFacts *uplink;
};

void list(const Arguments &arguments, Output &out) {
    const std::vector<SwitchFacts> all = gatherSwitches(Ask::NumbersAlone);
    std::vector<BoundNic> nics;
    for (const SwitchFacts &facts : all)
        for (const UplinkFacts &uplink : facts.uplinks)
            if (uplink.nic) nics.push_back({*uplink.nic, &facts, &uplink});
    std::ranges::stable_sort(nics, namedBefore, &BoundNic::name);
    if (arguments.given("--names")) {
        NameList names(out);
        for (const BoundNic &nic : nics)
            names.add(nic.name);
        return names.finish();
    }
    // A kernel that stores no speeds has none to show.
    const bool hasSpeeds =
        std::ranges::any_of(nics, [](const BoundNic &nic) { return nic.uplink->speedMbps.has_value(); });
    Listing listing(out, {{"nic", "NIC"},
                          {"linkUp", "LINK"},
                          {"speedMbps", hasSpeeds ? "MBIT/S" : nullptr},
                          {"switch", "SWITCH"},
                          {"uplink", "UPLINK"},
                          {"port", "PORT", true}});
    for (const auto &[name, facts, uplink] : nics) {
        std::optional<Flag> link;
        if (uplink->linkUp) link = linkState(*uplink->linkUp);
        listing.row(name, link, uplink->speedMbps, facts->name(), std::string_view(uplink->name),
                    std::string_view(uplink->portId));
    }
    listing.finish();
}

const Command kRows[] = {
    {.words = "nic list",
     .summary = "list the physical NICs that uplinks are bound to, with their links",
     .options = {kNames},
     .details =
         "A NIC that no uplink is bound to is not known to the switches. MBIT/S is the speed in megabits "
         "per second; it is left out when the kernel stores none.",
     .example = "qvs nic list",
     .run = reads(list)},
};

}  // namespace

const std::span<const Command> kNicCommands = kRows;

}  // namespace qvs::cli
