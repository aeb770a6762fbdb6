// SPDX-License-Identifier: Apache-2.0
// How bytes, words and errors are shown: in traces, in the log and in errors.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qvs::kernel {

// So much is shown of a text and of an area; what is left out is said as "+N bytes".
constexpr size_t kShownText = 64 << 10;
constexpr size_t kShownArea = 256 << 10;

// "text" with \n, \", \\ and \xHH.
std::string quote(std::string_view text);
// A word as it is when it is plain, else quoted.
std::string shellWord(std::string_view text);
// All bytes as pairs of digits, with a text between the pairs.
std::string hexDigits(std::string_view bytes, std::string_view between = {});
// Runs of non-zero bytes as "offset:hex", one blank between.
std::string hexRuns(std::string_view bytes);
// The six bytes of an address like "02:00:00:00:00:01"; nothing for any other text.
std::optional<std::string> parseMac(std::string_view text);
// "ENOENT"; 0 is "0".
std::string errnoName(int error);

}  // namespace qvs::kernel
