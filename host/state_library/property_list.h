// SPDX-License-Identifier: Apache-2.0
// The PropertyList blob of state.fbs: written by DVSData_Serialize, read by the emulated kernel.
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

flatbuffers::DetachedBuffer packProperties(std::span<const PropertyView> properties);

// Nothing when the blob is malformed; it may come from anywhere.
std::optional<std::vector<PropertyValue>> unpackProperties(std::string_view blob);

// What both blobs promise of a property: key and value lie within the bytes and a zero byte follows them.
bool wellFormed(const Property &property, std::span<const uint8_t> bytes);

}  // namespace qvs::mesh
