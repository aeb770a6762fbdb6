// SPDX-License-Identifier: Apache-2.0
#include "config/document/schema.h"

#include <fmt/format.h>
#include <qvs/keys.h>

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "config/document/identity.h"
#include "config/document/places.h"

namespace qvs::config {
namespace {

using Json = nlohmann::ordered_json;

std::string sentence(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

Json jsonOf(const Member &member, const Value &value) {
    if (value.isList()) {
        Json list = Json::array();
        for (const Value &each : value.list())
            list.push_back(jsonOf(member, each));
        return list;
    }
    switch (member.type) {
        case Type::Boolean:
            return value.on();
        case Type::Number:
            return value.number();
        default:
            return formatScalar(member, value);
    }
}

// --- single values ---

Json ofRecord(std::span<const Member> members);

Json ofScalar(const Member &member) {
    switch (member.type) {
        case Type::Boolean:
            // YAML 1.1 reads on and off as booleans, too; YAML 1.2 reads them as text.
            return {{"enum", {true, false, "on", "off"}}};
        case Type::Number:
            return {{"type", "integer"}, {"minimum", member.least}, {"maximum", member.most}};
        case Type::Word: {
            Json words = Json::array();
            for (const char *word : member.words)
                words.push_back(word);
            return {{"enum", words}};
        }
        case Type::Text:
            // Bytes are counted, and an escape of four characters is one byte.
            return {{"type", "string"}, {"minLength", member.least > 0 ? 1 : 0}};
        case Type::Vlans:
            return {{"anyOf",
                     {{{"type", "integer"}, {"minimum", 0}, {"maximum", QVS_VLAN_MAX}},
                      {{"type", "string"}, {"pattern", "^[0-9]{1,4}(-[0-9]{1,4})?$"}}}}};
        case Type::Address:
            return {{"type", "string"}, {"pattern", "^[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}$"}};
        case Type::Bytes:
            return {{"type", "string"},
                    {"contentEncoding", "base64"},
                    {"pattern", "^([A-Za-z0-9+/]{4})*([A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?$"}};
        case Type::Record:
            break;
    }
    return ofRecord(member.members);
}

std::string descriptionOf(const Member &member) {
    std::string text = sentence(member.summary);
    if (member.unit != nullptr) text += fmt::format(", in {}", member.unit);
    if (member.type == Type::Text || member.type == Type::Bytes) text += "; " + expectation(member);
    return text + '.';
}

Json ofMember(const Member &member) {
    Json schema = Json::object();
    if (*member.summary != '\0') schema["description"] = descriptionOf(member);
    if (member.list) {
        schema["type"] = "array";
        schema["items"] = ofScalar(member);
        if (member.mostItems < UINT32_MAX) schema["maxItems"] = member.mostItems;
    } else {
        schema.update(ofScalar(member));
    }
    if (const Value fallback = fallbackOf(member); !fallback.absent())
        schema["default"] = jsonOf(member, fallback);
    return schema;
}

Json closed(Json properties) {
    return {{"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

Json ofRecord(std::span<const Member> members) {
    Json properties = Json::object();
    Json required = Json::array();
    for (const Member &member : members) {
        properties[member.name] = ofMember(member);
        if (member.required) required.push_back(member.name);
    }
    Json schema = closed(std::move(properties));
    if (!required.empty()) schema["required"] = required;
    return schema;
}

// --- settings and entries ---

Json ofSetting(const Setting &setting) {
    Json schema = {{"title", sentence(setting.what)}, {"description", sentence(setting.summary) + '.'}};
    if (setting.isScalar()) {
        Member member = setting.members[0];
        member.summary = setting.summary;
        schema.update(ofMember(member));
    } else {
        schema.update(ofRecord(setting.members));
    }
    const auto description = schema["description"].get<std::string>();
    schema["description"] = fmt::format("{} Since qvs {}.", description, setting.since);
    return schema;
}

Json mapOf(const char *description, const char *of) {
    return {{"description", description},
            {"type", {"object", "null"}},
            {"additionalProperties", {{"$ref", fmt::format("#/$defs/{}", of)}}}};
}

void addPart(Json &properties, Scope scope) {
    for (const Setting *setting : settings())
        if (setting->scope == scope) properties[setting->name] = ofSetting(*setting);
    properties[kProperties] = mapOf("Stored properties that are no setting, by key.", "property");
}

template <typename Entry>
void addIdentity(Json &properties, std::span<const IdentityMember<Entry>> members) {
    for (const IdentityMember<Entry> &each : members)
        properties[each.member.name] = ofMember(each.member);
}

// A mapping that may be left empty.
Json entry(const char *description, Json properties) {
    Json schema = {{"description", description}};
    schema.update(closed(std::move(properties)));
    schema["type"] = {"object", "null"};
    return schema;
}

Json portSchema() {
    Json properties = Json::object();
    addIdentity(properties, portMembers());
    addPart(properties, Scope::Port);
    return entry("A port.", std::move(properties));
}

Json hostSchema() {
    Json properties = Json::object();
    addPart(properties, Scope::Host);
    return entry("This host's part of a switch.", std::move(properties));
}

Json switchSchema() {
    Json properties = Json::object();
    addIdentity(properties, switchMembers());
    properties[kUplinks] = {{"description", "The uplinks, in their order."},
                            {"type", "array"},
                            {"items", {{"anyOf", {ofMember(kShortUplinkMember), ofMember(kUplinkMember)}}}}};
    addPart(properties, Scope::Global);
    properties[kHost] = {{"$ref", "#/$defs/host"}};
    properties[kPorts] = mapOf("The ports, by identifier.", "port");
    return entry("A switch.", std::move(properties));
}

}  // namespace

std::string schemaText() {
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "Configuration of the distributed virtual switches of a host"}};
    schema.update(closed({{kSwitches, mapOf("The switches, by alias.", "switch")}}));
    schema["required"] = {kSwitches};
    schema["$defs"] = {
        {"switch", switchSchema()},
        {"host", hostSchema()},
        {"port", portSchema()},
        {"property", {{"anyOf", {ofMember(kShortPropertyMember), ofMember(kPropertyMember)}}}},
    };
    return schema.dump(2) + '\n';
}

}  // namespace qvs::config
