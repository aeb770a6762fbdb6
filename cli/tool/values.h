// SPDX-License-Identifier: Apache-2.0
// Reads the values of arguments and options: choices, lists, numbers, files.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "tool/command.h"

namespace qvs::cli {

// The names of a setting's values, by number.
using Names = std::span<const char *const>;

inline constexpr const char *kOffOn[] = {"off", "on"};

// The index of the name that an argument or option holds. Throws a usage failure for any other text.
uint32_t chosen(const Arguments &arguments, std::string_view name, Names names);
// The name with this index, or its digits when there is none.
std::string nameOf(Names names, uint32_t number);

// The number that a text holds, in decimal or, with 0x, in hexadecimal. Throws a usage failure for other
// texts and for numbers out of bounds.
uint32_t numberIn(std::string_view name, const std::string &text, uint32_t least, uint32_t most);

// Checks of values, for rows.
template <uint32_t least, uint32_t most>
void checkNumber(std::string_view name, const std::string &text) {
    (void)numberIn(name, text, least, most);
}
void checkHex(std::string_view name, const std::string &text);
template <const Limit &limit>
void checkFits(std::string_view, const std::string &text) {
    requireFits(limit, text);
}

// A 64-bit number like Arguments::number; 0 when it is not given.
uint64_t wideNumber(const Arguments &arguments, std::string_view name);

// Splits "a,b,c". An empty text is an empty list.
std::vector<std::string> splitList(std::string_view text);

// The one of these arguments and options that is given. Throws a usage failure for none or several.
std::string_view oneGiven(const Arguments &arguments, const std::vector<const char *> &names);

// Reads a file, or standard input for "-". More than `most` bytes are a usage failure. Reading ends early
// when `enough` returns true for what was read.
std::vector<uint8_t> readFile(const std::string &path, size_t most = kMostValueBytes,
                              bool (*enough)(Bytes) = nullptr);

// The bytes that an argument writes as hexadecimal digits, or those of --file.
std::vector<uint8_t> bytesGiven(const Arguments &arguments, const char *argument);

}  // namespace qvs::cli
