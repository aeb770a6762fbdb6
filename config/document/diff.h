// SPDX-License-Identifier: Apache-2.0
// Compares two documents.
#pragma once

#include <string>
#include <vector>

#include "config/document/document.h"

namespace qvs::config {

// One difference: of a switch or port as a whole (no member), of an identity member ("uplinks",
// "connectId"), of a setting, or of a property.
struct Change {
    enum class Kind { Added, Removed, Changed };
    Kind kind = Kind::Changed;
    std::string alias;
    std::string port;  // empty: of the switch
    // Of settings and properties. Identity members of a switch are Global, those of a port Port.
    Scope scope = Scope::Global;
    // The name of the member or setting, or the key of the property.
    std::string member;
    const Setting *setting = nullptr;
    bool property = false;
    // Whether an existing switch or port cannot be changed in this way.
    bool conflict = false;
    // As typed: values of settings; uplinks as a list of {name, port}; properties as {class, value}; bool,
    // number or text. Absent on the side that has nothing, and for switches and ports. Where a property takes
    // the place of a setting or the other way round, the value of the other side is absent and its text
    // tells.
    Value before;
    Value after;
    // The values as text of one line; empty on the side that has none.
    std::string beforeText;
    std::string afterText;

    // "switches.sw1.ports.web.vlan", with the names as shown() prints them.
    std::string path() const;
};

// Lists what has to change for `now` to become `wanted`. A switch or port that is added is followed by what
// is in it; one that is removed goes with all that is in it. What `wanted` does not name is no change unless
// `prune` is set; the VLAN policy that each port is made with is no change then, either. The order is that of
// documents.
std::vector<Change> compare(const Document &now, const Document &wanted, bool prune);

}  // namespace qvs::config
