// SPDX-License-Identifier: Apache-2.0
#include "config/document/diff.h"

#include <fmt/format.h>
#include <qvs/keys.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>

#include "base/text.h"
#include "config/document/identity.h"
#include "config/document/quoting.h"
#include "config/document/write.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

using Kind = Change::Kind;

class Comparison {
  public:
    explicit Comparison(bool prune) : prune_(prune) {}

    std::vector<Change> take() { return std::move(changes_); }
    void compareSwitches(const Document &now, const Document &wanted);

  private:
    // A change of the switch or port that is compared.
    Change &add(Kind kind, Scope scope, std::string_view member);
    void addMember(Kind kind, Scope scope, const Member &member, Value before, Value after, bool conflict);

    template <typename Entry>
    void compareIdentity(std::span<const IdentityMember<Entry>> members, Scope scope, const Entry *now,
                         const Entry &wanted);
    void compareUplinks(const SwitchEntry *now, const SwitchEntry &wanted);
    void compareSwitch(const SwitchEntry *now, const SwitchEntry &wanted);
    void comparePorts(const SwitchEntry *now, const SwitchEntry &wanted);
    void comparePart(Scope scope, const Part &now, const Part &wanted);
    void compareSetting(Scope scope, const Setting &setting, const Part &now, const Value &wanted);
    void compareProperty(Scope scope, const Part &now, const RawProperty &wanted);
    void prunePart(Scope scope, const Part &now, const Part &wanted);

    bool prune_;
    std::string alias_;
    std::string port_;
    bool ofUplink_ = false;  // the port carries an uplink
    std::vector<Change> changes_;
};

std::string textOf(const RawProperty *property) {
    return property == nullptr ? std::string() : lineOf(kPropertyMember, valueOf(*property));
}

bool belongsTo(const Setting &setting, std::string_view key) {
    return std::ranges::any_of(setting.keys,
                               [&](const char *each) { return each != nullptr && key == each; });
}

// What is stored of a setting as properties, because its members cannot express it.
std::string rawTextOf(const Setting &setting, const Part &part) {
    std::string text;
    for (const RawProperty &property : part.properties)
        if (belongsTo(setting, property.key)) text += (text.empty() ? "" : " ") + textOf(&property);
    return text;
}

// Whether a port has the VLAN policy that it was made with, or the one that clearing leaves. No port is
// without one, so that there is nothing to remove.
bool isInitial(const Setting &setting, const Value &value, bool ofUplink) {
    if (&setting != &kVlan) return false;
    const std::string all = fmt::format("1-{}", QVS_VLAN_MAX);
    return value == fallbackOf(kVlan) ||
           (ofUplink && value == completed(kVlan, Members{{"trunk", List{all}}}));
}

// The identifiers of the ports that carry uplinks, now or as it is wanted.
std::set<std::string_view> uplinkPortsOf(const SwitchEntry *now, const SwitchEntry *wanted) {
    std::set<std::string_view> ports;
    for (const SwitchEntry *entry : {now, wanted})
        if (entry != nullptr && entry->uplinks)
            for (const UplinkEntry &uplink : *entry->uplinks)
                ports.insert(uplink.port);
    return ports;
}

Change &Comparison::add(Kind kind, Scope scope, std::string_view member) {
    Change &change = changes_.emplace_back();
    change.kind = kind;
    change.alias = alias_;
    change.port = port_;
    change.scope = scope;
    change.member = member;
    return change;
}

void Comparison::addMember(Kind kind, Scope scope, const Member &member, Value before, Value after,
                           bool conflict) {
    Change &change = add(kind, scope, member.name);
    change.conflict = conflict;
    if (!before.absent()) change.beforeText = lineOf(member, before);
    if (!after.absent()) change.afterText = lineOf(member, after);
    change.before = std::move(before);
    change.after = std::move(after);
}

template <typename Entry>
void Comparison::compareIdentity(std::span<const IdentityMember<Entry>> members, Scope scope,
                                 const Entry *now, const Entry &wanted) {
    for (const IdentityMember<Entry> &each : members) {
        Value before = now == nullptr ? Value() : each.get(*now);
        Value after = each.get(wanted);
        if (after.absent() || after == before) continue;
        const Kind kind = before.absent() ? Kind::Added : Kind::Changed;
        addMember(kind, scope, each.member, std::move(before), std::move(after),
                  each.fixed && now != nullptr);
    }
}

void Comparison::compareUplinks(const SwitchEntry *now, const SwitchEntry &wanted) {
    if (!wanted.uplinks) return;
    const std::vector<UplinkEntry> none;
    const bool known = now != nullptr && now->uplinks;
    const std::vector<UplinkEntry> &before = known ? *now->uplinks : none;
    if (known ? before == *wanted.uplinks : wanted.uplinks->empty() && now == nullptr) return;
    Change &change = add(before.empty() ? Kind::Added : Kind::Changed, Scope::Global, kUplinks);
    if (known) {
        change.before = valueOf(before);
        change.beforeText = lineOf(before);
    }
    change.after = valueOf(*wanted.uplinks);
    change.afterText = lineOf(*wanted.uplinks);
}

