// Checks of what options are given: what is wrong with it, or nothing.
#pragma once

#include <cstdint>
#include <string>

#include <fmt/format.h>

#include "wire/fault.h"

namespace qvs::launcher {

// An empty name comes from a variable that nobody set, not from who wants to go without.
inline std::string namesDirectory(const std::string &path) {
    return path.empty() ? "names no directory" : "";
}
inline std::string namesFile(const std::string &path) {
    return path.empty() ? "names no file" : "";
}

// A decimal number with nothing around it.
inline auto isNumber(uint32_t least, uint32_t most) {
    return [least, most](const std::string &text) -> std::string {
        const auto number = wire::numberOf<uint32_t>(text);
        return number && *number >= least && *number <= most
                   ? ""
                   : fmt::format("'{}' is not a number from {} to {}", text, least, most);
    };
}

}  // namespace qvs::launcher
