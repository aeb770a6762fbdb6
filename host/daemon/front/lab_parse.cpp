// SPDX-License-Identifier: Apache-2.0
// Reading the lab JSON; every unknown member and every wrong type is named.
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

bool linkState(const Members &members, const std::string &text) {
    if (text != "up" && text != "down") members.fail("link", "is neither \"up\" nor \"down\"");
    return text == "up";
}

Lab::NicPart parseNic(Members members) {
    Lab::NicPart nic;
    nic.name = nameOf(members, "name", kMaxNicName);
    if (const auto link = members.maybeText("link")) nic.link = linkState(members, *link);
    nic.speedMbps = members.maybeNumber("speedMbps");
    nic.mtu = members.maybeNumber("mtu");
    if (nic.mtu && (*nic.mtu < kMinMtu || *nic.mtu > kMaxMtu))
        members.fail("mtu", fmt::format("is not a number from {} to {}", kMinMtu, kMaxMtu));
    nic.mac = members.maybeMac("mac");
    members.finish();
    return nic;
}

Lab::Client parseClient(Members members) {
    Lab::Client client;
    client.sw = members.text("switch");
    client.port = members.text("port");
    client.name = members.text("name");
    if (const auto link = members.maybeText("link")) client.link = linkState(members, *link);
    members.finish();
    return client;
}

Lab::PropertyPart parseProperty(Members members) {
    Lab::PropertyPart property;
    const std::string scope = members.text("scope");
    if (scope == "host") {
        property.scope = Scope::Host;
    } else if (scope == "port") {
        property.scope = Scope::Port;
    } else if (scope != "global") {
        members.fail("scope", "is none of \"global\", \"host\" and \"port\"");
    }
    if (property.scope == Scope::Port) property.port = members.text("port");
    property.key = members.text("key");
    const auto text = members.maybeText("text");
    const auto hex = members.maybeText("hex");
    if (text.has_value() == hex.has_value())
        members.fail("key", "has to come with either \"text\" or \"hex\"");
    if (text) property.value = *text;
    if (hex) property.value = members.bytes("hex", *hex);
    property.type = members.maybeNumber("type").value_or(kConfig);
    members.finish();
    return property;
}

Lab::SwitchPart parseSwitch(Members members) {
    Lab::SwitchPart sw;
    sw.alias = nameOf(members, "alias", kMaxPortsetName);
    if (members.has("id")) sw.id = nameOf(members, "id", kMaxSwitchId);
    sw.className = members.maybeText("class");
    sw.portset = members.maybeText("portset");
    sw.version = members.maybeNumber("version");
    sw.maxPorts = members.maybeNumber("maxPorts");
    if (sw.maxPorts == 0u) members.fail("maxPorts", "is not a number from 1 to 4294967295");
    sw.uplinks = members.texts("uplinks");
    sw.ports = members.texts("ports");
    members.each("properties",
                 [&](Members part) { sw.properties.push_back(parseProperty(std::move(part))); });
    members.finish();
    return sw;
}

}  // namespace

Lab parseLab(const json &value) try {
    Lab lab;
    Members members(value, "lab");
    if (members.has("pnics")) lab.nics.emplace();
    members.each("pnics", [&](Members part) { lab.nics->push_back(parseNic(std::move(part))); });
    members.each("switches", [&](Members part) { lab.switches.push_back(parseSwitch(std::move(part))); });
    members.each("clients", [&](Members part) { lab.clients.push_back(parseClient(std::move(part))); });
    lab.seed = members.maybeNumber("seed");
    for (const Device &device : devices()) {
        for (const DevicePart *part : device.parts) {
            for (const LabMember &member : part->lab) {
                if (const json *given = members.any(member.name))
                    lab.deviceMembers.emplace_back(&member, *given);
            }
        }
    }
    members.finish();
    return lab;
} catch (const JsonError &error) {
    throw LabError(error.what());
}

}  // namespace qvs::kernel
