// SPDX-License-Identifier: Apache-2.0
// DVSState_*, DVS_* and the accessors of DVSData_*: the interface of the snapshot.
#include <qvs/mesh_public.h>

#include "state_library/snapshot.h"

using qvs::mesh::Port;
using qvs::mesh::Property;
using qvs::mesh::Range;
using qvs::mesh::Snapshot;
using qvs::mesh::Switch;

namespace {

// Constant-initialised and never destroyed, because other libraries use it in their initialisers.
constinit Snapshot snapshot;

DVSSwitch *handle(const Switch *sw) {
    return reinterpret_cast<DVSSwitch *>(const_cast<Switch *>(sw));
}
DVSPort *handle(const Port *port) {
    return reinterpret_cast<DVSPort *>(const_cast<Port *>(port));
}
DVSData *handle(const Property *property) {
    return reinterpret_cast<DVSData *>(const_cast<Property *>(property));
}

const Property *resolve(uint32_t index) {
    return &snapshot.property(index);
}
template <typename T>
const T *resolve(const T &entry) {
    return &entry;
}

// Calls `callback` for each entry. Stops if it returns a value other than 0 or has replaced the snapshot.
template <typename Entries, typename Handle>
void walk(Entries entries, int (*callback)(Handle *, void *), void *context) {
    const uint64_t generation = snapshot.generation();
    for (const auto &entry : entries) {
        if (callback(handle(resolve(entry)), context) != 0) return;
        if (snapshot.generation() != generation) return;
    }
}

// Calls `callback` for each property in a list of an entry, which is null if the handle is not valid.
template <typename Entry>
void walkList(const Entry *entry, const Range &(Entry::*list)() const, int (*callback)(DVSData *, void *),
              void *context) {
    if (entry != nullptr && callback != nullptr) walk(snapshot.list((entry->*list)()), callback, context);
}

HYP_ReturnStatus lookup(const char *switchId, const char *key, DVSData **data,
                        const Range &(Switch::*list)() const) {
    if (switchId == nullptr || key == nullptr || data == nullptr) return HYP_BAD_PARAM;
    const Switch *sw = snapshot.findSwitch(switchId);
    const Property *found = sw == nullptr ? nullptr : snapshot.findProperty((sw->*list)(), key);
    *data = handle(found);
    return found == nullptr ? HYP_NOT_FOUND : HYP_OK;
}

}  // namespace

HYP_ReturnStatus DVSState_ConfigReset(void) {
    snapshot.reset();
    return HYP_OK;
}

HYP_ReturnStatus DVSState_ConfigDeserialize(const void *buffer, uint32_t length) {
    if (buffer == nullptr) return HYP_BAD_PARAM;
    switch (snapshot.load(buffer, length)) {
        case Snapshot::Result::Loaded:
            return HYP_OK;
        case Snapshot::Result::NoMemory:
            return HYP_NO_MEMORY;
        default:
            return HYP_FAILURE;
    }
}

DVSSwitch *DVSState_SwitchFindByAlias(const char *alias) {
    return alias == nullptr ? nullptr : handle(snapshot.findAlias(alias));
}

void DVSState_SwitchForEach(int (*callback)(DVSSwitch *, void *), void *context) {
    if (callback != nullptr) walk(snapshot.switches(), callback, context);
}

DVSPort *DVSState_PortFind(const char *switchId, const char *portId) {
    if (switchId == nullptr || portId == nullptr) return nullptr;
    const Switch *sw = snapshot.findSwitch(switchId);
    return sw == nullptr ? nullptr : handle(snapshot.findPort(*sw, portId));
}

HYP_ReturnStatus DVSState_HostPropLookup(const char *switchId, const char *key, DVSData **data) {
    return lookup(switchId, key, data, &Switch::hosts);
}

HYP_ReturnStatus DVSState_GlobalPropLookup(const char *switchId, const char *key, DVSData **data) {
    return lookup(switchId, key, data, &Switch::globals);
}

void DVSState_PortForEach(DVSSwitch *sw, int (*callback)(DVSPort *, void *), void *context) {
    const Switch *own = snapshot.ownSwitch(sw);
    if (own != nullptr && callback != nullptr) walk(snapshot.ports(*own), callback, context);
}

void DVSState_PortDataForEach(DVSPort *port, int (*callback)(DVSData *, void *), void *context) {
    walkList(snapshot.ownPort(port), &Port::properties, callback, context);
}

void DVSState_HostPropForEach(DVSSwitch *sw, int (*callback)(DVSData *, void *), void *context) {
    walkList(snapshot.ownSwitch(sw), &Switch::hosts, callback, context);
}

void DVSState_GlobalPropForEach(DVSSwitch *sw, int (*callback)(DVSData *, void *), void *context) {
    walkList(snapshot.ownSwitch(sw), &Switch::globals, callback, context);
}

const char *DVS_SwitchId(const DVSSwitch *sw) {
    const Switch *own = snapshot.ownSwitch(sw);
    return own == nullptr ? nullptr : reinterpret_cast<const char *>(own->id()->data());
}

const char *DVS_ClassName(const DVSSwitch *sw) {
    const Switch *own = snapshot.ownSwitch(sw);
    return own == nullptr ? nullptr : snapshot.text(own->className());
}

uint32_t DVS_GetMaxPorts(const DVSSwitch *sw) {
    const Switch *own = snapshot.ownSwitch(sw);
    return own == nullptr ? 0 : own->maxPorts();
}

uint32_t DVS_Version(const DVSSwitch *sw) {
    const Switch *own = snapshot.ownSwitch(sw);
    return own == nullptr ? 0 : own->version();
}

const char *DVS_PortId(const DVSPort *port) {
    const Port *own = snapshot.ownPort(port);
    return own == nullptr ? nullptr : reinterpret_cast<const char *>(own->id()->data());
}

uint32_t DVS_PortState(const DVSPort *port) {
    const Port *own = snapshot.ownPort(port);
    return own == nullptr ? 0 : own->state();
}

// A container is not a property. Like null, it has an empty value and no name.
uint32_t DVSData_Data(const DVSData *data, const void **value) {
    const Property *own = snapshot.ownProperty(data);
    if (value != nullptr) *value = own == nullptr ? "" : snapshot.text(own->value());
    return own == nullptr ? 0 : own->length();
}

const char *DVSData_Name(const DVSData *data) {
    const Property *own = snapshot.ownProperty(data);
    return own == nullptr ? nullptr : snapshot.text(own->key());
}

uint32_t DVSData_PropType(const DVSData *data) {
    const Property *own = snapshot.ownProperty(data);
    return own == nullptr ? 0 : own->type();
}
