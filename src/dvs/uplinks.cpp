// SPDX-License-Identifier: Apache-2.0
// The uplinks of a switch: the list of their names, the list of the ports that carry them on this host, and
// the ports.
#include <cstdio>
#include <cstring>

#include "core/heap.h"
#include "core/identity.h"
#include "dvs/new_port.h"
#include "dvs/property.h"
#include "dvs/uplink_list.h"
#include "qvs/vsdvs.h"
#include "qvs/vshyp.h"

namespace qvs {
namespace {

constexpr uint32_t kConnectId = 1;

constexpr Property kNames = propertyOf(QVS_KEY_UPLINK_NAMES);
constexpr Property kPorts = propertyOf(QVS_KEY_UPLINK_PORTS);
constexpr Property kPortAlias = propertyOf(QVS_KEY_PORT_ALIAS);

// Both stored lists, checked against each other.
struct StoredLists {
    MeshValue names;
    MeshValue ports;
    bool resolved = false;  // the kernel knows the alias
    bool absent = false;    // one of the two lists is not stored
};

// A host entry as a NUL-terminated port identifier.
struct PortId {
    char text[sizeof(VSDVS_UplinkPort) + 1];
    PortId(UplinkPorts &ports, uint32_t index) { copyText(text, ports.text(index)); }
};

template <typename List>
HYP_ReturnStatus readList(const Place &place, const Property &property, MeshValue &value, bool &absent) {
    const HYP_ReturnStatus status = getProperty(place, property, value);
    if (status == HYP_NOT_FOUND) absent = true;
    if (status != HYP_OK) return status;
    return List::wellFormed(value) ? HYP_OK : HYP_FAILURE;
}

// Returns whether an uplink name equals the alias of a port, that is, whether the value is exactly the name
// and a NUL.
bool isAlias(std::string_view name, const MeshValue &alias) {
    return alias.length() == name.size() + 1 && std::memcmp(alias.data(), name.data(), name.size()) == 0 &&
           alias.data()[name.size()] == 0;
}

bool findName(UplinkNames names, const MeshValue &alias, uint32_t &index) {
    for (index = 0; index < names.count(); ++index) {
        if (isAlias(names.text(index), alias)) return true;
    }
    return false;
}

bool findPort(UplinkPorts ports, const char *portId, uint32_t &index) {
    for (index = 0; index < ports.count(); ++index) {
        if (std::strncmp(ports.entry(index).portId, portId, sizeof(VSDVS_UplinkPort)) == 0) return true;
    }
    return false;
}

// Sorts the names in the order of the ports, by the aliases of the ports. If memory runs out, both lists are
// released; this counts as success.
HYP_ReturnStatus sortNames(const char *switchId, StoredLists &lists) {
    UplinkNames names(lists.names.data());
    UplinkPorts ports(lists.ports.data());
    const HeapBytes scratch = allocateZeroed(names.size());
    if (scratch == nullptr) {
        lists.names.reset();
        lists.ports.reset();
        return HYP_OK;
    }
    UplinkNames sorted(scratch.get());
    for (uint32_t i = 0; i < ports.count(); ++i) {
        const PortId port(ports, i);
        MeshValue alias;
        const HYP_ReturnStatus status =
            getProperty(Place::ofSwitchId(switchId, port.text), kPortAlias, alias);
        if (status != HYP_OK) return status;
        uint32_t match = 0;
        if (!findName(names, alias, match)) return HYP_FAILURE;
        sorted.entry(i) = names.entry(match);
    }
    sorted.setCount(names.count());
    std::memcpy(lists.names.data(), scratch.get(), names.size());
    return HYP_OK;
}

// Reads and sorts both lists. The kernel resolves the alias, not the snapshot.
HYP_ReturnStatus readLists(const char *alias, StoredLists &lists) {
    SwitchId id;
    HYP_ReturnStatus status = VSHYP_DVSAliasToSwitchId(alias, id.text);
    lists.resolved = status == HYP_OK;
    if (status != HYP_OK) return status;
    id.text[sizeof id.text - 1] = '\0';

    const Place place = Place::ofSwitchId(id.text);
    status = readList<UplinkNames>(place, kNames, lists.names, lists.absent);
    if (status == HYP_OK) status = readList<UplinkPorts>(place, kPorts, lists.ports, lists.absent);
    if (status != HYP_OK) return status;
    if (UplinkNames(lists.names.data()).count() != UplinkPorts(lists.ports.data()).count())
        return HYP_FAILURE;
    return sortNames(id.text, lists);
}

void removePorts(const char *switchId, UplinkPorts ports, uint32_t count) {
    while (count-- > 0) {
        const PortId port(ports, count);
        static_cast<void>(removePort(Place::ofSwitchId(switchId, port.text)));
    }
}

HYP_ReturnStatus createPorts(const char *switchId, UplinkPorts ports, uint32_t &created) {
    for (created = 0; created < ports.count(); ++created) {
        const PortId port(ports, created);
        const HYP_ReturnStatus status =
            addPort(Place::ofSwitchId(switchId, port.text), kConnectId, PortKind::Uplink);
        if (status != HYP_OK) return status;
    }
    return HYP_OK;
}

template <typename List>
HYP_ReturnStatus storeList(const Place &place, const Property &property, const List &list) {
    return setProperty(place, property, list.data(), list.size());
}

// Stores both lists and creates the ports. Undoes all steps if one fails.
HYP_ReturnStatus setLists(const Place &place, UplinkNames names, UplinkPorts ports) {
    uint32_t created = 0;
    HYP_ReturnStatus status = createPorts(place.switchId(), ports, created);
    if (status == HYP_OK) status = storeList(place, kNames, names);
    if (status == HYP_OK) {
        status = storeList(place, kPorts, ports);
        if (status != HYP_OK) static_cast<void>(clearProperty(place, kNames));
    }
    if (status != HYP_OK) removePorts(place.switchId(), ports, created);
    return status;
}

// Copies of both lists with one more uplink.
struct LongerLists {
    HeapBytes names;
    HeapBytes ports;

