// SPDX-License-Identifier: Apache-2.0
// Multicast: how a switch filters it, and the addresses that are always let in. The type of the receive
// filter.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#include <algorithm>

#include "config/library/kernel_list.h"
#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- the filter mode ---

constexpr const char *kModes[] = {"legacy", "snooping"};
constexpr const char *kStoredModes[] = {"legacyFiltering", "snooping"};
constexpr Member kMode[] = {
    {.name = "", .summary = "how multicast is filtered", .type = Type::Word, .words = kModes}};

std::optional<Value> decodeMode(const StoredView &stored) {
    const std::optional<std::string> text = textOf(stored[0]);
    if (!text) return std::nullopt;
    return ifTaken(kMulticastMode, wordOf(kModes, numberOf(kStoredModes, *text)));
}

Stored encodeMode(const Value &value, const StoredView &, const Target &) {
    return {blobOfText(kStoredModes[numberOf(kModes, value)])};
}

std::optional<Value> readMode(const Target &target) {
    uint32_t mode = 0;
    if (!wasRead(kMulticastMode, target, call<VSDVS_GetMcastFilterMode>(target.alias.c_str(), &mode)))
        return std::nullopt;
    return wordOf(kModes, mode);
}

std::optional<Value> runningMode(const Target &target) {
    uint32_t mode = 0;
    require(call<VSHYP_GetMcastFilterMode>(portsetOf(target.alias).c_str(), &mode), target.named());
    return wordOf(kModes, mode);
}

HYP_ReturnStatus storeMode(const Target &target, const Stored &records) {
    const uint32_t mode = numberOf(kStoredModes, *textOf(viewOf(records)[0]));
    const HYP_ReturnStatus status = call<VSDVS_SetMcastFilterMode>(target.alias.c_str(), mode);
    if (status == HYP_NOT_SUPPORTED)
        throw libraryFailure(fmt::format("{}: {}", target.named(), kMulticastMode.what), status,
                             "switches of version 107 and later have it elsewhere");
    return status;
}

// --- the addresses ---

constexpr Member kAddresses[] = {{.name = "",
                                  .summary = "multicast addresses",
                                  .type = Type::Address,
                                  .list = true,
                                  .mostItems = VSDVS_MCAST_MAX_ADDRESSES}};

List addressesOf(Bytes addresses) {
    List list;
    for (size_t at = 0; at < addresses.size(); at += sizeof(VSDVS_MACAddress))
        list.emplace_back(macText(addresses.subspan(at, sizeof(VSDVS_MACAddress))));
    return list;
}

template <const Setting &setting>
std::optional<Value> decodeAddresses(const StoredView &stored) {
    const std::optional<Bytes> &bytes = stored[0];
    if (!bytes || bytes->empty() || bytes->size() != 1 + bytes->front() * sizeof(VSDVS_MACAddress))
        return std::nullopt;
    return ifTaken(setting, addressesOf(bytes->subspan(sizeof(VSDVS_McastList))));
}

Stored encodeAddresses(const Value &value, const StoredView &, const Target &) {
    Blob list = blobOf(VSDVS_McastList{static_cast<uint8_t>(value.list().size())});
    for (const Value &item : value.list()) {
        const MacAddress address = *parseMac(item.text());
        list.insert(list.end(), address.begin(), address.end());
    }
    return {std::move(list)};
}

// libqvs has checked that the list has as many addresses as it counts.
List readList(const VsdvsBuffer &buffer) {
    const auto *list = static_cast<const uint8_t *>(buffer.get());
    return addressesOf({list + sizeof(VSDVS_McastList), list[0] * sizeof(VSDVS_MACAddress)});
}

std::optional<Value> readAddresses(const Target &target) {
    void *raw = nullptr;
    if (!wasRead(kMulticastAddresses, target,
                 call<VSDVS_GetMcastUserLegacyEntries>(target.alias.c_str(), &raw)))
        return std::nullopt;
    return readList(VsdvsBuffer(raw));
}

std::optional<Value> readPortAddresses(const Target &target) {
    void *raw = nullptr;
    if (!wasRead(kPortMulticastAddresses, target,
                 call<VSDVS_GetPortMcastUserLegacyEntries>(target.alias.c_str(), target.port.c_str(), &raw)))
        return std::nullopt;
    return readList(VsdvsBuffer(raw));
}

