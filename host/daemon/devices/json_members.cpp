// SPDX-License-Identifier: Apache-2.0
// Reads the members of a JSON object.
#include "daemon/devices/json_members.h"

#include <algorithm>

#include <fmt/format.h>

#include "daemon/model/text.h"

namespace qvs::kernel {

using nlohmann::json;

Members::Members(const json &object, std::string where) : object_(&object), where_(std::move(where)) {
    if (!object.is_object()) throw JsonError(where_ + " is not an object");
}

void Members::fail(const char *name, std::string_view problem) const {
    throw JsonError(fmt::format("{}: \"{}\" {}", where_, name, problem));
}

const json *Members::any(const char *name) {
    taken_.emplace(name);
    const auto found = object_->find(name);
    return found == object_->end() ? nullptr : &*found;
}

std::string Members::text(const char *name) {
    auto value = maybeText(name);
    if (!value) fail(name, "is missing");
    return *value;
}

std::optional<std::string> Members::maybeText(const char *name) {
    const json *value = any(name);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) fail(name, "is not a text");
    return value->get<std::string>();
}

std::optional<uint32_t> Members::maybeNumber(const char *name, uint32_t least, uint32_t most) {
    const json *value = any(name);
    if (value == nullptr) return std::nullopt;
    const uint64_t number = value->is_number_unsigned() ? value->get<uint64_t>() : UINT64_MAX;
    if (number < least || number > most)
        fail(name, fmt::format("is not a number from {} to {}", least, most));
    return static_cast<uint32_t>(number);
}

std::optional<size_t> Members::maybeChoice(const char *name, std::span<const char *const> words) {
    const auto given = maybeText(name);
    if (!given) return std::nullopt;
    const auto found = std::find(words.begin(), words.end(), *given);
    if (found == words.end()) fail(name, fmt::format("is none of \"{}\"", fmt::join(words, "\", \"")));
    return static_cast<size_t>(found - words.begin());
}

std::optional<bool> Members::maybeFlag(const char *name) {
    const json *value = any(name);
    if (value == nullptr) return std::nullopt;
    if (!value->is_boolean()) fail(name, "is neither true nor false");
    return value->get<bool>();
}

std::optional<std::string> Members::maybeBytes(const char *name) {
    const auto given = maybeText(name);
    if (!given) return std::nullopt;
    auto bytes = parseHex(*given);
    if (!bytes) fail(name, "is not a row of pairs of hexadecimal digits");
    return bytes;
}

std::optional<std::array<uint8_t, 6>> Members::maybeMac(const char *name) {
    const auto given = maybeText(name);
    if (!given) return std::nullopt;
    const auto bytes = parseMac(*given);
    if (!bytes) fail(name, "is not an address like 02:00:00:00:00:01");
    std::array<uint8_t, 6> mac{};
    std::copy(bytes->begin(), bytes->end(), mac.begin());
    return mac;
}

std::vector<std::string> Members::texts(const char *name) {
    std::vector<std::string> result;
    const json *value = any(name);
    if (value == nullptr) return result;
    if (!value->is_array()) fail(name, "is not a list");
    for (const json &element : *value) {
        if (!element.is_string()) fail(name, "contains an element that is not a text");
        result.push_back(element.get<std::string>());
    }
    return result;
}

void Members::object(const char *name, const std::function<void(Members &)> &visit) {
    const json *value = any(name);
    if (value == nullptr) return;
    Members members(*value, fmt::format("{}.{}", where_, name));
    visit(members);
    members.finish();
}

void Members::each(const char *name, const std::function<void(Members &)> &visit) {
    const json *value = any(name);
    if (value == nullptr) return;
    if (!value->is_array()) fail(name, "is not a list");
    size_t index = 0;
    for (const json &element : *value) {
        Members members(element, fmt::format("{}.{}[{}]", where_, name, index++));
        visit(members);
        members.finish();
    }
}

void Members::finish() const {
    for (const auto &[name, value] : object_->items()) {
        if (!taken_.contains(name)) fail(name.c_str(), "is unknown");
    }
}

}  // namespace qvs::kernel
