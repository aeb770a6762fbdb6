// SPDX-License-Identifier: Apache-2.0
#include "config/document/write.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "config/document/identity.h"
#include "config/document/places.h"
#include "config/document/quoting.h"

namespace qvs::config {
namespace {

enum class Format { Yaml, Json };

// What is to be written, with its scalars and keys in their final form.
struct Keyed;
struct Item {
    enum class Kind { Scalar, Sequence, Mapping };
    Kind kind = Kind::Mapping;
    bool spread = false;  // each entry has lines of its own
    std::string text;
    std::vector<Keyed> items;
};
// The key is empty in a list.
struct Keyed {
    std::string key;
    Item content;
};

// --- from the document to items ---

class Maker {
  public:
    explicit Maker(Format format) : format_(format) {}

    std::string name(std::string_view bytes) const { return quoted(documentText(bytes)); }
    Item value(const Member &member, const Value &value) const;
    Item setting(const Setting &setting, const Value &value) const;
    Item ofUplinks(const std::vector<UplinkEntry> &uplinks) const;
    Item document(const Document &document) const;

  private:
    std::string quoted(std::string_view text) const {
        return format_ == Format::Yaml ? quotedForYaml(text) : quotedForJson(text);
    }
    std::string scalar(const Member &member, const Value &value) const;
    Item record(std::span<const Member> members, const Value &value) const;
    void add(Item &to, std::string_view key, Item item) const {
        to.items.push_back({quoted(key), std::move(item)});
    }
    template <typename Entry>
    void addIdentity(Item &to, std::span<const IdentityMember<Entry>> members, const Entry &entry) const;
    void addPart(Item &to, const Part &part, Scope scope) const;
    Item ofSwitch(const SwitchEntry &entry) const;

