// SPDX-License-Identifier: Apache-2.0
// Lines of JSON. Names are escaped as they are shown, values are base64.
#include "config/apply/journal_text.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <stdexcept>

#include "base/failure.h"
#include "base/text.h"
#include "config/library/hash.h"

namespace qvs::config {
namespace {

using Json = nlohmann::ordered_json;

constexpr uint32_t kVersion = 1;
constexpr const char *kVersionMember = "qvsJournal";
constexpr const char *kSumMember = "sum";

std::string sumOf(std::string_view text) {
    return fmt::format("{:016x}", hashOf(text));
}

// --- out ---

Json jsonOf(const PartBefore &part) {
    Json properties = Json::array();
    for (const PropertyBefore &property : part.properties) {
        Json entry = {{"key", shown(property.key)}};
        if (property.value) {
            entry["class"] = property.classes;
            entry["value"] = base64(*property.value);
        }
        properties.push_back(std::move(entry));
    }
    return {{"whole", part.whole}, {"properties", std::move(properties)}};
}

Json jsonOf(const SwitchBefore &sw) {
    Json entry = {{"switch", shown(sw.id)},      {"alias", shown(sw.alias)}, {"portset", shown(sw.portset)},
                  {"there", sw.there},           {"whole", sw.whole},        {"opaque", sw.opaque},
                  {"version", sw.version},       {"maxPorts", sw.maxPorts},  {"setsMtu", sw.setsMtu},
                  {"global", jsonOf(sw.global)}, {"host", jsonOf(sw.host)}};
    if (sw.mtu) entry["mtu"] = *sw.mtu;
    return entry;
}

// --- in ---

std::string nameIn(const Json &entry, const char *member) {
    const std::optional<std::string> name = parseShown(entry.at(member).get<std::string>());
    if (!name) throw std::invalid_argument("a name is malformed");
    return *name;
}

PartBefore partIn(const Json &json) {
    PartBefore part;
    part.whole = json.at("whole").get<bool>();
    for (const Json &entry : json.at("properties")) {
        PropertyBefore property{nameIn(entry, "key"), 0, std::nullopt};
        if (entry.contains("value")) {
            property.classes = entry.at("class").get<uint32_t>();
            property.value = parseBase64(entry.at("value").get<std::string>());
            if (!property.value) throw std::invalid_argument("a value is no base64");
        }
        part.properties.push_back(std::move(property));
    }
    return part;
}

SwitchBefore switchIn(const Json &entry) {
    SwitchBefore sw;
    sw.id = nameIn(entry, "switch");
    sw.alias = nameIn(entry, "alias");
    sw.portset = nameIn(entry, "portset");
    sw.there = entry.at("there").get<bool>();
    sw.whole = entry.at("whole").get<bool>();
    sw.opaque = entry.at("opaque").get<bool>();
    sw.version = entry.at("version").get<uint32_t>();
    sw.maxPorts = entry.at("maxPorts").get<uint32_t>();
    sw.setsMtu = entry.at("setsMtu").get<bool>();
    if (entry.contains("mtu")) sw.mtu = entry.at("mtu").get<uint32_t>();
    sw.global = partIn(entry.at("global"));
    sw.host = partIn(entry.at("host"));
    return sw;
}

void readHead(Journal &journal, const Json &head) {
    const uint64_t version = head.at(kVersionMember).get<uint64_t>();
    if (version > kVersion)
        fail(Exit::Failed, "it is of version {}, and this program knows {}; use the newer program", version,
             kVersion);
    journal.bootId = head.at("bootId").get<std::string>();
    journal.deadline = head.at("deadline").get<uint64_t>();
}

void readEntry(Journal &journal, const Json &entry) {
    std::vector<SwitchBefore> &switches = journal.before.switches;
    if (entry.contains("switch")) {
        switches.push_back(switchIn(entry));
    } else {
        if (switches.empty()) throw std::invalid_argument("a port has no switch");
        PortBefore port{nameIn(entry, "port"), entry.at("there").get<bool>(), partIn(entry)};
        switches.back().ports.push_back(std::move(port));
    }
}

// The lines before the one with the checksum.
std::string_view checked(std::string_view text) {
    const size_t end = text.empty() ? text.npos : text.find_last_of('\n', text.size() - 2);
    if (end == text.npos || text.back() != '\n') throw std::invalid_argument("its end is missing");
    const std::string_view body = text.substr(0, end + 1);
    const Json last = Json::parse(text.substr(end + 1));
    if (last.at(kSumMember).get<std::string>() != sumOf(body))
        throw std::invalid_argument("its checksum is wrong");
    return body;
}

}  // namespace

std::string textOf(const Journal &journal) {
    std::string text;
    auto line = [&](const Json &entry) { text += entry.dump() + "\n"; };
    line({{kVersionMember, kVersion}, {"bootId", journal.bootId}, {"deadline", journal.deadline}});
    for (const SwitchBefore &sw : journal.before.switches) {
        line(jsonOf(sw));
        for (const PortBefore &port : sw.ports) {
            Json entry = {{"port", shown(port.id)}, {"there", port.there}};
            entry.update(jsonOf(port.part));
            line(entry);
        }
    }
    return text + Json{{kSumMember, sumOf(text)}}.dump() + "\n";
}

Journal parseJournal(std::string_view text) {
    Journal journal;
    try {
        // A newer version may end in another way.
        const std::string_view first = text.substr(0, text.find('\n'));
        readHead(journal, Json::parse(first));
        std::string_view rest = checked(text);
        for (rest.remove_prefix(first.size() + 1); !rest.empty();) {
            const size_t end = rest.find('\n');
            readEntry(journal, Json::parse(rest.substr(0, end)));
            rest.remove_prefix(end + 1);
        }
    } catch (const Json::exception &) {
        fail(Exit::Failed,
             "it is damaged: a line is not what it should be; check the switches and move it away");
    } catch (const std::invalid_argument &error) {
        fail(Exit::Failed, "it is damaged: {}; check the switches and move it away", error.what());
    }
    return journal;
}

}  // namespace qvs::config
