// SPDX-License-Identifier: Apache-2.0
#include "config/document/uplinks.h"

#include <qvs/keys.h>

#include <algorithm>
#include <string_view>

#include "config/library/uplink_list.h"

namespace qvs::config {
namespace {

// The texts of a list. Nothing when it is not whole, or when one of them is empty or fills its entry.
template <typename Entry>
std::optional<std::vector<std::string_view>> textsOf(const Property &property) {
    const UplinkList<Entry> list(property.value);
    if (property.classes != DVS_PROP_CONFIG || !list.wellFormed()) return std::nullopt;
    std::vector<std::string_view> texts;
    for (size_t i = 0; i < list.size(); i++) {
        texts.push_back(list[i]);
        if (texts.back().empty() || texts.back().size() == sizeof(Entry)) return std::nullopt;
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
    const auto names = textsOf<VSDVS_UplinkName>(*nameList);
    const auto ports = textsOf<VSDVS_UplinkPort>(*portList);
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
