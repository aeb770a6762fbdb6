// SPDX-License-Identifier: Apache-2.0
// Reads the JSON of a lab.
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/json_members.h"
#include "daemon/front/lab.h"

namespace qvs::kernel {

namespace {

using nlohmann::json;

std::string nameOf(Members &members, const char *member, size_t most) {
    std::string name = members.text(member);
    if (name.empty() || name.size() > most) {
        members.fail(member, fmt::format("is not a name of 1 to {} characters", most));
    }
    return name;
}

std::optional<bool> linkState(Members &members) {
    constexpr const char *kStates[] = {"down", "up"};
    const auto state = members.maybeChoice("link", kStates);
    return state ? std::optional(*state == 1) : std::nullopt;
}

std::optional<Attachment> attachmentOf(Members &members) {
    const auto given = members.maybeText("attach");
    if (!given) return std::nullopt;
    auto attachment = parseAttachment(*given);
    if (!attachment)
        members.fail("attach", "is not an attachment, such as namespace or stream:FILE: " + *given);
    return attachment;
}

Lab::NicPart parseNic(Members &members) {
    Lab::NicPart nic;
    nic.name = nameOf(members, "name", kMaxNicName);
    nic.link = linkState(members);
    nic.speedMbps = members.maybeNumber("speedMbps");
    nic.mtu = members.maybeNumber("mtu", kMinMtu, kMaxMtu);
    nic.mac = members.maybeMac("mac");
    nic.attachment = attachmentOf(members);
    return nic;
}

Lab::Client parseClient(Members &members) {
    Lab::Client client;
    client.sw = members.text("switch");
    client.port = members.text("port");
    client.name = members.text("name");
    client.link = linkState(members).value_or(true);
    client.mac = members.maybeMac("mac");
    client.attachment = attachmentOf(members);
    if (client.attachment && client.name.empty()) members.fail("attach", "needs the name of a client");
    return client;
}

Lab::PropertyPart parseProperty(Members &members) {
    Lab::PropertyPart property;
    constexpr const char *kScopes[] = {"global", "host", "port"};  // in the order of Scope
    const auto scope = members.maybeChoice("scope", kScopes);
    if (!scope) members.fail("scope", "is missing");
    property.scope = static_cast<Scope>(*scope);
    if (property.scope == Scope::Port) property.port = members.text("port");
    property.key = members.text("key");
    const auto text = members.maybeText("text");
    const auto hex = members.maybeBytes("hex");
    if (text.has_value() == hex.has_value()) members.fail("key", "needs either \"text\" or \"hex\"");
    property.value = text ? *text : *hex;
    property.type = members.maybeNumber("type").value_or(kConfig);
    return property;
}

Lab::SwitchPart parseSwitch(Members &members) {
    Lab::SwitchPart sw;
    sw.alias = nameOf(members, "alias", kMaxPortsetName);
    if (members.has("id")) sw.id = nameOf(members, "id", kMaxSwitchId);
    sw.className = members.maybeText("class");
    sw.portset = members.maybeText("portset");
    sw.version = members.maybeNumber("version");
    sw.maxPorts = members.maybeNumber("maxPorts", 1);
    sw.uplinks = members.texts("uplinks");
    sw.ports = members.texts("ports");
    members.each("properties", [&](Members &part) { sw.properties.push_back(parseProperty(part)); });
    return sw;
}

}  // namespace

Lab parseLab(const json &value) try {
    Lab lab;
    Members members(value, "lab");
    if (members.has("pnics")) lab.nics.emplace();
    members.each("pnics", [&](Members &part) { lab.nics->push_back(parseNic(part)); });
    members.each("switches", [&](Members &part) { lab.switches.push_back(parseSwitch(part)); });
    members.each("clients", [&](Members &part) { lab.clients.push_back(parseClient(part)); });
    lab.network = members.maybeFlag("network");
    lab.seed = members.maybeNumber("seed");
    for (const DevicePart *part : deviceParts()) {
        for (const LabMember &member : part->lab) {
            if (const json *given = members.any(member.name)) lab.devices[member.name] = *given;
        }
    }
    members.finish();
    return lab;
} catch (const JsonError &error) {
    throw LabError(error.what());
}

}  // namespace qvs::kernel
