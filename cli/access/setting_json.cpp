// SPDX-License-Identifier: Apache-2.0
#include "access/setting_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/text.h"
#include "tool/failure.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using config::Member;
using config::Type;
using config::Value;
using Json = nlohmann::json;

[[noreturn]] void refuse(const std::string &path, const Json &json, const Member &member) {
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    fail(Exit::Usage, "{}: {} is not {}", path, inQuotes(text),
         member.list ? "an array" : expectation(member));
}

Value readJson(const Member &member, const Json &json, const std::string &path);

Value readRecord(const Member &member, const Json &json, const std::string &path) {
    if (!json.is_object()) refuse(path, json, member);
    Value record = config::Members{};
    for (const auto &entry : json.items()) {
        const std::string &key = entry.key();
        const Json &value = entry.value();
        const std::string at = fmt::format("{}: {}", path, shown(key));
        const auto found =
            std::ranges::find_if(member.members, [&](const Member &each) { return key == each.name; });
        // The masks of a list of the older form cannot be stored; a list of the present form has none.
        if (found == member.members.end() && value.is_array() && value.empty()) continue;
        if (found == member.members.end()) fail(Exit::Usage, "{}: there is no such member", at);
        record.set(found->name, readJson(*found, value, at));
    }
    return record;
}

Value readJson(const Member &member, const Json &json, const std::string &path) {
    if (json.is_null()) return {};
    if (member.list) {
        if (!json.is_array()) refuse(path, json, member);
        Member item = member;
        item.list = false;
        config::List items;
        for (size_t i = 0; i < json.size(); i++)
            items.push_back(readJson(item, json[i], fmt::format("{}[{}]", path, i)));
        return items;
    }
    if (member.type == Type::Record) return readRecord(member, json, path);
    const bool kind = member.type == Type::Boolean  ? json.is_boolean()
                      : member.type == Type::Number ? json.is_number_unsigned()
                                                    : json.is_string();
    if (!kind) refuse(path, json, member);
    const std::string text = json.is_string() ? json.get<std::string>() : json.dump();
    // Bytes that are not UTF-8 are printed as escapes.
    if (text.find("\xef\xbf\xbd") != std::string::npos)
        fail(Exit::Usage, "{}: contains U+FFFD, which stands for bytes that JSON cannot hold", path);
    config::Parsed parsed = parseScalar(member, text);
    if (!parsed.ok()) fail(Exit::Usage, "{}: {}", path, parsed.problem);
    return std::move(parsed.value);
}

}  // namespace

Value valueOfFile(const Member &member, const char *what, const std::string &path) {
    const std::vector<uint8_t> text = readFile(path);
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) fail(Exit::Usage, "file {}: {}: are not JSON", inQuotes(path), what);
    try {
        return readJson(member, json, what);
    } catch (const Failure &failure) {
        fail(failure.exit, "file {}: {}", inQuotes(path), failure.message);
    }
}

}  // namespace qvs::cli
