// SPDX-License-Identifier: Apache-2.0
// The format in which the database stores the properties that a port is created with: u32 type, key and value
// of each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "daemon/model/property.h"
#include "wire/message.h"

namespace qvs::kernel {

inline std::string packStored(const std::vector<PropertyView> &properties) {
    std::string bytes;
    const auto number = [&bytes](size_t value) {
        const auto narrow = static_cast<uint32_t>(value);
        bytes.append(reinterpret_cast<const char *>(&narrow), sizeof narrow);
    };
    for (const auto &[key, value, type] : properties) {
        number(type);
        number(key.size());
        bytes.append(key);
        number(value.size());
        bytes.append(value);
    }
    return bytes;
}

// Calls `visit` for each property. Returns false if the bytes are damaged. The views that are passed on point
// into `bytes`.
template <typename Visitor>
bool unpackStored(std::string_view bytes, const Visitor &visit) {
    wire::Reader reader(bytes);
    while (!reader.complete()) {
        PropertyView property;
        property.type = reader.u32();
        property.key = reader.text();
        property.value = reader.text();
        if (property.key.empty()) return false;
        visit(property);
    }
    return true;
}

}  // namespace qvs::kernel
