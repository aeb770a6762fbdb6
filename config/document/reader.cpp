// SPDX-License-Identifier: Apache-2.0
#include "config/document/reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "base/text.h"
#include "config/document/identity.h"
#include "config/document/places.h"
#include "config/document/value_reader.h"
#include "config/settings/references.h"

namespace qvs::config {
namespace {

class Reader {
  public:
    Reader(std::string_view origin, std::vector<Problem> &problems) : values_(origin, problems) {}

    Document read(const Node &root);

  private:
    // A property whose key may be that of a setting, too.
    struct KeyPlace {
        const Node *node;
        const Setting *setting;
        std::string path;
    };

    SwitchEntry readSwitch(std::string alias, const Node &node, const Path &path);
    void readHost(SwitchEntry &entry, const Node &node, const Path &path);
    void readPorts(SwitchEntry &entry, const Node &node, const Path &path);
    PortEntry readPort(std::string id, const Node &node, const Path &path);
    std::optional<UplinkEntry> readUplink(const Node &node, const Path &path);
    void readUplinks(SwitchEntry &entry, const Node &node, const Path &path);
    void readProperties(Part &part, Scope scope, const Node &node, const Path &path,
                        std::vector<KeyPlace> &keys);
    // Reads a setting of a scope, or `properties`. Answers whether the key is one of these.
    bool readOfPart(Part &part, Scope scope, const Node &key, const Node &value, const Path &path,
                    std::vector<KeyPlace> &keys);
    void finish(Part &part, const Path &path, const std::vector<KeyPlace> &keys);
    template <typename Entry>
    bool readIdentity(std::span<const IdentityMember<Entry>> members, Entry &entry, const Node &key,
                      const Node &value, const Path &path);
    void refuse(const Node &key, const Path &path, Scope scope, std::vector<std::string_view> others);
    void checkRoom(const SwitchEntry &entry, const Node &node, const Path &path);

