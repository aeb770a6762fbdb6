// SPDX-License-Identifier: Apache-2.0
// Values of settings as they are typed and printed.
#pragma once

#include <fmt/format.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings/member.h"
#include "config/settings/value.h"

namespace qvs::cli {

// A value with its member, which a Record prints: absent values are null in JSON, Bytes are base64.
struct MemberValue {
    const config::Member &member;
    const config::Value &value;
};
void appendJson(fmt::memory_buffer &out, const MemberValue &shown);
void appendText(fmt::memory_buffer &out, const MemberValue &shown);

// "mac change" for "macChange", and the unit behind it.
std::string labelOf(const config::Member &member);
// What stands for the value in a usage: "SECONDS", "NAME,...".
std::string placeholderOf(const config::Member &member);
// Whether the word "none" removes the member.
bool takesNone(const config::Member &member);

// Reads the value of a member from the text of an option. Items of a list are separated by commas; a member
// of type Bytes is read from the file of that name. Throws a usage failure about `what`.
config::Value parseMember(const config::Member &member, std::string_view what, const std::string &text);
// Reads the items of a list, each a text.
config::Value parseItems(const config::Member &member, std::string_view what,
                         const std::vector<std::string> &texts);

}  // namespace qvs::cli
