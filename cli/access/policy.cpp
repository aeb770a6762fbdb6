// SPDX-License-Identifier: Apache-2.0
#include "access/policy.h"

#include <qvs/keys.h>

#include <algorithm>

#include "access/setting_value.h"
#include "base/text.h"
#include "config/settings/families.h"

namespace qvs::cli {
namespace {

using config::Member;
using config::Setting;
using config::StoredView;
using config::Type;
using config::Value;

// Without a policy of its own, a port has that of its switch, so that every stored one is a difference.
bool inherits(const Setting &setting) {
    return &setting == &config::kPortTeaming;
}

std::string wordsOf(const Member &member, const Value &value) {
    if (member.list && value.list().empty()) return "none";
    if (member.list && (member.type == Type::Bytes || member.type == Type::Record)) {
        const size_t entries = value.list().size();
        return fmt::format("{} {}", entries, entries == 1 ? "entry" : "entries");
    }
    if (member.type == Type::Bytes) return fmt::format("{} bytes", value.bytes().size());
    fmt::memory_buffer text;
    appendText(text, MemberValue{member, value});
    return member.unit == nullptr ? fmt::to_string(text)
                                  : fmt::format("{} {}", fmt::to_string(text), member.unit);
}

// The label without the unit, which stands behind the value here.
std::string nameOf(const Member &member) {
    std::string name = labelOf(member);
    if (member.unit != nullptr) name.resize(name.size() - std::string_view(member.unit).size() - 1);
    return name;
}

template <typename Chosen>
std::string membersWords(const Setting &setting, const Value &value, Chosen chosen) {
    if (setting.isScalar()) {
        const Member &member = setting.members[0];
        return chosen(member, value) ? wordsOf(member, value) : std::string();
    }
    std::string words;
    for (const Member &member : setting.members) {
        const Value &content = value[member.name];
        if (content.absent() || !chosen(member, content)) continue;
        words += fmt::format("{}{} {}", words.empty() ? "" : ", ", nameOf(member), wordsOf(member, content));
    }
    return words;
}

}  // namespace

std::string_view Policy::name() const {
    constexpr std::string_view kOfPort = "port ";
    std::string_view noun = setting->noun;
    if (setting->scope == Scope::Port && noun.starts_with(kOfPort)) noun.remove_prefix(kOfPort.size());
    return noun;
}

std::string policyWords(const Setting &setting, const Value &value) {
    return membersWords(setting, value, [](const Member &member, const Value &content) {
        return content != fallbackOf(member);
    });
}

std::string allWords(const Setting &setting, const Value &value) {
    if (&setting == &config::kVlan) {
        const std::string words = vlanWords(value);
        return words.empty() ? "none" : words;
    }
    return membersWords(setting, value, [](const Member &, const Value &) { return true; });
}

std::string vlanWords(const Value &vlan) {
    std::string words;
    const uint64_t id = vlan["id"].absent() ? 0 : vlan["id"].number();
    if (id != 0) words = fmt::format("{}{}", vlan["private"].on() ? "private " : "", id);
    const Value &trunk = vlan["trunk"];
    if (!trunk.absent()) {
        std::string ranges;
        for (const Value &range : trunk.list())
            ranges += fmt::format("{}{}", ranges.empty() ? "" : ",", range.text());
        // 0 stands for frames without a tag.
        for (const uint32_t first : {0u, 1u})
            if (ranges == fmt::format("{}-{}", first, QVS_VLAN_MAX)) ranges = "all";
        words += fmt::format("{}trunk {}", words.empty() ? "" : ", ", ranges);
    }
    const Value &priority = vlan["priority"];
    if (!priority.absent())
        words += fmt::format("{}priority {}", words.empty() ? "" : ", ", priority.number());
    return words;
}

bool carriesVlan(const Value &vlan, uint32_t id) {
    if (vlan.absent()) return false;
    if (!vlan["id"].absent() && vlan["id"].number() == id) return true;
    const auto isIn = [id](const Value &range) {
        const std::string &text = range.text();
        const size_t dash = text.find('-');
        const uint32_t first = parseNumber(text.substr(0, dash)).value_or(QVS_VLAN_MAX);
        return first <= id && id <= (dash == std::string::npos ? first : *parseNumber(text.substr(dash + 1)));
    };
    return !vlan["trunk"].absent() && std::ranges::any_of(vlan["trunk"].list(), isIn);
}

std::optional<Policy> policyOf(const Setting &setting, const StoredView &stored) {
    Policy policy{&setting, setting.decode(stored), {}};
    if (!policy.value) {
        size_t size = 0;
        for (const std::optional<Bytes> &record : stored)
            size += record ? record->size() : 0;
        policy.words = fmt::format("{} bytes that its members cannot express", size);
        return policy;
    }
    policy.value = completed(setting, *policy.value);
    policy.words = policyWords(setting, *policy.value);
    if (!policy.words.empty()) return policy;
    if (!inherits(setting)) return std::nullopt;
    policy.words = "the default of a switch";
    return policy;
}

}  // namespace qvs::cli
