// SPDX-License-Identifier: Apache-2.0
#include "access/remains.h"

#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "access/library.h"
#include "base/text.h"
#include "config/library/host.h"
#include "config/library/portset.h"
#include "config/library/snapshot.h"
#include "config/library/uplink_list.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

bool isVswitch(DVSSwitch *sw) {
    return std::strcmp(DVS_ClassName(sw), "vswitch") == 0;
}

std::string idOf(DVSSwitch *sw) {
    return std::string(boundedText(DVS_SwitchId(sw), sizeof(SwitchIdString)));
}

std::optional<std::string_view> aliasOf(DVSSwitch *sw) {
    return findText({Scope::Global, sw}, QVS_KEY_ALIAS);
}

std::optional<std::string_view> portsetNameOf(DVSSwitch *sw) {
    return findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET);
}

// --- the kernel's data paths ---

// Whether the portset belongs neither to a switch in the snapshot nor to one of the same name that only the
// kernel has.
bool isStray(std::string_view portset, const KernelSwitches &kernel) {
    const bool named = kernel.aliases.contains(portset) &&
                       DVSState_SwitchFindByAlias(std::string(portset).c_str()) == nullptr;
    return hasPortset(kernel, portset) && ownerOfPortset(portset) == nullptr && !named;
}

void removePortset(const std::string &portset) {
    if (destroyPortset(portset)) return;
    throw libraryFailure("portset " + inQuotes(portset), HYP_FAILURE, "the kernel's shell did not remove it");
}

// --- uplinks ---

constexpr uint8_t kUplinkVlan[12] = {1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0xfe, 0x0f};

bool holds(const Property &property, const void *bytes, size_t size) {
    return property.value.size() == size && std::memcmp(property.value.data(), bytes, size) == 0;
}

// Whether the port is one that the library created for an uplink, and neither changed nor used since.
bool isNewUplinkPort(DVSPort *port) {
    const std::string id = DVS_PortId(port);
    const uint32_t connectId = 1;
    bool uplink = false;
    bool unchanged = true;
    forEachProperty(placeOf(port), [&](const Property &property) {
        if (property.key == QVS_KEY_PORT_VLAN) {
            uplink = holds(property, kUplinkVlan, sizeof kUplinkVlan);
            unchanged = uplink;
        } else if (property.key == QVS_KEY_PORT_ALIAS) {
            unchanged = holds(property, id.c_str(), id.size() + 1);
        } else if (property.key == QVS_KEY_PORT_CONNECT_ID) {
            unchanged = holds(property, &connectId, sizeof connectId);
        } else if (property.key == QVS_KEY_PORT_BLOCK) {
            unchanged = holds(property, "false", sizeof "false");
        } else {
            unchanged = (property.classes & (DVS_PROP_VOLATILE | DVS_PROP_RUNTIME)) != 0;
        }
        return unchanged;
    });
    return uplink && unchanged && !portStatus(port).inUse;
}

struct StoredList {
    bool there = false;
    bool readable = true;
    std::vector<std::string> entries;
};

template <typename Entry>
StoredList readList(const Place &place, std::string_view key) {
    StoredList list;
    std::optional<Property> stored = findProperty(place, key);
    if (!stored) return list;
    list.there = true;
    const UplinkList<Entry> entries(stored->value);
    list.readable = entries.wellFormed();
    for (size_t i = 0; list.readable && i < entries.size(); i++)
        list.entries.emplace_back(entries[i]);
    return list;
}

// Removes the name that is the alias of the port from the list. Returns false when the list does not have it.
bool takeName(std::vector<std::string> &names, DVSPort *port) {
    std::optional<Property> alias = findProperty(placeOf(port), QVS_KEY_PORT_ALIAS);
    auto it = std::find_if(names.begin(), names.end(), [&](const std::string &name) {
        return alias && holds(*alias, name.c_str(), name.size() + 1);
    });
    if (it == names.end()) return false;
    names.erase(it);
    return true;
}

