// Bounded text: what fits a field, what a value holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qvs {

// The text at the start of a value of the state library: up to its NUL, or all of it when it has none.
inline std::string_view textOf(const void *value, size_t length) {
    const char *text = static_cast<const char *>(value);
    return {text, strnlen(text, length)};
}

// Fills a field of a kernel record: at most Size - 1 characters, then zeros to the end of the field.
template <size_t Size>
void copyText(char (&field)[Size], std::string_view text) {
    const size_t length = text.size() < Size ? text.size() : Size - 1;
    std::memcpy(field, text.data(), length);
    std::memset(field + length, 0, Size - length);
}
// Looks at no more of the text than fits: a caller's SwitchAliasName need not have a NUL.
template <size_t Size>
void copyText(char (&field)[Size], const char *text) {
    copyText(field, textOf(text, Size - 1));
}

// Fills a SwitchAliasName of a caller as strncpy does: a text of 128 characters or more leaves no NUL.
inline void copyName(char *name, std::string_view text) {
    constexpr size_t kSize = 128;
    const size_t length = text.size() < kSize ? text.size() : kSize;
    std::memcpy(name, text.data(), length);
    std::memset(name + length, 0, kSize - length);
}

}  // namespace qvs
