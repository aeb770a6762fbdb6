// SPDX-License-Identifier: Apache-2.0
// Reads JSON from users.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace qvs::wire {

// The deepest nesting that is accepted. Functions that visit a value recurse once for each level.
constexpr size_t kMaxJsonDepth = 64;

// Throws an error with the message and the place, but without the number of the error in the parser.
inline nlohmann::json parseJson(std::string_view text, size_t maxDepth = kMaxJsonDepth) {
    using Event = nlohmann::json::parse_event_t;
    const auto limitDepth = [maxDepth](int depth, Event event, const nlohmann::json &) {
        const bool opens = event == Event::object_start || event == Event::array_start;
        if (opens && static_cast<size_t>(depth) >= maxDepth)
            throw std::runtime_error("it is nested deeper than " + std::to_string(maxDepth) + " levels");
        return true;
    };
    try {
        return nlohmann::json::parse(text, limitDepth);
    } catch (const nlohmann::json::parse_error &error) {
        const std::string_view what = error.what();
        throw std::runtime_error(std::string(what.substr(what.find("] ") + 2)));
    }
}

}  // namespace qvs::wire
