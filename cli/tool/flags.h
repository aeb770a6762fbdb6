// SPDX-License-Identifier: Apache-2.0
// Sets of bits by the names of the bits.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "tool/failure.h"

namespace qvs::cli {

struct FlagName {
    const char *name;
    uint32_t bit;
};

// The names of the bits that are set. Bits without a name follow as one number.
inline std::vector<std::string> flagNames(std::span<const FlagName> names, uint32_t flags) {
    std::vector<std::string> found;
    for (const FlagName &flag : names) {
        if ((flags & flag.bit) != 0) found.emplace_back(flag.name);
        flags &= ~flag.bit;
    }
    if (flags != 0) found.push_back(fmt::format("0x{:x}", flags));
    return found;
}

// The bit with this name. Throws a usage failure about `what` when there is none.
inline uint32_t flagNamed(std::string_view what, std::span<const FlagName> names, std::string_view name) {
    std::string all;
    for (const FlagName &flag : names) {
        if (name == flag.name) return flag.bit;
        all += fmt::format("{}{}", all.empty() ? "" : ", ", flag.name);
    }
    fail(Exit::Usage, "{}: {} is none of {}", what, inQuotes(name), all);
}

}  // namespace qvs::cli
