// SPDX-License-Identifier: Apache-2.0
#include "access/setting_value.h"

#include <qvs/keys.h>

#include <algorithm>

#include "base/text.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using config::List;
using config::Member;
using config::Type;
using config::Value;

Member itemOf(const Member &list) {
    Member item = list;
    item.list = false;
    return item;
}

std::string upper(std::string_view text) {
    std::string out(text);
    std::ranges::transform(
        out, out.begin(), [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return out;
}

// "limit policy"
std::string wordsOf(const Member &member) {
    std::string words = optionOf(member).substr(2);
    std::ranges::replace(words, '-', ' ');
    return words;
}

Value parseOne(const Member &member, std::string_view what, const std::string &text) {
    config::Parsed parsed = parseScalar(member, text);
    if (!parsed.ok()) fail(Exit::Usage, "{}: {}", what, parsed.problem);
    return std::move(parsed.value);
}

// "100:101:isolated"
Value parseRecord(const Member &member, std::string_view what, const std::string &text) {
    Value record = config::Members{};
    size_t at = 0;
    for (const Member &each : member.members) {
        const bool last = &each == &member.members.back();
        const size_t end = last ? text.size() : text.find(':', at);
        if (at > text.size() || end == std::string::npos)
            fail(Exit::Usage, "{}: {} is not {}", what, inQuotes(text), placeholderOf(itemOf(member)));
        record.set(each.name, parseOne(each, what, text.substr(at, end - at)));
        at = end + 1;
    }
    return record;
}

// The bytes of a file: one value, or the items of a list.
Value parseFile(const Member &member, std::string_view what, const std::string &path) {
    const std::vector<uint8_t> bytes = readFile(path, member.list ? kMostValueBytes : member.most);
    if (!member.list) {
        const std::string problem = problemOf(member, Value(bytes));
        if (!problem.empty()) fail(Exit::Usage, "{}: file {} {}", what, inQuotes(path), problem);
        return Value(bytes);
    }
    if (bytes.size() % member.most != 0)
        fail(Exit::Usage, "{}: file {} has {} bytes, but each entry has {}", what, inQuotes(path),
             bytes.size(), member.most);
    List items;
    for (auto at = bytes.begin(); at != bytes.end(); at += static_cast<long>(member.most))
        items.emplace_back(config::Blob(at, at + static_cast<long>(member.most)));
    return items;
}

}  // namespace

void appendJson(fmt::memory_buffer &out, const MemberValue &shown) {
    const auto &[member, value] = shown;
    if (value.absent()) return put(out, "null");
    const char *between = "";
    if (member.list) {
        put(out, "[");
        for (const Value &each : value.list()) {
            put(out, between);
            appendJson(out, MemberValue{itemOf(member), each});
            between = ",";
        }
        return put(out, "]");
    }
    switch (member.type) {
        case Type::Boolean:
            return appendJson(out, Flag{value.on()});
        case Type::Number:
            return appendJson(out, value.number());
        case Type::Record:
            put(out, "{");
            for (const Member &each : member.members) {
                put(out, between);
                appendJson(out, std::string_view(each.name));
                put(out, ":");
                appendJson(out, MemberValue{each, value[each.name]});
                between = ",";
            }
            return put(out, "}");
        case Type::Bytes:
            return appendJson(out, Bytes(value.bytes()));
        default:
            return appendJson(out, std::string_view(value.text()));
    }
}

void appendText(fmt::memory_buffer &out, const MemberValue &shown) {
    const auto &[member, value] = shown;
    if (value.absent()) return;
    const char *between = "";
    if (member.list) {
        for (const Value &each : value.list()) {
            put(out, between);
            appendText(out, MemberValue{itemOf(member), each});
            between = member.type == Type::Vlans ? "," : " ";
        }
    } else if (member.type == Type::Record) {
        for (const Member &each : member.members) {
            put(out, between);
            appendText(out, MemberValue{each, value[each.name]});
            between = ":";
        }
    } else {
        appendText(out, std::string_view(formatScalar(member, value)));
    }
}

std::string labelOf(const Member &member) {
    return member.unit == nullptr ? wordsOf(member) : fmt::format("{} {}", wordsOf(member), member.unit);
}

bool takesNone(const Member &member) {
    return member.fallback == nullptr && !member.required;
}

std::string placeholderOf(const Member &member) {
    if (member.type == Type::Bytes) return "FILE";
    if (member.list) return placeholderOf(itemOf(member)) + ",...";
    switch (member.type) {
        case Type::Boolean:
            return "STATE";
        case Type::Number:
            return member.unit != nullptr ? upper(member.unit) : "N";
        case Type::Word: {
            const std::string words = wordsOf(member);
            return upper(words.substr(words.rfind(' ') + 1));
        }
        case Type::Vlans:
            return "VLANS";
        case Type::Address:
            return "MAC";
        case Type::Record: {
            std::string names;
            for (const Member &each : member.members)
                names += (names.empty() ? "" : ":") + upper(wordsOf(each));
            return names;
        }
        default:
            return "TEXT";
    }
}

Value parseMember(const Member &member, std::string_view what, const std::string &text) {
    if (takesNone(member) && text == "none") return {};
    if (member.type == Type::Bytes) return parseFile(member, what, text);
    if (!member.list) return parseOne(member, what, text);
    if (takesNone(member) && text.empty())
        fail(Exit::Usage, "{}: is empty; to remove the member, give 'none'", what);
    if (member.type == Type::Vlans && text == "all") return List{Value(fmt::format("0-{}", QVS_VLAN_MAX))};
    return parseItems(member, what, splitList(text));
}

Value parseItems(const Member &member, std::string_view what, const std::vector<std::string> &texts) {
    const Member item = itemOf(member);
    List items;
    for (const std::string &text : texts)
        items.push_back(item.type == Type::Record ? parseRecord(item, what, text)
                                                  : parseOne(item, what, text));
    if (items.size() > member.mostItems)
        fail(Exit::Usage, "{}: {} entries, at most {} fit", what, items.size(), member.mostItems);
    return items;
}

}  // namespace qvs::cli
