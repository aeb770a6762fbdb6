// SPDX-License-Identifier: Apache-2.0
// VLAN ids and ranges of them as people write them.
#pragma once

#include <fmt/format.h>
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/text.h"

namespace qvs {

// The id that a text holds; a usage failure about what when it holds none.
inline uint16_t vlanId(std::string_view what, std::string_view text) {
    std::optional<uint32_t> id = parseNumber(text);
    if (!id || *id > QVS_VLAN_MAX)
        fail(Exit::Usage, "{}: {} is no VLAN id, which go from 0 to {}", what, inQuotes(text), QVS_VLAN_MAX);
    return static_cast<uint16_t>(*id);
}

// "100" or "1-100".
inline VSDVS_VLANRange vlanRange(std::string_view what, std::string_view text) {
    size_t dash = text.find('-');
    if (dash == std::string_view::npos) {
        uint16_t id = vlanId(what, text);
        return {id, id};
    }
    VSDVS_VLANRange range{vlanId(what, text.substr(0, dash)), vlanId(what, text.substr(dash + 1))};
    if (range.first > range.last)
        fail(Exit::Usage, "{}: {} runs backwards; the first id is at most the last", what, inQuotes(text));
    return range;
}

inline std::string rangeText(VSDVS_VLANRange range) {
    return range.first == range.last ? fmt::format("{}", uint32_t{range.first})
                                     : fmt::format("{}-{}", uint32_t{range.first}, uint32_t{range.last});
}

}  // namespace qvs
