// SPDX-License-Identifier: Apache-2.0
// The PropertyList blob of state.fbs.
#include "state_library/property_list.h"

#include <cstring>

namespace qvs::mesh {

bool wellFormed(const Property &property, std::span<const uint8_t> bytes) {
    const uint64_t valueEnd = uint64_t{property.value()} + property.length();
    return property.key() < bytes.size() && valueEnd < bytes.size() && bytes[valueEnd] == 0 &&
           bytes.back() == 0;
}

flatbuffers::DetachedBuffer packProperties(std::span<const PropertyView> properties) {
    size_t size = 0;
    for (const PropertyView &property : properties) {
        size += property.key.size() + property.value.size() + 2;
    }
    std::string bytes;
    bytes.reserve(size);
    const auto append = [&bytes](std::string_view text) {
        const auto position = static_cast<uint32_t>(bytes.size());
        bytes.append(text).push_back('\0');
        return position;
    };
    std::vector<Property> entries;
    entries.reserve(properties.size());
    for (const PropertyView &property : properties) {
        const uint32_t key = append(property.key);
        const uint32_t value = append(property.value);
        entries.emplace_back(key, property.type, value, static_cast<uint32_t>(property.value.size()));
    }

    flatbuffers::FlatBufferBuilder builder(size + entries.size() * sizeof(Property) + 64);
    // Separate statements, because the order in which arguments are evaluated is not defined.
    const auto entryVector = builder.CreateVectorOfStructs(entries);
    const auto byteVector =
        builder.CreateVector(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    builder.Finish(CreatePropertyList(builder, byteVector, entryVector));
    return builder.Release();
}

std::optional<std::vector<PropertyValue>> unpackProperties(std::string_view blob) {
    if (blob.empty()) return std::nullopt;
    // Fields are read in place and need alignment, which a blob inside a message does not have.
    std::vector<uint64_t> aligned(blob.size() / sizeof(uint64_t) + 1);
    std::memcpy(aligned.data(), blob.data(), blob.size());
    const auto *data = reinterpret_cast<const uint8_t *>(aligned.data());
    flatbuffers::Verifier verifier(data, blob.size());
    if (!verifier.VerifyBuffer<PropertyList>(nullptr)) return std::nullopt;

    std::vector<PropertyValue> properties;
    const auto *list = flatbuffers::GetRoot<PropertyList>(data);
    if (list->properties() == nullptr) return properties;
    if (list->bytes() == nullptr) return std::nullopt;
    const std::span<const uint8_t> bytes(list->bytes()->data(), list->bytes()->size());
    const auto *text = reinterpret_cast<const char *>(bytes.data());
    properties.reserve(list->properties()->size());
    for (const Property *property : *list->properties()) {
        if (!wellFormed(*property, bytes)) return std::nullopt;
        properties.push_back({text + property->key(),
                              std::string(text + property->value(), property->length()), property->type()});
    }
    return properties;
}

}  // namespace qvs::mesh
