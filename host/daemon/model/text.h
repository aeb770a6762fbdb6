// SPDX-License-Identifier: Apache-2.0
// Text forms of bytes, words, addresses and errors.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qvs::kernel {

// The most bytes of a text and of an area that are shown. The rest is shown as "+N bytes".
constexpr size_t kShownText = 64 << 10;
constexpr size_t kShownArea = 256 << 10;

// Returns a text in quotation marks, with the escapes \n, \", \\ and \xHH.
std::string quote(std::string_view text);
// Returns a word unchanged if a shell would read it unchanged, and otherwise in quotation marks.
std::string shellWord(std::string_view text);
// Returns all bytes as pairs of hexadecimal digits, with a text between the pairs.
std::string hexDigits(std::string_view bytes, std::string_view between = {});
// Returns each run of bytes that are not zero as "offset:hex", separated by blanks.
std::string hexRuns(std::string_view bytes);
// Returns the bytes that pairs of hexadecimal digits stand for.
std::optional<std::string> parseHex(std::string_view digits);
// Returns the six bytes of a MAC address like "02:00:00:00:00:01".
std::optional<std::string> parseMac(std::string_view text);
// Returns the 4 or 16 bytes of an IP address, in network order.
std::optional<std::string> parseIp(const std::string &text);
// Returns the name of an error, such as "ENOENT", or "0" for 0.
std::string errnoName(int error);

}  // namespace qvs::kernel
