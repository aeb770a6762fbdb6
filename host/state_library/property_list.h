// SPDX-License-Identifier: Apache-2.0
// The PropertyList blob of state.fbs. DVSData_Serialize writes it, and the emulated kernel reads it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "state_generated.h"

namespace qvs::mesh {

struct PropertyView {
    std::string_view key;
    std::string_view value;
    uint32_t type = 0;
};

struct PropertyValue {
    std::string key;
    std::string value;
    uint32_t type = 0;
};

// Builds a blob.
flatbuffers::DetachedBuffer packProperties(std::span<const PropertyView> properties);

// Reads a blob. Returns nothing if it is malformed. The blob need not be trusted.
std::optional<std::vector<PropertyValue>> unpackProperties(std::string_view blob);

// Checks that key and value are within the bytes and that a zero byte follows each.
bool wellFormed(const Property &property, std::span<const uint8_t> bytes);

}  // namespace qvs::mesh
