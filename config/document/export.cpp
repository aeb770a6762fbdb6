// SPDX-License-Identifier: Apache-2.0
#include "config/document/export.h"

#include <fmt/format.h>
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <unordered_set>

#include "config/document/places.h"
#include "config/document/uplinks.h"
#include "config/library/snapshot.h"
#include "config/settings/codec.h"

namespace qvs::config {
namespace {

// What a walk over a place finds of one setting.
struct Found {
    const Setting *setting = nullptr;
    StoredView stored;
    std::vector<Property> properties;
    bool usual = true;  // the class bits are those of libqvs
};

RawProperty rawOf(const Property &property) {
    return {std::string(property.key), property.classes, {property.value.begin(), property.value.end()}};
}

class Exporter {
  public:
    Exporter(const ExportOptions &options, std::vector<std::string> &warnings)
        : options_(options), warnings_(warnings) {}

    SwitchEntry exportSwitch(DVSSwitch *sw, std::string alias);

  private:
    // Makes the part of a place. `identity` takes the properties that are members of the entry and answers
    // whether it did.
    template <typename Identity>
    Part partOf(const Target &target, Identity identity);
    void addSettings(Part &part, std::vector<Found> &found, const Target &target);
    void addDefaults(Part &part, const std::vector<Found> &found, const Target &target);
    PortEntry exportPort(DVSPort *port, const std::string &alias, const UplinkEntry *uplink);