    ValueReader values_;
    // Of the switch that is read.
    bool hidesObjects_ = false;
    bool hidesSettings_ = false;
};

const char *placeName(Scope scope) {
    return scope == Scope::Global ? "of the switch" : scope == Scope::Host ? "under 'host'" : "of a port";
}

bool isNoMapping(const Node &node) {
    return node.kind != Node::Kind::Mapping && node.kind != Node::Kind::Empty;
}

Mark markOf(const Node &node) {
    return {node.line, node.column};
}

template <typename Entry>
bool Reader::readIdentity(std::span<const IdentityMember<Entry>> members, Entry &entry, const Node &key,
                          const Node &value, const Path &path) {
    for (const IdentityMember<Entry> &each : members) {
        if (key.text != each.member.name) continue;
        const Value read = values_.read(each.member, value, path);
        if (!read.absent()) each.set(entry, read);
        hidesObjects_ = hidesObjects_ || read.absent();
        return true;
    }
    return false;
}

// Reports a member that a mapping does not have; the words are those that it has.
void Reader::refuse(const Node &key, const Path &path, Scope scope, std::vector<std::string_view> words) {
    words.emplace_back(kProperties);
    hidesObjects_ = hidesObjects_ || scope == Scope::Global;
    hidesSettings_ = true;
    for (const Setting *setting : settings()) {
        if (setting->scope == scope) {
            words.emplace_back(setting->name);
        } else if (setting->name == key.text) {
            values_.report(key, path, fmt::format("is a setting {}", placeName(setting->scope)));
            return;
        }
    }
    values_.report(key, path, "no such member" + suggestion(key.text, words));
}

void Reader::readProperties(Part &part, Scope scope, const Node &node, const Path &path,
                            std::vector<KeyPlace> &keys) {
    std::set<std::string> seen;
    values_.forEachEntry(node, path, true, [&](const Node &key, const Node &value, const Path &here) {
        std::optional<std::string> name = values_.readName(kPropertyKeyMember, key, here);
        const bool whole = value.kind == Node::Kind::Mapping;
        const size_t before = values_.problems();
        Value read = values_.readItem(whole ? kPropertyMember : kShortPropertyMember, value, here);
        if (!name || values_.problems() != before || value.kind == Node::Kind::Refused) return;
        if (!seen.insert(*name).second) values_.reportTwice(key, here);
        RawProperty property{*name, usualClasses(scope, *name), whole ? read["value"].bytes() : read.bytes()};
        if (whole) property.classes = static_cast<uint32_t>(read["class"].number());
        if ((property.classes & kKeptClasses) == 0)
            values_.report(value, here,
                           fmt::format("class {} has neither the bit {} of a policy nor the bit {} of "
                                       "configuration",
                                       property.classes, DVS_PROP_POLICY, DVS_PROP_CONFIG));
        if (const Setting *setting = settingOfKey(scope, *name)) keys.push_back({&key, setting, *name});
        part.properties.push_back(std::move(property));
    });
}

bool Reader::readOfPart(Part &part, Scope scope, const Node &key, const Node &value, const Path &path,
                        std::vector<KeyPlace> &keys) {
    if (key.text == kProperties) {
        readProperties(part, scope, value, path, keys);
        return true;
    }
    const Setting *setting = settingNamed(scope, key.text);
    if (setting == nullptr) return false;
    const size_t before = values_.problems();
    Value read = setting->isScalar() ? values_.read(setting->members[0], value, path)
                                     : values_.readRecord(setting->members, value, path);
    if (values_.problems() != before || read.absent()) {
        hidesObjects_ = hidesObjects_ || isReferredTo(*setting);
        hidesSettings_ = hidesSettings_ || refers(*setting);
        return true;
    }
    read = completed(*setting, read);
    if (std::string wrong = problemOf(*setting, read); !wrong.empty())
        values_.report(value, path, std::move(wrong));
    part.settings.push_back({setting, std::move(read), markOf(value)});
    return true;
}

void Reader::finish(Part &part, const Path &path, const std::vector<KeyPlace> &keys) {
    for (const KeyPlace &key : keys) {
        if (part.find(*key.setting) == nullptr) continue;
        const Path properties{&path, kProperties, {}};
        values_.report(*key.node, Path{&properties, key.path, {}},
                       fmt::format("is stored with '{}', which is given, too; leave out one of them",
                                   key.setting->name));
    }
    sortPart(part);
}

std::optional<UplinkEntry> Reader::readUplink(const Node &node, const Path &path) {
    if (node.kind == Node::Kind::Mapping) {
        const Value read = values_.readRecord(kUplinkMember.members, node, path);
        if (read["name"].absent() || read["port"].absent()) return std::nullopt;
        return UplinkEntry{read["name"].text(), read["port"].text()};
    }
    const std::optional<std::string> name = values_.readName(kShortUplinkMember, node, path);
    if (!name) return std::nullopt;
    return UplinkEntry{*name, *name};
}

void Reader::readUplinks(SwitchEntry &entry, const Node &node, const Path &path) {
    if (node.kind != Node::Kind::Sequence) {
        values_.report(node, path, "is not a list of uplinks, such as [uplink0, uplink1]");
        hidesObjects_ = true;
        return;
    }
    const size_t before = values_.problems();
    entry.uplinks.emplace();
    std::set<std::string> names;
    std::set<std::string> ports;
    for (size_t i = 0; i < node.items.size(); i++) {
        const Path here{&path, {}, i};
        std::optional<UplinkEntry> uplink = readUplink(node.items[i], here);
        if (!uplink) continue;
        if (!names.insert(uplink->name).second)
            values_.report(node.items[i], here,
                           fmt::format("uplink {} is given twice", inQuotes(uplink->name)));
        if (!ports.insert(uplink->port).second && uplink->port != uplink->name)
            values_.report(node.items[i], here,
                           fmt::format("port {} carries another uplink", inQuotes(uplink->port)));
        entry.uplinks->push_back(std::move(*uplink));
    }
    hidesObjects_ = hidesObjects_ || values_.problems() != before;
}

PortEntry Reader::readPort(std::string id, const Node &node, const Path &path) {
    PortEntry entry;
    entry.id = std::move(id);
    std::vector<KeyPlace> keys;
    values_.forEachEntry(node, path, true, [&](const Node &key, const Node &value, const Path &here) {
        if (readIdentity(portMembers(), entry, key, value, here)) return;
        if (readOfPart(entry.part, Scope::Port, key, value, here, keys)) return;
        std::vector<std::string_view> words;
        for (const auto &each : portMembers())
            words.emplace_back(each.member.name);
        refuse(key, here, Scope::Port, std::move(words));
    });
    finish(entry.part, path, keys);
    return entry;
}

void Reader::readPorts(SwitchEntry &entry, const Node &node, const Path &path) {
    std::set<std::string> ids;
    hidesObjects_ = hidesObjects_ || isNoMapping(node);
    values_.forEachEntry(node, path, true, [&](const Node &key, const Node &value, const Path &here) {
        std::optional<std::string> id = values_.readName(kPortIdMember, key, here);
        hidesObjects_ = hidesObjects_ || !id;
        if (!id) return;
        if (!ids.insert(*id).second) values_.reportTwice(key, here);
        entry.ports.push_back(readPort(std::move(*id), value, here));
    });
    std::ranges::sort(entry.ports, {}, &PortEntry::id);
}

void Reader::readHost(SwitchEntry &entry, const Node &node, const Path &path) {
    std::vector<KeyPlace> keys;
    hidesObjects_ = hidesObjects_ || isNoMapping(node);
    values_.forEachEntry(node, path, true, [&](const Node &key, const Node &value, const Path &here) {
        if (!readOfPart(entry.host, Scope::Host, key, value, here, keys)) refuse(key, here, Scope::Host, {});
    });
    finish(entry.host, path, keys);
}

void Reader::checkRoom(const SwitchEntry &entry, const Node &node, const Path &path) {
    if (!entry.maxPorts) return;
    const size_t ports = entry.portIds().size();
    if (ports > *entry.maxPorts)
        values_.report(node, path,
                       fmt::format("has {} ports, those of uplinks among them, but maxPorts has room for {}",
                                   ports, *entry.maxPorts));
}

SwitchEntry Reader::readSwitch(std::string alias, const Node &node, const Path &path) {
    SwitchEntry entry;
    entry.alias = std::move(alias);
    entry.mark = markOf(node);
    hidesObjects_ = hidesSettings_ = false;
    std::vector<KeyPlace> keys;
    values_.forEachEntry(node, path, true, [&](const Node &key, const Node &value, const Path &here) {
        if (key.text == kUplinks) return readUplinks(entry, value, here);
        if (key.text == kHost) return readHost(entry, value, here);
        if (key.text == kPorts) return readPorts(entry, value, here);
        if (readIdentity(switchMembers(), entry, key, value, here)) return;
        if (readOfPart(entry.global, Scope::Global, key, value, here, keys)) return;
        std::vector<std::string_view> words = {kUplinks, kHost, kPorts};
        for (const auto &each : switchMembers())
            words.emplace_back(each.member.name);
        refuse(key, here, Scope::Global, std::move(words));
    });
    finish(entry.global, path, keys);
    checkRoom(entry, node, path);
    entry.hidesObjects = hidesObjects_;
    entry.hidesSettings = hidesSettings_;
    return entry;
}

Document Reader::read(const Node &root) {
    constexpr std::string_view kTop[] = {kSwitches};
    Document document;
    const Path top;
    if (root.kind == Node::Kind::Empty) {
        values_.report(root, top, "the document is empty; it begins with 'switches:'");
        return document;
    }
    bool found = false;
    std::set<std::string> aliases;
    values_.forEachEntry(root, top, false, [&](const Node &key, const Node &value, const Path &here) {
        if (key.text != kSwitches)
            return values_.report(key, here, "no such member" + suggestion(key.text, kTop));
        found = true;
        values_.forEachEntry(value, here, true, [&](const Node &name, const Node &sw, const Path &at) {
            std::optional<std::string> alias = values_.readName(kAliasMember, name, at);
            if (!alias) return;
            if (!aliases.insert(*alias).second) values_.reportTwice(name, at);
            document.switches.push_back(readSwitch(std::move(*alias), sw, at));
        });
    });
    if (!found && root.kind == Node::Kind::Mapping) values_.report(root, top, "'switches' is missing");
    std::ranges::sort(document.switches, {}, &SwitchEntry::alias);
    return document;
}

}  // namespace

Document readDocument(std::string_view text, std::string_view origin, std::vector<Problem> &problems) {
    const std::optional<Node> root = parseTree(text, origin, problems);
    if (!root) return {};
    Document document = Reader(origin, problems).read(*root);
    sortByPlace(problems);
    return document;
}

}  // namespace qvs::config