    Format format_;
};

std::string Maker::scalar(const Member &member, const Value &value) const {
    switch (member.type) {
        case Type::Boolean:
            if (format_ == Format::Json) return value.on() ? "true" : "false";
            return formatScalar(member, value);
        case Type::Number:
            return formatScalar(member, value);
        case Type::Vlans:
            // The reader takes these with and without quotes.
            return format_ == Format::Yaml ? value.text() : quoted(value.text());
        case Type::Text:
            return name(value.text());
        default:
            return quoted(formatScalar(member, value));
    }
}

Item Maker::value(const Member &member, const Value &value) const {
    if (value.isList()) {
        Item list;
        list.kind = Item::Kind::Sequence;
        for (const Value &each : value.list())
            list.items.push_back({std::string(), this->value(member, each)});
        return list;
    }
    if (value.isRecord()) return record(member.members, value);
    Item item;
    item.kind = Item::Kind::Scalar;
    item.text = scalar(member, value);
    return item;
}

Item Maker::record(std::span<const Member> members, const Value &value) const {
    Item mapping;
    for (const Member &member : members) {
        const Value &content = value[member.name];
        if (content.absent()) continue;
        if (member.quiet && content == fallbackOf(member)) continue;
        add(mapping, member.name, this->value(member, content));
    }
    return mapping;
}

Item Maker::setting(const Setting &setting, const Value &value) const {
    return setting.isScalar() ? this->value(setting.members[0], value) : record(setting.members, value);
}

template <typename Entry>
void Maker::addIdentity(Item &to, std::span<const IdentityMember<Entry>> members, const Entry &entry) const {
    for (const IdentityMember<Entry> &each : members)
        if (const Value content = each.get(entry); !content.absent())
            add(to, each.member.name, value(each.member, content));
}

void Maker::addPart(Item &to, const Part &part, Scope scope) const {
    for (const auto &[setting, content, mark] : part.settings)
        add(to, setting->name, this->setting(*setting, content));
    if (part.properties.empty()) return;
    Item properties;
    properties.spread = true;
    for (const RawProperty &property : part.properties) {
        const bool usual = property.classes == usualClasses(scope, property.key);
        properties.items.push_back({name(property.key), usual ? value(kShortPropertyMember, property.value)
                                                              : value(kPropertyMember, valueOf(property))});
    }
    add(to, kProperties, std::move(properties));
}

Item Maker::ofUplinks(const std::vector<UplinkEntry> &uplinks) const {
    Item list;
    list.kind = Item::Kind::Sequence;
    for (const UplinkEntry &uplink : uplinks)
        list.items.push_back(
            {std::string(), uplink.name == uplink.port
                                ? value(kShortUplinkMember, uplink.name)
                                : record(kUplinkMember.members, valueOf({uplink}).list()[0])});
    return list;
}

Item Maker::ofSwitch(const SwitchEntry &entry) const {
    Item mapping;
    mapping.spread = true;
    addIdentity(mapping, switchMembers(), entry);
    if (entry.uplinks) add(mapping, kUplinks, ofUplinks(*entry.uplinks));
    addPart(mapping, entry.global, Scope::Global);
    Item host;
    host.spread = true;
    addPart(host, entry.host, Scope::Host);
    if (!host.items.empty()) add(mapping, kHost, std::move(host));
    Item ports;
    ports.spread = true;
    for (const PortEntry &port : entry.ports) {
        Item made;
        made.spread = true;
        addIdentity(made, portMembers(), port);
        addPart(made, port.part, Scope::Port);
        ports.items.push_back({name(port.id), std::move(made)});
    }
    if (!ports.items.empty()) add(mapping, kPorts, std::move(ports));
    return mapping;
}

Item Maker::document(const Document &document) const {
    Item switches;
    switches.spread = true;
    for (const SwitchEntry &entry : document.switches)
        switches.items.push_back({name(entry.alias), ofSwitch(entry)});
    Item all;
    all.spread = true;
    add(all, kSwitches, std::move(switches));
    return all;
}

// --- from items to text ---

constexpr size_t kWidth = 100;
constexpr size_t kIndent = 2;

// In one line. Gives up once it is clear that the line is longer than `most`.
bool appendLine(std::string &out, const Item &item, size_t most) {
    if (item.kind == Item::Kind::Scalar) {
        out += item.text;
        return out.size() <= most;
    }
    const bool list = item.kind == Item::Kind::Sequence;
    out += list ? '[' : '{';
    for (size_t i = 0; i < item.items.size(); i++) {
        if (i > 0) out += ", ";
        if (!list) out += item.items[i].key + ": ";
        if (!appendLine(out, item.items[i].content, most)) return false;
    }
    out += list ? ']' : '}';
    return out.size() <= most;
}

// Appends an item in one line if it is that short. Scalars always are.
bool fitted(std::string &out, const Item &item) {
    if (item.kind == Item::Kind::Scalar || item.items.empty()) return appendLine(out, item, SIZE_MAX);
    if (item.spread) return false;
    const size_t before = out.size();
    const size_t line = out.rfind('\n') + 1;
    if (appendLine(out, item, line + kWidth)) return true;
    out.resize(before);
    return false;
}

void appendYaml(std::string &out, const Item &item, size_t indent);

void appendYamlEntry(std::string &out, const std::string &key, const Item &item, size_t indent) {
    // A longer key needs a mark of its own.
    constexpr size_t kLongKey = 1000;
    out.append(indent, ' ');
    if (key.size() > kLongKey) {
        out += "? " + key + '\n';
        out.append(indent, ' ');
    } else {
        out += key;
    }
    out += ": ";
    if (!fitted(out, item)) {
        out.back() = '\n';
        return appendYaml(out, item, indent + kIndent);
    }
    out += '\n';
}

void appendYaml(std::string &out, const Item &item, size_t indent) {
    for (const auto &[key, content] : item.items) {
        if (item.kind == Item::Kind::Mapping) {
            appendYamlEntry(out, key, content, indent);
            continue;
        }
        const size_t begin = out.size();
        out.append(indent, ' ');
        out += "- ";
        if (fitted(out, content)) {
            out += '\n';
            continue;
        }
        // The first line of the entries begins behind the dash.
        out.resize(begin);
        appendYaml(out, content, indent + kIndent);
        out[begin + indent] = '-';
    }
}

void appendJson(std::string &out, const Item &item, size_t indent) {
    if (fitted(out, item)) return;
    const bool list = item.kind == Item::Kind::Sequence;
    out += list ? '[' : '{';
    const char *before = "\n";
    for (const auto &[key, content] : item.items) {
        out += before;
        out.append(indent + kIndent, ' ');
        if (!list) out += key + ": ";
        appendJson(out, content, indent + kIndent);
        before = ",\n";
    }
    out += '\n';
    out.append(indent, ' ');
    out += list ? ']' : '}';
}

// A value as JSON without its member.
Item itemOf(const Value &value) {
    Item item;
    if (value.isRecord()) {
        for (const NamedValue &member : value.members())
            item.items.push_back({quotedForJson(member.name), itemOf(member.value)});
        return item;
    }
    if (value.isList()) {
        item.kind = Item::Kind::Sequence;
        for (const Value &each : value.list())
            item.items.push_back({std::string(), itemOf(each)});
        return item;
    }
    item.kind = Item::Kind::Scalar;
    item.text = value.absent()      ? "null"
                : value.isBoolean() ? (value.on() ? "true" : "false")
                : value.isNumber()  ? fmt::to_string(value.number())
                : value.isText()    ? quotedForJson(documentText(value.text()))
                                    : quotedForJson(base64(value.bytes()));
    return item;
}

}  // namespace

std::string writeYaml(const Document &document) {
    std::string out;
    appendYaml(out, Maker(Format::Yaml).document(document), 0);
    return out;
}

std::string writeJson(const Document &document) {
    std::string out;
    appendJson(out, Maker(Format::Json).document(document), 0);
    return out + '\n';
}

std::string lineOf(const Setting &setting, const Value &value) {
    if (value.absent()) return "-";
    std::string out;
    appendLine(out, Maker(Format::Yaml).setting(setting, value), SIZE_MAX);
    return out;
}

std::string lineOf(const Member &member, const Value &value) {
    if (value.absent()) return "-";
    std::string out;
    appendLine(out, Maker(Format::Yaml).value(member, value), SIZE_MAX);
    return out;
}

std::string jsonOf(const Value &value) {
    std::string out;
    appendLine(out, itemOf(value), SIZE_MAX);
    return out;
}

std::string lineOf(const std::vector<UplinkEntry> &uplinks) {
    std::string out;
    appendLine(out, Maker(Format::Yaml).ofUplinks(uplinks), SIZE_MAX);
    return out;
}

}  // namespace qvs::config
