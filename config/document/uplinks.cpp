// SPDX-License-Identifier: Apache-2.0
#include "config/document/uplinks.h"

#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace qvs::config {
namespace {

// The texts of a counted list of fields of one size. Nothing when a field is empty or not a text with zeros
// behind it.
std::optional<std::vector<std::string_view>> textsOf(const Property &list, size_t fieldSize) {
    uint32_t count = 0;
    if (list.classes != DVS_PROP_CONFIG || list.value.size() < sizeof count) return std::nullopt;
    std::memcpy(&count, list.value.data(), sizeof count);
    const Bytes fields = list.value.subspan(sizeof count);
    if (fields.size() != uint64_t{count} * fieldSize) return std::nullopt;
    std::vector<std::string_view> texts;
    for (size_t i = 0; i < count; i++) {
        const Bytes field = fields.subspan(i * fieldSize, fieldSize);
        const std::string_view text = boundedText(field.data(), field.size());
        const Bytes rest = field.subspan(text.size());
        if (text.empty() || rest.empty()) return std::nullopt;
        if (std::ranges::any_of(rest, [](uint8_t byte) { return byte != 0; })) return std::nullopt;
        texts.push_back(text);
    }
    return texts;
}

bool hasDuplicates(std::vector<std::string_view> texts) {
    std::ranges::sort(texts);
    return std::ranges::adjacent_find(texts) != texts.end();
}

}  // namespace

std::optional<std::vector<UplinkEntry>> uplinksOf(DVSSwitch *sw) {
    const std::optional<Property> nameList = findProperty({Scope::Global, sw}, QVS_KEY_UPLINK_NAMES);
    const std::optional<Property> portList = findProperty({Scope::Host, sw}, QVS_KEY_UPLINK_PORTS);
    std::vector<UplinkEntry> uplinks;
    if (!nameList && !portList) return uplinks;
    if (!nameList || !portList) return std::nullopt;
    const auto names = textsOf(*nameList, sizeof(VSDVS_UplinkName));
    const auto ports = textsOf(*portList, sizeof(VSDVS_UplinkPort));
    if (!names || !ports || names->empty() || names->size() != ports->size() || hasDuplicates(*names) ||
        hasDuplicates(*ports))
        return std::nullopt;
    std::vector<std::string_view> found;
    for (const std::string_view port : *ports) {
        DVSPort *handle = lookUpPort(sw, std::string(port));
        if (handle == nullptr) return std::nullopt;
        const auto alias = findText(placeOf(handle), QVS_KEY_PORT_ALIAS);
        if (!alias || std::ranges::find(*names, *alias) == names->end()) return std::nullopt;
        found.push_back(*alias);
        uplinks.push_back({std::string(*alias), std::string(port)});
    }
    if (hasDuplicates(found)) return std::nullopt;
    return uplinks;
}

}  // namespace qvs::config
