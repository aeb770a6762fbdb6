// Checks of what options are given: what is wrong with it, or nothing.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>

#include <fmt/format.h>

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
        uint32_t number = 0;
        const char *end = text.data() + text.size();
        const auto [stop, code] = std::from_chars(text.data(), end, number);
        const bool fits = code == std::errc() && stop == end && number >= least && number <= most;
        return fits ? "" : fmt::format("'{}' is not a number from {} to {}", text, least, most);
    };
}

}  // namespace qvs::launcher