HYP_ReturnStatus storeAddresses(const Target &target, const Stored &records) {
    const uint8_t *list = records[0]->data();
    return call<VSDVS_SetMcastUserLegacyEntries>(target.alias.c_str(), list[0],
                                                 list + sizeof(VSDVS_McastList));
}

HYP_ReturnStatus storePortAddresses(const Target &target, const Stored &records) {
    const uint8_t *list = records[0]->data();
    return call<VSDVS_SetPortMcastUserLegacyEntries>(target.alias.c_str(), target.port.c_str(), list[0],
                                                     list + sizeof(VSDVS_McastList));
}

// --- the receive filter ---

constexpr const char *kRcfTypes[] = {"cbpf", "ebpf"};
constexpr Member kRcfType[] = {{.name = "",
                                .summary = "instruction type of the receive filter",
                                .type = Type::Word,
                                .words = kRcfTypes,
                                .fallback = "cbpf"}};

std::optional<Value> readRcf(const Target &target) {
    uint32_t type = 0;
    if (!wasRead(kRcf, target, call<VSDVS_GetRCFType>(target.alias.c_str(), &type))) return std::nullopt;
    return wordOf(kRcfTypes, type);
}

HYP_ReturnStatus storeRcf(const Target &target, const Stored &records) {
    return call<VSDVS_SetRCFType>(target.alias.c_str(), numberOf(kRcfTypes, *textOf(viewOf(records)[0])));
}

}  // namespace

const Setting kMulticastMode = {
    .name = "multicastMode",
    .noun = "mcast mode",
    .what = "multicast filter mode",
    .summary = "how a switch filters multicast",
    .scope = Scope::Global,
    .keys = {QVS_KEY_MULTICAST_FILTER},
    .members = kMode,
    .example = "snooping",
    .details =
        "When nothing is stored, the mode is that of the running switch. The mode can be stored for "
        "switches up to version 106.",
    .content = "mode",
    .decode = decodeMode,
    .encode = encodeMode,
    .read = readMode,
    .running = runningMode,
    .store = storeMode,
    .clear = clearKey<kMulticastMode>,
};

const Setting kMulticastAddresses = {
    .name = "multicastAddresses",
    .noun = "mcast list",
    .what = "multicast addresses",
    .summary = "the multicast addresses that a switch lets in on this host",
    .scope = Scope::Host,
    .keys = {QVS_KEY_MULTICAST_ADDRESSES},
    .members = kAddresses,
    .example = "01:00:5e:00:00:fb 33:33:00:00:00:fb",
    .content = "addresses",
    .decode = decodeAddresses<kMulticastAddresses>,
    .encode = encodeAddresses,
    .read = readAddresses,
    .store = storeAddresses,
    .clear = clearSwitch<VSDVS_ClearMcastUserLegacyEntries>,
};

const Setting kPortMulticastAddresses = {
    .name = "multicastAddresses",
    .noun = "port mcast",
    .what = "multicast addresses",
    .summary = "the multicast addresses that a port lets in, in place of those of the switch",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_MULTICAST_OVERRIDE},
    .members = kAddresses,
    .example = "01:00:5e:00:00:fb",
    .content = "addresses",
    .decode = decodeAddresses<kPortMulticastAddresses>,
    .encode = encodeAddresses,
    .read = readPortAddresses,
    .store = storePortAddresses,
    .clear = clearPort<VSDVS_ClearPortMcastUserLegacyEntries>,
};

const Setting kRcf = {
    .name = "rcf",
    .noun = "rcf",
    .what = "receive filter type",
    .summary = "the instruction type of the receive filter of a switch",
    .scope = Scope::Global,
    .keys = {QVS_KEY_RCF_TYPE},
    .members = kRcfType,
    .example = "ebpf",
    .details = "The default is cbpf.",
    .content = "type",
    .decode = decodeText<kRcf>,
    .encode = encodeText,
    .read = readRcf,
    .store = storeRcf,
    .clear = clearKey<kRcf>,
};

}  // namespace qvs::config
