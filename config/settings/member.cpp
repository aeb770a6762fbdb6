// SPDX-License-Identifier: Apache-2.0
#include "config/settings/member.h"

#include <fmt/format.h>
#include <qvs/keys.h>

#include <algorithm>
#include <optional>

#include "base/text.h"

namespace qvs::config {
namespace {

Parsed problem(std::string text) {
    return {{}, std::move(text)};
}

Parsed parseBoolean(std::string_view text) {
    if (text == "on" || text == "true") return {true, {}};
    if (text == "off" || text == "false") return {false, {}};
    return problem(inQuotes(text) + " is not on or off");
}

std::string problemOfNumber(const Member &member, uint64_t number) {
    if (number > member.most) return fmt::format("{} is beyond {}", number, member.most);
    if (number < member.least) return fmt::format("{} is below {}", number, member.least);
    return {};
}

Parsed parseNumberOf(const Member &member, std::string_view text) {
    std::optional<uint64_t> number = parseWideNumber(text);
    if (!number) return problem(inQuotes(text) + " is not a number " + expectation(member));
    return {*number, problemOfNumber(member, *number)};
}

std::string problemOfText(const Member &member, std::string_view text) {
    if (text.empty() && member.least > 0) return "is empty";
    if (text.size() > member.most)
        return fmt::format("has {} bytes, at most {} fit", text.size(), member.most);
    if (text.find('\0') != std::string_view::npos) return "contains a NUL";
    if (member.form != nullptr && !member.form(text))
        return inQuotes(text) + " is not " + expectation(member);
    return {};
}

std::string problemOfWord(const Member &member, std::string_view text) {
    if (std::ranges::find(member.words, text) != member.words.end()) return {};
    return inQuotes(text) + " is not " + expectation(member);
}

Parsed parseText(const Member &member, std::string_view text) {
    std::string wrong = problemOfText(member, text);
    if (!wrong.empty() || member.form == nullptr) return {text, std::move(wrong)};
    return {*member.form(text), {}};
}

std::string problemOfBytes(const Member &member, size_t size) {
    if (size >= member.least && size <= member.most) return {};
    return fmt::format("has {} bytes, not {}", size, expectation(member));
}

// The ends of "100" or "1-100".
Parsed parseVlans(std::string_view text) {
    const size_t dash = text.find('-');
    std::optional<uint64_t> first = parseWideNumber(text.substr(0, dash));
    std::optional<uint64_t> last =
        dash == std::string_view::npos ? first : parseWideNumber(text.substr(dash + 1));
    if (!first || !last) return problem(inQuotes(text) + " is not a VLAN id or a range such as 1-100");
    if (std::max(*first, *last) > QVS_VLAN_MAX)
        return problem(fmt::format("{} is beyond {}", std::max(*first, *last), QVS_VLAN_MAX));
    if (*first > *last) return problem(fmt::format("the range {} runs backwards", inQuotes(text)));
    return {*first == *last ? fmt::to_string(*first) : fmt::format("{}-{}", *first, *last), {}};
}

Parsed parseAddress(std::string_view text) {
    std::optional<MacAddress> address = parseMac(text);
    if (!address) return problem(inQuotes(text) + " is not a MAC address such as 02:00:00:00:00:01");
    return {macText(*address), {}};
}

}  // namespace

Parsed parseScalar(const Member &member, std::string_view text) {
    switch (member.type) {
        case Type::Boolean:
            return parseBoolean(text);
        case Type::Number:
            return parseNumberOf(member, text);
        case Type::Word:
            return {text, problemOfWord(member, text)};
        case Type::Text:
            return parseText(member, text);
        case Type::Vlans:
            return parseVlans(text);
        case Type::Address:
            return parseAddress(text);
        case Type::Bytes: {
            std::optional<Blob> bytes = parseBase64(text);
            if (!bytes) return problem("is not base64");
            std::string wrong = problemOfBytes(member, bytes->size());
            return {std::move(*bytes), std::move(wrong)};
        }
        case Type::Record:
            break;
    }
    return problem("is not a mapping");
}

std::string problemOf(const Member &member, const Value &value) {
    switch (member.type) {
        case Type::Number:
            return problemOfNumber(member, value.number());
        case Type::Word:
            return problemOfWord(member, value.text());
        case Type::Text:
            return problemOfText(member, value.text());
        case Type::Bytes:
            return problemOfBytes(member, value.bytes().size());
        default:
            return {};
    }
}

Value fallbackOf(const Member &member) {
    if (member.fallback == nullptr) return {};
    return member.list ? Value(List{}) : parseScalar(member, member.fallback).value;
}

std::string formatScalar(const Member &member, const Value &value) {
    switch (member.type) {
        case Type::Boolean:
            return value.on() ? "on" : "off";
        case Type::Number:
            return fmt::to_string(value.number());
        case Type::Bytes:
            return base64(value.bytes());
        default:
            return value.text();
    }
}

std::string optionOf(const Member &member) {
    std::string option = "--";
    for (const char *c = member.name; *c != '\0'; ++c) {
        const bool upper = *c >= 'A' && *c <= 'Z';
        if (upper) option += '-';
        option += upper ? static_cast<char>(*c - 'A' + 'a') : *c;
    }
    return option;
}

std::string expectation(const Member &member) {
    switch (member.type) {
        case Type::Boolean:
            return "on or off";
        case Type::Number:
            return fmt::format("{} to {}", member.least, member.most);
        case Type::Word: {
            std::string all;
            for (size_t i = 0; i < member.words.size(); i++) {
                const char *before = i == 0 ? "" : i + 1 == member.words.size() ? " or " : ", ";
                all += before;
                all += member.words[i];
            }
            return all;
        }
        case Type::Text:
            if (member.shape != nullptr) return member.shape;
            return fmt::format("at most {} bytes", member.most);
        case Type::Vlans:
            return fmt::format("VLAN ids or ranges, 0 to {}", QVS_VLAN_MAX);
        case Type::Address:
            return "a MAC address";
        case Type::Bytes:
            return member.least == member.most ? fmt::format("{} bytes", member.most)
                                               : fmt::format("{} to {} bytes", member.least, member.most);
        case Type::Record:
            break;
    }
    return "a mapping";
}

}  // namespace qvs::config
