// SPDX-License-Identifier: Apache-2.0
// Escapes text that is printed to a terminal or a log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvs::wire {

// Returns a text with its control characters as \n or \xHH, including U+0080 to U+009F. A name must neither
// control a terminal nor start a new line.
inline std::string escaped(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string result;
    result.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<uint8_t>(text[at]);
        const bool upper = byte == 0xc2 && at + 1 < text.size() && (text[at + 1] & 0xe0) == 0x80;
        if (byte == '\n') {
            result += "\\n";
        } else if (byte >= 0x20 && byte != 0x7f && !upper) {
            result += text[at];
        } else {
            const auto shown = upper ? static_cast<uint8_t>(text[++at]) : byte;
            result += {'\\', 'x', kDigits[shown >> 4], kDigits[shown & 15]};
        }
    }
    return result;
}

}  // namespace qvs::wire