    const ExportOptions &options_;
    std::vector<std::string> &warnings_;
};

template <typename Identity>
Part Exporter::partOf(const Target &target, Identity identity) {
    Part part;
    std::vector<Found> found;
    forEachProperty(target.place, [&](const Property &property) {
        if ((property.classes & kKeptClasses) == 0) return true;
        if (property.classes == DVS_PROP_CONFIG && identity(property)) return true;
        const Setting *setting = settingOfKey(target.place.scope, property.key);
        if (setting == nullptr) {
            part.properties.push_back(rawOf(property));
            return true;
        }
        auto at = std::ranges::find_if(found, [&](const Found &each) { return each.setting == setting; });
        if (at == found.end()) at = found.insert(found.end(), {setting, {}, {}});
        at->stored[property.key == setting->keys[0] ? 0 : 1] = property.value;
        at->usual = at->usual && property.classes == classOfKey(target.place.scope, property.key);
        at->properties.push_back(property);
        return true;
    });
    addSettings(part, found, target);
    if (options_.withDefaults) addDefaults(part, found, target);
    sortPart(part);
    return part;
}

void Exporter::addSettings(Part &part, std::vector<Found> &found, const Target &target) {
    for (const Found &each : found) {
        std::optional<Value> value =
            each.usual ? expressed(*each.setting, each.stored, target) : std::nullopt;
        if (value) {
            part.settings.push_back({each.setting, completed(*each.setting, *value)});
            continue;
        }
        for (const Property &property : each.properties) {
            part.properties.push_back(rawOf(property));
            warnings_.push_back(
                fmt::format("{}: the members of {} cannot express the bytes of {}, which stay "
                            "a property",
                            target.named(), each.setting->name, inQuotes(property.key)));
        }
    }
}

void Exporter::addDefaults(Part &part, const std::vector<Found> &found, const Target &target) {
    for (const Setting *setting : settings()) {
        if (setting->scope != target.place.scope) continue;
        if (std::ranges::any_of(found, [&](const Found &each) { return each.setting == setting; })) continue;
        if (std::optional<Value> value = setting->read(target))
            part.settings.push_back({setting, completed(*setting, *value)});
    }
}

PortEntry Exporter::exportPort(DVSPort *port, const std::string &alias, const UplinkEntry *uplink) {
    PortEntry entry;
    entry.id = DVS_PortId(port);
    const std::string &portAlias = uplink != nullptr ? uplink->name : entry.id;
    Target target{.alias = alias, .port = entry.id, .place = placeOf(port)};
    entry.part = partOf(target, [&](const Property &property) {
        if (property.key == QVS_KEY_PORT_ALIAS) return textOf(property.value) == portAlias;
        if (property.key == QVS_KEY_PORT_CONNECT_ID) {
            // Uplinks are created with their own; nothing changes it.
            if (uplink == nullptr) entry.connectId = property.number();
            return property.number().has_value();
        }
        if (property.key == QVS_KEY_PORT_BLOCK) {
            const std::optional<Value> blocked = decodeTrueFalse({property.value});
            if (blocked && (uplink == nullptr || blocked->on())) entry.blocked = blocked->on();
            return blocked.has_value();
        }
        if (property.key == QVS_KEY_PORT_EXTERNAL_ID) {
            entry.externalId = textOf(property.value);
            return entry.externalId.has_value();
        }
        return false;
    });
    return entry;
}

SwitchEntry Exporter::exportSwitch(DVSSwitch *sw, std::string alias) {
    SwitchEntry entry;
    entry.alias = std::move(alias);
    entry.id = std::string(boundedText(DVS_SwitchId(sw), sizeof(SwitchIdString)));
    entry.version = DVS_Version(sw);
    entry.opaque = false;
    entry.maxPorts = DVS_GetMaxPorts(sw);
    entry.uplinks = uplinksOf(sw);
    if (!entry.uplinks)
        warnings_.push_back(named(entry.alias) +
                            ": the lists of uplinks do not agree with the ports, and stay "
                            "properties; 'qvs switch repair' mends them");

    Target target{.alias = entry.alias, .port = {}, .place = {Scope::Global, sw}};
    entry.global = partOf(target, [&](const Property &property) {
        if (property.key == QVS_KEY_ALIAS) return textOf(property.value) == entry.alias;
        if (property.key == QVS_KEY_VERSION) return property.number() == entry.version;
        if (property.key == QVS_KEY_UPLINK_NAMES) return entry.uplinks.has_value();
        if (property.key != QVS_KEY_OPAQUE) return false;
        const std::optional<Value> opaque = decodeTrueFalse({property.value});
        if (opaque) entry.opaque = opaque->on();
        return opaque.has_value();
    });
    target.place.scope = Scope::Host;
    entry.host = partOf(target, [&](const Property &property) {
        if (property.key == QVS_KEY_UPLINK_PORTS) return entry.uplinks.has_value();
        if (property.key != QVS_KEY_HOST_PORTSET) return false;
        entry.portset = textOf(property.value);
        return entry.portset.has_value();
    });

    forEachPort(sw, [&](DVSPort *port) {
        const UplinkEntry *uplink = nullptr;
        if (entry.uplinks)
            for (const UplinkEntry &each : *entry.uplinks)
                if (each.port == DVS_PortId(port)) uplink = &each;
        PortEntry made = exportPort(port, entry.alias, uplink);
        if (uplink == nullptr || made.blocked || made.externalId || made.part != Part())
            entry.ports.push_back(std::move(made));
        return true;
    });
    std::ranges::sort(entry.ports, {}, &PortEntry::id);
    return entry;
}

}  // namespace

Document exportDocument(std::span<const std::string> aliases, const ExportOptions &options,
                        std::vector<std::string> &warnings) {
    Exporter exporter(options, warnings);
    Document document;
    std::unordered_set<std::string> seen;
    for (const std::string &alias : aliases)
        if (seen.insert(alias).second)
            document.switches.push_back(exporter.exportSwitch(findVswitch(alias), alias));
    if (!aliases.empty()) {
        std::ranges::sort(document.switches, {}, &SwitchEntry::alias);
        return document;
    }
    forEachSwitch([&](DVSSwitch *sw) {
        if (std::string_view(DVS_ClassName(sw)) != "vswitch") return true;
        const auto alias = findText({Scope::Global, sw}, QVS_KEY_ALIAS);
        const auto id = boundedText(DVS_SwitchId(sw), sizeof(SwitchIdString));
        if (!alias || alias->empty()) {
            warnings.push_back(
                fmt::format("the switch with the identifier {} has no alias and is left out", inQuotes(id)));
        } else if (!seen.insert(std::string(*alias)).second) {
            warnings.push_back(
                fmt::format("{}: another switch has the same alias; the one with the identifier "
                            "{} is left out",
                            named(*alias), inQuotes(id)));
        } else {
            document.switches.push_back(exporter.exportSwitch(sw, std::string(*alias)));
        }
        return true;
    });
    std::ranges::sort(document.switches, {}, &SwitchEntry::alias);
    return document;
}

}  // namespace qvs::config