void Comparison::compareSetting(Scope scope, const Setting &setting, const Part &now, const Value &wanted) {
    const Value *before = now.find(setting);
    if (before != nullptr && *before == wanted) return;
    std::string beforeText = before != nullptr ? lineOf(setting, *before) : rawTextOf(setting, now);
    if (beforeText.empty() && setting.encode(wanted, {}, {}) == Stored{}) return;  // nothing to be stored
    Change &change = add(beforeText.empty() ? Kind::Added : Kind::Changed, scope, setting.name);
    change.setting = &setting;
    if (before != nullptr) change.before = *before;
    change.beforeText = std::move(beforeText);
    change.after = wanted;
    change.afterText = lineOf(setting, wanted);
}

void Comparison::compareProperty(Scope scope, const Part &now, const RawProperty &wanted) {
    const RawProperty *before = now.findProperty(wanted.key);
    if (before != nullptr && *before == wanted) return;
    const Setting *setting = settingOfKey(scope, wanted.key);
    const Value *expressed = setting == nullptr ? nullptr : now.find(*setting);
    std::string beforeText = expressed != nullptr ? lineOf(*setting, *expressed) : textOf(before);
    Change &change = add(beforeText.empty() ? Kind::Added : Kind::Changed, scope, wanted.key);
    change.property = true;
    if (before != nullptr) change.before = valueOf(*before);
    change.beforeText = std::move(beforeText);
    change.after = valueOf(wanted);
    change.afterText = textOf(&wanted);
}

void Comparison::prunePart(Scope scope, const Part &now, const Part &wanted) {
    for (const auto &[setting, value, mark] : now.settings) {
        if (wanted.names(*setting)) continue;
        if (isInitial(*setting, value, ofUplink_)) continue;
        Change &change = add(Kind::Removed, scope, setting->name);
        change.setting = setting;
        change.before = value;
        change.beforeText = lineOf(*setting, value);
    }
    for (const RawProperty &property : now.properties) {
        const Setting *setting = settingOfKey(scope, property.key);
        if (wanted.findProperty(property.key) != nullptr) continue;
        if (setting != nullptr && wanted.find(*setting) != nullptr) continue;
        Change &change = add(Kind::Removed, scope, property.key);
        change.property = true;
        change.before = valueOf(property);
        change.beforeText = textOf(&property);
    }
}

void Comparison::comparePart(Scope scope, const Part &now, const Part &wanted) {
    for (const auto &[setting, value, mark] : wanted.settings)
        compareSetting(scope, *setting, now, value);
    for (const RawProperty &property : wanted.properties)
        compareProperty(scope, now, property);
    if (prune_) prunePart(scope, now, wanted);
}

void Comparison::comparePorts(const SwitchEntry *now, const SwitchEntry &wanted) {
    const std::set<std::string_view> uplinks = uplinkPortsOf(now, &wanted);
    const PortEntry none;
    for (const PortEntry &port : wanted.ports) {
        const PortEntry *before = now == nullptr ? nullptr : now->findPort(port.id);
        port_ = port.id;
        ofUplink_ = uplinks.contains(port.id);
        if (before == nullptr && !ofUplink_) add(Kind::Added, Scope::Port, "");
        compareIdentity(portMembers(), Scope::Port, before, port);
        comparePart(Scope::Port, before == nullptr ? none.part : before->part, port.part);
    }
    if (prune_ && now != nullptr) {
        for (const PortEntry &port : now->ports) {
            if (wanted.findPort(port.id) != nullptr) continue;
            port_ = port.id;
            ofUplink_ = uplinks.contains(port.id);
            if (ofUplink_) {
                prunePart(Scope::Port, port.part, none.part);
            } else {
                add(Kind::Removed, Scope::Port, "");
            }
        }
    }
    port_.clear();
    ofUplink_ = false;
}

void Comparison::compareSwitch(const SwitchEntry *now, const SwitchEntry &wanted) {
    const SwitchEntry none;
    if (now == nullptr) add(Kind::Added, Scope::Global, "");
    compareIdentity(switchMembers(), Scope::Global, now, wanted);
    compareUplinks(now, wanted);
    comparePart(Scope::Global, now == nullptr ? none.global : now->global, wanted.global);
    comparePart(Scope::Host, now == nullptr ? none.host : now->host, wanted.host);
    comparePorts(now, wanted);
}

void Comparison::compareSwitches(const Document &now, const Document &wanted) {
    for (const SwitchEntry &entry : wanted.switches) {
        alias_ = entry.alias;
        compareSwitch(now.findSwitch(entry.alias), entry);
    }
    if (!prune_) return;
    for (const SwitchEntry &entry : now.switches) {
        alias_ = entry.alias;
        if (wanted.findSwitch(entry.alias) == nullptr) add(Kind::Removed, Scope::Global, "");
    }
}

}  // namespace

std::string Change::path() const {
    std::string path = std::string(kSwitches) + '.' + documentText(alias);
    if (scope == Scope::Host) path += std::string(".") + kHost;
    if (scope == Scope::Port) path += std::string(".") + kPorts + '.' + documentText(port);
    if (property) path += std::string(".") + kProperties;
    if (!member.empty()) path += '.' + (property ? documentText(member) : member);
    return path;
}

std::vector<Change> compare(const Document &now, const Document &wanted, bool prune) {
    Comparison comparison(prune);
    comparison.compareSwitches(now, wanted);
    return comparison.take();
}

}  // namespace qvs::config
