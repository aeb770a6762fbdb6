// SPDX-License-Identifier: Apache-2.0
// JSON that somebody wrote.
#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace qvs::wire {

// What walks through a value goes one call deeper with each level, and nothing that is meant needs so many.
constexpr size_t kMaxJsonDepth = 64;

// Brackets and braces that are open at once.
inline size_t depthOf(std::string_view text) {
    size_t depth = 0;
    size_t deepest = 0;
    bool quoted = false;
    for (size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') quoted = !quoted;
        if (quoted && c == '\\') ++at;
        if (quoted) continue;
        if (c == '[' || c == '{') deepest = std::max(deepest, ++depth);
        if ((c == ']' || c == '}') && depth != 0) --depth;
    }
    return deepest;
}

// Throws what is wrong and where, without the number that the parser has for it.
inline nlohmann::json parseJson(std::string_view text, size_t maxDepth = kMaxJsonDepth) {
    if (depthOf(text) > maxDepth)
        throw std::runtime_error("it is nested deeper than " + std::to_string(maxDepth) + " levels");
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error &error) {
        const std::string_view what = error.what();
        throw std::runtime_error(std::string(what.substr(what.find("] ") + 2)));
    }
}

}  // namespace qvs::wire
