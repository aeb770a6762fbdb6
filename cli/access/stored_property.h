// SPDX-License-Identifier: Apache-2.0
// The property that a call names by its key, and its value.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/library/snapshot.h"
#include "tool/command.h"

namespace qvs::cli {

// The place of the property that a call names. The handles are null when the snapshot does not have the
// switch or the port, which only --by-id permits.
struct Target {
    Place place;
    std::string switchName;
    bool byId = false;
    std::string port;
    std::string key;

    const char *alias() const { return byId ? nullptr : switchName.c_str(); }
    const char *switchId() const { return byId ? switchName.c_str() : nullptr; }
    uint8_t useAlias() const { return byId ? 0 : 1; }
    bool known() const {
        return place.sw != nullptr && (place.scope != Scope::Port || place.port != nullptr);
    }
};

std::string_view scopeName(Scope scope);

// The property that SWITCH, KEY, --host, --port and --by-id name.
Target targetOf(const Arguments &arguments);

// "switch 'sw1': global property 'k'", for messages.
std::string propertyNamed(const Target &target);

// Reads the stored value. Throws when there is none.
std::vector<uint8_t> readValue(const Target &target);
HYP_ReturnStatus storeValue(const Target &target, const std::vector<uint8_t> &value, bool runtime);
HYP_ReturnStatus clearValue(const Target &target);

}  // namespace qvs::cli
