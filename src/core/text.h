// SPDX-License-Identifier: Apache-2.0
// Functions for text of limited length in fields and values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qvs {

// Returns the text at the start of a value of the state library: up to its NUL, or the whole value if it has
// none.
inline std::string_view textOf(const void *value, size_t length) {
    const char *text = static_cast<const char *>(value);
    return {text, strnlen(text, length)};
}

// Copies a text into a field of a kernel record: at most Size - 1 characters, then zeros to the end of the
// field.
template <size_t Size>
void copyText(char (&field)[Size], std::string_view text) {
    const size_t length = text.size() < Size ? text.size() : Size - 1;
    std::memcpy(field, text.data(), length);
    std::memset(field + length, 0, Size - length);
}
// Reads at most as many characters as fit, because a SwitchAliasName of a caller can lack a NUL.
template <size_t Size>
void copyText(char (&field)[Size], const char *text) {
    copyText(field, textOf(text, Size - 1));
}

// Copies a text into a SwitchAliasName of a caller like strncpy: a text of 128 characters or more has no NUL.
inline void copyName(char *name, std::string_view text) {
    constexpr size_t kSize = 128;
    const size_t length = text.size() < kSize ? text.size() : kSize;
    std::memcpy(name, text.data(), length);
    std::memset(name + length, 0, kSize - length);
}

}  // namespace qvs
