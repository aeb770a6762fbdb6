// SPDX-License-Identifier: Apache-2.0
// What the rows of settings and their functions have in common: the names of options and arguments.
#pragma once

#include <algorithm>
#include <string>

#include "access/setting_value.h"
#include "config/settings/setting.h"

namespace qvs::cli {

inline constexpr const char *kStoredOption = "--stored";
inline constexpr Option kStored{kStoredOption, nullptr,
                                "show the stored value alone; fail when nothing is stored"};
inline constexpr const char *kResetOption = "--reset";
inline constexpr const char *kEmptyOption = "--empty";
inline constexpr const char *kFileOption = "--file";

inline bool isBytes(const config::Member &member) {
    return member.type == config::Type::Bytes;
}

// The placeholder for the value of a setting with one member: "STATE", "MODE", "MTU", "MAC".
inline std::string argumentOf(const config::Setting &setting) {
    config::Member member = setting.members[0];
    member.list = false;
    member.unit = nullptr;
    if (member.type != config::Type::Boolean && member.type != config::Type::Address &&
        member.type != config::Type::Record)
        member = {.name = setting.content, .summary = "", .type = config::Type::Word};
    return placeholderOf(member);
}

}  // namespace qvs::cli
