// SPDX-License-Identifier: Apache-2.0
// What may be said of a fault, to the launcher that reads it and to the kernel that takes it.
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

// The whole of a text as a number, and nothing for any other text.
template <typename Number>
std::optional<Number> numberOf(std::string_view text, int base = 10) {
    Number number = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return code == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// An error by its number or its name, such as EIO.
inline std::optional<int> errnoOf(std::string_view text) {
    constexpr int kMaxErrno = 133;
    if (const auto number = numberOf<int>(text); number && *number > 0) return number;
    for (int error = 1; error <= kMaxErrno; ++error) {
        const char *name = strerrorname_np(error);
        if (name != nullptr && text == name) return error;
    }
    return std::nullopt;
}

// A status in decimal or, after 0x, in hexadecimal digits.
inline std::optional<uint32_t> statusOf(std::string_view text) {
    return text.starts_with("0x") ? numberOf<uint32_t>(text.substr(2), 16) : numberOf<uint32_t>(text);
}

}  // namespace qvs::wire
