// JSON that somebody wrote.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace qvs::wire {

// Throws what is wrong and where, without the number that the parser has for it.
inline nlohmann::json parseJson(const std::string &text) {
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error &error) {
        const std::string_view what = error.what();
        throw std::runtime_error(std::string(what.substr(what.find("] ") + 2)));
    }
}

}  // namespace qvs::wire
