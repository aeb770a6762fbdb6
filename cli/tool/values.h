// SPDX-License-Identifier: Apache-2.0
// Values as people write them: choices, lists, addresses, files.
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

// The number of the name that an argument or option holds; any other text is a usage failure.
uint32_t chosen(const Arguments &arguments, std::string_view name, Names names);
// The name of a number, or its digits when it has none.
std::string nameOf(Names names, uint32_t number);

// A 64-bit number like Arguments::number; 0 when it is not given.
uint64_t wideNumber(const Arguments &arguments, std::string_view name);

// "a,b,c" taken apart; an empty text is an empty list.
std::vector<std::string> splitList(std::string_view text);

// Which one of these arguments and options is given. None of them, or several, are a usage failure.
std::string_view oneGiven(const Arguments &arguments, std::initializer_list<const char *> names);

// Reads all of a file, or of standard input for "-". More than `most` bytes are a usage failure, and not
// read.
// Reading ends early behind a piece that is `enough`.
std::vector<uint8_t> readFile(const std::string &path, size_t most = kMostValueBytes,
                              bool (*enough)(Bytes) = nullptr);

// The bytes that an argument writes as hexadecimal digits, or those of --file.
std::vector<uint8_t> bytesGiven(const Arguments &arguments, const char *argument);

}  // namespace qvs::cli
