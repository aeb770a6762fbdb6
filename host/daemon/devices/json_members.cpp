// SPDX-License-Identifier: Apache-2.0
// Reading a JSON object member by member.
#include "daemon/devices/json_members.h"

#include <algorithm>
#include <charconv>

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

std::optional<uint32_t> Members::maybeNumber(const char *name) {
    const json *value = any(name);
    if (value == nullptr) return std::nullopt;
    if (!value->is_number_unsigned() || value->get<uint64_t>() > UINT32_MAX) {
        fail(name, "is not a number from 0 to 4294967295");
    }
    return value->get<uint32_t>();
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
        if (!element.is_string()) fail(name, "holds something else than texts");
        result.push_back(element.get<std::string>());
    }
    return result;
}

void Members::each(const char *name, const std::function<void(Members)> &visit) {
    const json *value = any(name);
    if (value == nullptr) return;
    if (!value->is_array()) fail(name, "is not a list");
    size_t index = 0;
    for (const json &element : *value)
        visit(Members(element, fmt::format("{}.{}[{}]", where_, name, index++)));
}

std::string Members::bytes(const char *name, std::string_view hex) const {
    if (hex.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos)
        fail(name, "holds something else than hexadecimal digits");
    if (hex.size() % 2 != 0) fail(name, "has an odd number of digits");
    std::string result;
    for (size_t at = 0; at < hex.size(); at += 2) {
        uint8_t byte = 0;
        std::from_chars(hex.data() + at, hex.data() + at + 2, byte, 16);
        result += static_cast<char>(byte);
    }
    return result;
}

void Members::finish() const {
    for (const auto &[name, value] : object_->items()) {
        if (!taken_.contains(name)) fail(name.c_str(), "is not known here");
    }
}

}  // namespace qvs::kernel
