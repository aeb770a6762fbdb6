// SPDX-License-Identifier: Apache-2.0
#include "views/facts_json.h"

#include <optional>
#include <string>

#include "access/setting_value.h"
#include "config/settings/families.h"
#include "views/problems.h"

namespace qvs::cli {
namespace {

// The members of one object.
class Object {
  public:
    explicit Object(fmt::memory_buffer &out) : out_(out) {}

    template <typename Value>
    Object &member(std::string_view key, const Value &value) {
        begin(key);
        appendJson(out_, value);
        return *this;
    }
    void end() { put(out_, first_ ? "{}" : "}"); }

    fmt::memory_buffer &begin(std::string_view key) {
        put(out_, first_ ? "{" : ",");
        first_ = false;
        appendJson(out_, key);
        put(out_, ":");
        return out_;
    }

  private:
    fmt::memory_buffer &out_;
    bool first_ = true;
};

template <typename Item, typename Append>
void appendArray(fmt::memory_buffer &out, const std::vector<Item> &items, Append append) {
    const char *between = "[";
    for (const Item &item : items) {
        put(out, between);
        append(item);
        between = ",";
    }
    put(out, items.empty() ? "[]" : "]");
}

std::optional<std::string_view> unlessEmpty(std::string_view text) {
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<Flag> flagOf(std::optional<bool> value) {
    if (!value) return std::nullopt;
    return Flag{*value};
}

// A value under the name of its setting: a record with its members, or what the one member has.
void appendValue(fmt::memory_buffer &out, const config::Setting &setting, const config::Value &value) {
    if (setting.isScalar()) return appendJson(out, MemberValue{setting.members[0], value});
    Object members(out);
    for (const config::Member &member : setting.members)
        members.member(member.name, MemberValue{member, value[member.name]});
    members.end();
}

void appendUplink(fmt::memory_buffer &out, const UplinkFacts &uplink) {
    Object(out)
        .member("uplink", std::string_view(uplink.name))
        .member("port", std::string_view(uplink.portId))
        .member("nic", uplink.nic)
        .member("linkUp", flagOf(uplink.linkUp))
        .member("lacpUp", flagOf(uplink.lacpUp))
        .member("speedMbps", uplink.speedMbps)
        .end();
}

void appendPort(fmt::memory_buffer &out, const SwitchFacts &facts, const PortFacts &port) {
    std::optional<std::string_view> uplink;
    if (port.uplink) uplink = facts.uplinks[*port.uplink].name;
    Object(out)
        .member("port", port.id)
        .member("alias", port.alias)
        .member("number", port.number)
        .member("connectId", port.connectId)
        .member("externalId", port.externalId)
        .member("uplink", uplink)
        .member("inUse", Flag{port.inUse})
        .member("client", port.client)
        .member("linkUp", Flag{port.linkUp})
        .member("blocked", Flag{port.blocked})
        .member("kernelBlocked", Flag{port.kernelBlocked})
        .member("vlan", unlessEmpty(port.vlan))
        .member("policies", port.policies)
        .end();
}

void appendMirror(fmt::memory_buffer &out, const MirrorFacts &mirror) {
    Object members(out);
    members.member("port", unlessEmpty(mirror.port));
    for (const config::Member &member : config::kPortMirrorSessions.members[0].members)
        members.member(member.name, MemberValue{member, mirror.session[member.name]});
    members.end();
}

void appendPrivateVlan(fmt::memory_buffer &out, const PrivateVlanFacts &vlan) {
    Object(out)
        .member("primary", vlan.primary)
        .member("secondary", vlan.secondary)
        .member("type", std::string_view(vlan.type))
        .end();
}

void appendProblem(fmt::memory_buffer &out, const SwitchFacts &facts, const Problem &problem) {
    Object(out)
        .member("switch", facts.name())
        .member("kind", std::string_view(problem.kind))
        .member("name", std::string_view(problem.name))
        .member("problem", std::string_view(problem.text))
        .end();
}

}  // namespace

void appendJson(fmt::memory_buffer &out, const std::vector<Policy> &policies) {
    Object members(out);
    for (const Policy &policy : policies) {
        members.begin(policy.setting->name);
        if (policy.value) {
            appendValue(out, *policy.setting, *policy.value);
        } else {
            put(out, "null");
        }
    }
    members.end();
}

void appendJson(fmt::memory_buffer &out, const SwitchFacts &facts) {
    Object members(out);
    members.member("alias", facts.alias)
        .member("id", facts.id)
        .member("class", facts.className)
        .member("version", facts.version)
        .member("portset", facts.portset)
        .member("opaque", Flag{facts.opaque})
        .member("maxPorts", facts.maxPorts)
        .member("portsInUse", facts.portsInUse)
        .member("mtu", facts.mtu)
        .member("policies", facts.policies);
    members.begin("privateVlans");
    appendArray(out, facts.privateVlans, [&](const auto &each) { appendPrivateVlan(out, each); });
    members.begin("mirrorSessions");
    appendArray(out, facts.mirrors, [&](const auto &each) { appendMirror(out, each); });
    members.begin("uplinks");
    appendArray(out, facts.uplinks, [&](const auto &each) { appendUplink(out, each); });
    members.begin("ports");
    appendArray(out, facts.ports, [&](const auto &each) { appendPort(out, facts, each); });
    members.begin("problems");
    appendArray(out, problemsOf(facts), [&](const Problem &each) { appendProblem(out, facts, each); });
    members.begin("unread");
    appendArray(out, facts.gaps, [&](const std::string &each) { appendJson(out, std::string_view(each)); });
    members.end();
}

}  // namespace qvs::cli