// Stores one of the two lists of a switch, or removes it when it is empty.
template <auto Set, auto Clear>
HYP_ReturnStatus storeList(const std::string &id, const char *key, const std::vector<Uplink> &uplinks,
                           std::string Uplink::*member, size_t entrySize) {
    std::vector<std::string> names(uplinks.size());
    std::transform(uplinks.begin(), uplinks.end(), names.begin(),
                   [&](const Uplink &uplink) { return uplink.*member; });
    std::vector<uint8_t> list = packList(names, entrySize);
    if (!names.empty())
        return call<Set>(nullptr, key, list.data(), static_cast<uint32_t>(list.size()), id.c_str(), 0);
    HYP_ReturnStatus status = call<Clear>(nullptr, key, id.c_str(), 0);
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

// The lists come first, so that a second run can continue after an interruption.
void mendUplinks(DVSSwitch *sw, const UplinkState &state, const std::string &subject) {
    const std::string id = idOf(sw);
    SignalsHeld held;
    if (!state.broken.empty()) {
        require(storeList<VSDVS_SetGlobProp, VSDVS_ClearGlobProp>(id, QVS_KEY_UPLINK_NAMES, state.whole,
                                                                  &Uplink::name, sizeof(VSDVS_UplinkName)),
                subject);
        require(storeList<VSDVS_SetHostProp, VSDVS_ClearHostProp>(id, QVS_KEY_UPLINK_PORTS, state.whole,
                                                                  &Uplink::port, sizeof(VSDVS_UplinkPort)),
                subject);
    }
    for (const std::string &port : state.strayPorts)
        require(call<DVSHYP_PortRemove>(id.c_str(), port.c_str()), subject);
}

// --- repairing ---

class Repairs {
  public:
    Repairs(Output &out, bool dry)
        : listing_(out, {{"kind", "KIND"},
                         {"switch", "SWITCH"},
                         {"name", "NAME"},
                         {"defect", "DEFECT"},
                         {"action", "ACTION"},
                         {"changed", "CHANGED"}}),
          dry_(dry) {}
    ~Repairs() { listing_.finish(); }
    Repairs(const Repairs &) = delete;
    Repairs &operator=(const Repairs &) = delete;

    void add(const char *kind, std::optional<std::string_view> alias, std::string_view name,
             std::string_view defect, const char *action) {
        listing_.row(std::string_view(kind), alias, name, defect, std::string_view(action), Flag{!dry_});
    }
    bool dry() const { return dry_; }

  private:
    Listing listing_;
    bool dry_;
};

void repairUplinks(Repairs &repairs, DVSSwitch *sw, std::string_view alias) {
    UplinkState state = uplinkState(sw);
    if (!state.readable || (state.broken.empty() && state.strayPorts.empty())) return;
    if (!repairs.dry()) mendUplinks(sw, state, named(alias));
    for (const std::string &defect : state.broken)
        repairs.add("uplinks", alias, alias, defect, "drop the entry");
    for (const std::string &port : state.strayPorts)
        repairs.add("port", alias, port, "made for an uplink, but carries none", "remove");
}

void repairSwitch(Repairs &repairs, DVSSwitch *sw, const KernelSwitches &kernel) {
    if (!isVswitch(sw)) return;
    // This is a copy, because each removal loads the snapshot again.
    const std::optional<std::string> copy(aliasOf(sw));
    const std::optional<std::string_view> alias(copy);
    std::vector<std::string> missing = missingParts(sw, kernel);
    if (missing.empty()) return repairUplinks(repairs, sw, alias.value_or(""));
    const std::string id = idOf(sw);
    if (!repairs.dry()) removeHalfMade(sw, named(alias ? *alias : std::string_view(id)));
    repairs.add("switch", alias, id, fmt::format("{}", fmt::join(missing, ", ")), "remove");
}

void repairPortsets(Repairs &repairs, const KernelSwitches &kernel) {
    for (const std::string &portset : kernel.portsets) {
        if (!isStray(portset, kernel)) continue;
        // The portset was removed with its switch a moment ago.
        std::optional<KernelSwitches> now = askKernelSwitches();
        if (!now || !hasPortset(*now, portset)) continue;
        if (!repairs.dry()) removePortset(portset);
        repairs.add("portset", std::nullopt, portset, "belongs to no switch", "remove");
    }
}

}  // namespace

std::vector<std::string> missingParts(DVSSwitch *sw, const KernelSwitches &kernel) {
    std::vector<std::string> missing;
    if (!isVswitch(sw)) return missing;
    std::optional<std::string_view> alias = aliasOf(sw);
    std::optional<std::string_view> portset = portsetNameOf(sw);
    if (!alias) missing.emplace_back("no alias");
    if (!portset) {
        missing.emplace_back("no portset name");
    } else if (!hasPortset(kernel, *portset)) {
        missing.push_back("no portset " + inQuotes(*portset));
    } else if (alias && !hasAlias(kernel, *alias)) {
        missing.emplace_back("not associated with its portset");
    }
    return missing;
}

