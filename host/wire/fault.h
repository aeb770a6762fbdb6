// SPDX-License-Identifier: Apache-2.0
// The limits and the text forms of faults, which the launcher and the kernel share.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace qvs::wire {

constexpr uint32_t kMaxFaultOffset = 64u << 20;
constexpr uint32_t kMaxFaultDelayMs = 600'000;
constexpr uint32_t kMaxFaultExit = 255;

// Returns the number that a whole text stands for. Returns nothing for any other text.
template <typename Number>
std::optional<Number> numberOf(std::string_view text, int base = 10) {
    Number number = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return code == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// Returns the error with this number or this name, such as EIO.
inline std::optional<int> errnoOf(std::string_view text) {
    constexpr int kMaxErrno = 133;
    if (const auto number = numberOf<int>(text); number && *number > 0) return number;
    for (int error = 1; error <= kMaxErrno; ++error) {
        const char *name = strerrorname_np(error);
        if (name != nullptr && text == name) return error;
    }
    return std::nullopt;
}

// Returns a status from decimal digits or, after 0x, from hexadecimal digits.
inline std::optional<uint32_t> statusOf(std::string_view text) {
    return text.starts_with("0x") ? numberOf<uint32_t>(text.substr(2), 16) : numberOf<uint32_t>(text);
}

}  // namespace qvs::wire
