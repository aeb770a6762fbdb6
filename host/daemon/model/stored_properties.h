// SPDX-License-Identifier: Apache-2.0
// How the properties that a port came with stand in the database: u32 type, key and value, one after another.
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

// False when the bytes are damaged. The views passed on lie within them.
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