UplinkState uplinkState(DVSSwitch *sw) {
    UplinkState state;
    StoredList names = readList<VSDVS_UplinkName>({Scope::Global, sw}, QVS_KEY_UPLINK_NAMES);
    StoredList ports = readList<VSDVS_UplinkPort>({Scope::Host, sw}, QVS_KEY_UPLINK_PORTS);
    state.readable = names.readable && ports.readable;
    state.listed = names.there || ports.there;
    if (!state.readable) return state;
    std::set<std::string_view> listed;
    std::set<std::string_view> withoutPort;
    for (const std::string &entry : ports.entries) {
        DVSPort *port = lookUpPort(sw, entry);
        listed.insert(entry);
        if (port == nullptr) {
            withoutPort.insert(entry);
            state.broken.push_back("uplink " + inQuotes(entry) + " has no port");
        } else if (!takeName(names.entries, port)) {
            state.broken.push_back("port " + inQuotes(entry) + " has no uplink name");
            listed.erase(entry);
        } else {
            state.whole.push_back(
                {std::string(findText(placeOf(port), QVS_KEY_PORT_ALIAS).value_or("")), entry});
        }
    }
    for (const std::string &name : names.entries) {
        if (!withoutPort.contains(name))
            state.broken.push_back("uplink " + inQuotes(name) + " has no entry for its port");
    }
    forEachPort(sw, [&](DVSPort *port) {
        if (!listed.contains(DVS_PortId(port)) && isNewUplinkPort(port))
            state.strayPorts.emplace_back(DVS_PortId(port));
        return true;
    });
    return state;
}

std::vector<std::string> remainsOf(DVSSwitch *sw, const std::optional<KernelSwitches> &kernel) {
    if (!isVswitch(sw)) return {};
    std::vector<std::string> remains;
    if (kernel) remains = missingParts(sw, *kernel);
    UplinkState state = uplinkState(sw);
    remains.insert(remains.end(), state.broken.begin(), state.broken.end());
    for (const std::string &port : state.strayPorts)
        remains.push_back("port " + inQuotes(port) + " was made for an uplink and carries none");
    return remains;
}

std::string mendingHint(const std::string &alias) {
    requireState(loadSnapshot());
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr) return {};
    UplinkState state = uplinkState(sw);
    if (state.broken.empty()) return {};
    return fmt::format("{}; 'qvs switch repair {}' mends that", fmt::join(state.broken, ", "), shown(alias));
}

void removeHalfMade(DVSSwitch *sw, const std::string &subject) {
    const std::string id = idOf(sw);
    // A switch without a portset name uses its alias as the name.
    std::string portset(portsetNameOf(sw).value_or(aliasOf(sw).value_or("")));
    SignalsHeld held;
    HYP_ReturnStatus status = call<DVSHYP_SwitchDissociate>(id.c_str());
    if (status != HYP_NOT_FOUND) require(status, subject);
    require(call<DVSHYP_SwitchRemove>(id.c_str()), subject);
    requireState(loadSnapshot());
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    if (kernel && isStray(portset, *kernel)) removePortset(portset);
}

bool removeNameless(const std::string &name) {
    DVSSwitch *sw = findSwitchById(name);
    if (sw != nullptr && isVswitch(sw) && !aliasOf(sw)) {
        removeHalfMade(sw, named(name));
        return true;
    }
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    if (!kernel || !isStray(name, *kernel)) return false;
    removePortset(name);
    return true;
}

void repair(const Arguments &arguments, Output &out) {
    std::vector<std::string> ids;
    DVSSwitch *only = arguments.given("SWITCH") ? findSwitch(arguments.text("SWITCH")) : nullptr;
    forEachSwitch([&](DVSSwitch *sw) {
        if (only == nullptr || sw == only) ids.push_back(idOf(sw));
        return true;
    });
    std::optional<KernelSwitches> kernel = askKernelSwitches();
    if (!kernel) fail(Exit::Failed, "nothing was repaired");
    Repairs repairs(out, arguments.given("--dry-run"));
    for (const std::string &id : ids) {
        // Each removal loads the snapshot again.
        if (DVSSwitch *sw = findSwitchById(id)) repairSwitch(repairs, sw, *kernel);
    }
    if (only == nullptr) repairPortsets(repairs, *kernel);
}

}  // namespace qvs::cli
