// SPDX-License-Identifier: Apache-2.0
// Text on its way in and out: names shown safely, numbers and bytes read strictly, lengths checked.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/format.h"

namespace qvs {

using Bytes = std::span<const uint8_t>;

// A name as a terminal may see it: control characters, invisible characters, backslashes and what is not
// UTF-8 are escaped.
void appendShown(fmt::memory_buffer &out, std::string_view name);
std::string shown(std::string_view name);
// The same in single quotes and cut to a readable length, for messages.
std::string inQuotes(std::string_view name);

// The length of the UTF-8 sequence of two bytes or more at the start of text, or 0 when there is none that a
// terminal should see: overlong forms, surrogates and the control characters of the second block are none.
size_t sequenceLength(std::string_view text);

// Text in a fixed field that may lack its NUL.
std::string_view boundedText(const void *field, size_t size);
// The text of a value that is one printable C string with its NUL and nothing else.
std::optional<std::string_view> printableText(Bytes value);

std::string hex(Bytes bytes);
std::string base64(Bytes bytes);
// The bytes of a base64 text with its padding, or nothing.
std::optional<std::vector<uint8_t>> parseBase64(std::string_view text);
// The bytes that shown() has escaped, or nothing when an escape is malformed.
std::optional<std::string> parseShown(std::string_view text);
// Lines of 16 bytes with their offset; lines like the one before are left out and marked by "*".
void appendHexDump(fmt::memory_buffer &out, Bytes bytes);

std::optional<uint32_t> parseNumber(std::string_view text);
std::optional<uint64_t> parseWideNumber(std::string_view text);
// Hexadecimal digits in pairs; blanks, colons and a leading 0x are allowed.
std::optional<std::vector<uint8_t>> parseHex(std::string_view text);

using MacAddress = std::array<uint8_t, 6>;
// Six pairs of hexadecimal digits with colons between.
std::optional<MacAddress> parseMac(std::string_view text);
std::string macText(Bytes address);

// The number of letters to insert, remove, replace, or swap with the next one to make one text the other.
size_t distanceBetween(std::string_view one, std::string_view other);

// What a property can hold: the state library takes no more.
inline constexpr size_t kMostValueBytes = size_t{32} << 20;

// What the record that holds a name has room for.
struct Limit {
    const char *what;
    size_t bytes;
};

// A usage failure when the name is empty or too long for its record.
void requireFits(const Limit &limit, std::string_view name);

}  // namespace qvs
