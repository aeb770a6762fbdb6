// SPDX-License-Identifier: Apache-2.0
#include "config/settings/value.h"

#include <algorithm>

namespace qvs::config {

const Value &Value::operator[](std::string_view name) const {
    static const Value absent;
    if (!isRecord()) return absent;
    for (const NamedValue &member : members())
        if (member.name == name) return member.value;
    return absent;
}

void Value::set(std::string_view name, Value value) {
    if (!isRecord()) data_ = Members{};
    Members &members = std::get<Members>(data_);
    auto at = std::find_if(members.begin(), members.end(),
                           [&](const NamedValue &member) { return member.name == name; });
    if (at != members.end() && value.absent()) {
        members.erase(at);
    } else if (at != members.end()) {
        at->value = std::move(value);
    } else if (!value.absent()) {
        members.push_back({name, std::move(value)});
    }
}

}  // namespace qvs::config
