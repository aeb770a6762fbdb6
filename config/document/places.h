// SPDX-License-Identifier: Apache-2.0
// The class bits of properties in documents, and the order of settings. Export, reader and writer share them.
#pragma once

#include <qvs/mesh_public.h>

#include <algorithm>
#include <string_view>

#include "config/document/document.h"

namespace qvs::config {

// The class bits of properties that documents contain.
inline constexpr uint32_t kKeptClasses = DVS_PROP_CONFIG | DVS_PROP_POLICY;

// The class bits of a property when the document does not name them.
inline uint32_t usualClasses(Scope scope, std::string_view key) {
    const uint32_t classes = classOfKey(scope, key).value_or(0);
    return (classes & kKeptClasses) != 0 ? classes : DVS_PROP_CONFIG;
}

// Sorts settings in the order of the table, and properties by their keys.
inline void sortPart(Part &part) {
    const auto rank = [](const Setting *setting) {
        return std::ranges::find(settings(), setting) - settings().begin();
    };
    std::ranges::sort(part.settings, {}, [&](const SettingEntry &entry) { return rank(entry.setting); });
    std::ranges::sort(part.properties, {}, &RawProperty::key);
}

}  // namespace qvs::config
