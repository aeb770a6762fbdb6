// SPDX-License-Identifier: Apache-2.0
#include "access/policy.h"

#include <qvs/keys.h>

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
    if (member.type == Type::Bytes)
        return member.list ? fmt::format("{} entries", value.list().size())
                           : fmt::format("{} bytes", value.bytes().size());
    if (member.list && value.list().empty()) return "none";
    fmt::memory_buffer text;
    appendText(text, MemberValue{member, value});
    return fmt::to_string(text);
}

}  // namespace

std::string_view Policy::name() const {
    constexpr std::string_view kOfPort = "port ";
    std::string_view noun = setting->noun;
    if (setting->scope == Scope::Port && noun.starts_with(kOfPort)) noun.remove_prefix(kOfPort.size());
    return noun;
}

std::string policyWords(const Setting &setting, const Value &value) {
    if (setting.isScalar()) {
        const Member &member = setting.members[0];
        return value == fallbackOf(member) ? std::string() : wordsOf(member, value);
    }
    std::string words;
    for (const Member &member : setting.members) {
        const Value &content = value[member.name];
        if (content.absent() || content == fallbackOf(member)) continue;
        words += fmt::format("{}{} {}", words.empty() ? "" : ", ", labelOf(member), wordsOf(member, content));
    }
    return words;
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