    HYP_ReturnStatus build(const StoredLists &old, const char *name) {
        const uint32_t count = old.absent ? 0 : old.ports.at<QVS_ListHead>().count;
        names = allocateZeroed(UplinkNames::sizeFor(uint64_t{count} + 1));
        ports = allocateZeroed(UplinkPorts::sizeFor(uint64_t{count} + 1));
        if (names == nullptr || ports == nullptr) return HYP_NO_MEMORY;
        if (!old.absent) {
            std::memcpy(names.get(), old.names.data(), old.names.length());
            std::memcpy(ports.get(), old.ports.data(), old.ports.length());
        }
        UplinkNames newNames(names.get());
        UplinkPorts newPorts(ports.get());
        newNames.setCount(count + 1);
        newPorts.setCount(count + 1);
        copyText(newNames.entry(count).name, name);
        copyText(newPorts.entry(count).portId, name);
        return HYP_OK;
    }
};

// Stores the extended lists. If a step fails, restores the old ones.
HYP_ReturnStatus storeLonger(const Place &place, const StoredLists &old, LongerLists &longer) {
    HYP_ReturnStatus status = storeList(place, kNames, UplinkNames(longer.names.get()));
    if (status != HYP_OK) return status;
    status = storeList(place, kPorts, UplinkPorts(longer.ports.get()));
    if (status == HYP_OK) return HYP_OK;
    if (old.names.data() != nullptr) {
        static_cast<void>(setProperty(place, kNames, old.names.data(), old.names.length()));
    } else {
        static_cast<void>(clearProperty(place, kNames));
    }
    return status;
}

template <typename List>
HYP_ReturnStatus storeShorter(const Place &place, const Property &property, const List &list) {
    return list.count() != 0 ? storeList(place, property, list) : clearProperty(place, property);
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetSwitchUplinkPorts(const char *alias, void **globalList,
                                                       void **hostList) {
    StoredLists lists;
    const HYP_ReturnStatus status = readLists(alias, lists);
    if (!lists.resolved) return status;
    if (globalList != nullptr) *globalList = nullptr;
    if (hostList != nullptr) *hostList = nullptr;
    if (status != HYP_OK) return status;
    if (globalList == nullptr || hostList == nullptr) return HYP_BAD_PARAM;
    *globalList = lists.names.release();
    *hostList = lists.ports.release();
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetSwitchUplinkPorts(const char *alias, const void *globalList,
                                                       const void *hostList) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (globalList == nullptr || hostList == nullptr) return HYP_BAD_PARAM;

    // The views are only used for reading here.
    const UplinkNames names(const_cast<void *>(globalList));
    const UplinkPorts ports(const_cast<void *>(hostList));
    if (UplinkNames::sizeFor(names.count()) > UINT32_MAX ||
        UplinkPorts::sizeFor(ports.count()) > UINT32_MAX) {
        return HYP_BAD_PARAM;
    }
    return setLists(place, names, ports);
}

extern "C" HYP_ReturnStatus SetNumSwitchUplinkPortsByUUID(const char *switchId, uint32_t count) {
    if (switchId == nullptr) return HYP_BAD_PARAM;
    const HeapBytes nameBytes = allocateZeroed(UplinkNames::sizeFor(count));
    const HeapBytes portBytes = allocateZeroed(UplinkPorts::sizeFor(count));
    if (nameBytes == nullptr || portBytes == nullptr) return HYP_NO_MEMORY;

    UplinkNames names(nameBytes.get());
    UplinkPorts ports(portBytes.get());
    names.setCount(count);
    ports.setCount(count);
    for (uint32_t i = 0; i < count; ++i) {
        char name[32];
        snprintf(name, sizeof name, "uplink%u", i);
        copyText(names.entry(i).name, name);
        copyText(ports.entry(i).portId, name);
    }
    return setLists(Place::ofSwitchId(switchId), names, ports);
}

extern "C" HYP_ReturnStatus VSDVS_AddSwitchUplinkPort(const char *alias, const char *uplinkName) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (uplinkName == nullptr) return HYP_BAD_PARAM;

    StoredLists old;
    HYP_ReturnStatus status = readLists(alias, old);
    if (status != HYP_OK && !old.absent) return status;
    if (!old.absent) {
        if (old.ports.data() == nullptr) return HYP_NO_MEMORY;  // sorting ran out of memory
        uint32_t taken = 0;
        if (findPort(UplinkPorts(old.ports.data()), uplinkName, taken)) return HYP_EXISTS;
    }

    LongerLists longer;
    if (status = longer.build(old, uplinkName); status != HYP_OK) return status;
    // The identifier of the port is the whole name, even if the lists truncate it.
    const Place port = Place::ofSwitchId(place.switchId(), uplinkName);
    if (status = addPort(port, kConnectId, PortKind::Uplink); status != HYP_OK) return status;
    status = storeLonger(place, old, longer);
    if (status != HYP_OK) static_cast<void>(removePort(port));
    return status;
}

extern "C" HYP_ReturnStatus VSDVS_RemoveSwitchUplinkPort(const char *alias, const char *portId) {
    const Place port = Place::ofAlias(alias, portId);
    if (port.status() != HYP_OK) return port.status();
    StoredLists lists;
    HYP_ReturnStatus status = readLists(alias, lists);
    if (status != HYP_OK) return status;
    if (lists.names.data() == nullptr) return HYP_NO_MEMORY;  // sorting ran out of memory

    MeshValue portAlias;
    if (status = getProperty(port, kPortAlias, portAlias); status != HYP_OK) return status;

    // An uplink that the lists do not contain is already removed.
    UplinkNames names(lists.names.data());
    UplinkPorts ports(lists.ports.data());
    uint32_t nameIndex = 0;
    uint32_t portIndex = 0;
    if (!findName(names, portAlias, nameIndex) || !findPort(ports, portId, portIndex)) return HYP_OK;
    names.erase(nameIndex);
    ports.erase(portIndex);

    status = removePort(port);
    if (status == HYP_OK) status = storeShorter(port, kNames, names);
    if (status == HYP_OK) status = storeShorter(port, kPorts, ports);
    return status;
}

extern "C" HYP_ReturnStatus VSDVS_ClearSwitchUplinkPorts(const char *alias) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    // The results of both clears are ignored. The ports remain.
    static_cast<void>(clearProperty(place, kPorts));
    static_cast<void>(clearProperty(place, kNames));
    return HYP_OK;
}
