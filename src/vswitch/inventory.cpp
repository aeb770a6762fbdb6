// SPDX-License-Identifier: Apache-2.0
// Queries of switches, ports, uplinks and links on the switch device.
#include <cstring>

#include "core/heap.h"
#include "core/identity.h"
#include "core/text.h"
#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetUplinks{0x100b};
constexpr SwitchCommand kGetUplinkLinkState{0x100c};
constexpr SwitchCommand kGetUplinkLacpLinkState{0x100d};
constexpr SwitchCommand kGetLagTable{0x100e};
constexpr SwitchCommand kGetSwitchInfo{0x1010};
constexpr SwitchCommand kGetSwitchPortInfo{0x1013};
constexpr SwitchCommand kGetPortInfo{0x1014};
constexpr SwitchCommand kGetTeamUplinkHint{0x1022};
constexpr SwitchCommand kGetUplinkDvPortId{0x1023};
constexpr SwitchCommand kGetSwitches{0x1026};
constexpr SwitchCommand kAliasToSwitchId{0x1027};
constexpr SwitchCommand kSetUplinkAdminLinkState{0x2002};
constexpr SwitchCommand kRefreshDevNumaInfo{0x2006};

// GetSwitches and AliasToSwitchId use at most 80 characters of an alias.
constexpr size_t kAliasSize = 81;

struct LinkFields {
    char uplinkName[32];
    uint32_t linkState;
};
static_assert(offsetof(LinkFields, linkState) == 32);

SwitchRequest forUplink(const char *switchName, const char *uplinkName, bool linkState = false) {
    LinkFields fields = {{}, linkState};
    copyText(fields.uplinkName, uplinkName);
    return SwitchRequest::named(switchName).with(fields);
}

// Returns a record in a new buffer. The kernel writes it into a local area first; the buffer is allocated
// only after the request has succeeded.
template <uint32_t Size>
HYP_ReturnStatus fetchRecord(SwitchCommand command, const SwitchRequest &request, void **record) {
    uint8_t area[Size] = {};
    const HYP_ReturnStatus status = switchRequest(command, request, area, Size);
    if (status != HYP_OK) return status;
    if (record == nullptr) return HYP_BAD_PARAM;
    HeapBytes buffer = allocateZeroed(Size);
    if (buffer != nullptr) std::memcpy(buffer.get(), area, Size);
    *record = buffer.release();
    return *record != nullptr ? HYP_OK : HYP_NO_MEMORY;
}

HYP_ReturnStatus readLinkState(SwitchCommand command, const char *switchName, const char *uplinkName,
                               uint32_t *up) {
    if (switchName == nullptr || up == nullptr || uplinkName == nullptr) return HYP_BAD_PARAM;
    uint32_t state = 0;
    const HYP_ReturnStatus status =
        switchRequest(command, forUplink(switchName, uplinkName), &state, sizeof state);
    if (status == HYP_OK) *up = state != 0 ? 1 : 0;
    return status;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetUplinks(const char *switchName, void **uplinks) {
    if (switchName == nullptr || uplinks == nullptr) return HYP_BAD_PARAM;
    return fetchSwitchList(kGetUplinks, SwitchRequest::named(switchName), {VSHYP_UPLINK_ENTRY_SIZE}, uplinks);
}

extern "C" HYP_ReturnStatus VSHYP_GetUplinkLinkState(const char *switchName, const char *uplinkName,
                                                     uint32_t *up) {
    return readLinkState(kGetUplinkLinkState, switchName, uplinkName, up);
}

extern "C" HYP_ReturnStatus VSHYP_GetUplinkLACPLinkState(const char *switchName, const char *uplinkName,
                                                         uint32_t *up) {
    return readLinkState(kGetUplinkLacpLinkState, switchName, uplinkName, up);
}

extern "C" HYP_ReturnStatus VSHYP_GetLAGTable(const char *switchName, void **lagTable) {
    if (switchName == nullptr || lagTable == nullptr) return HYP_BAD_PARAM;
    HeapBytes table = allocateZeroed(VSHYP_LAG_TABLE_SIZE);
    if (table == nullptr) return HYP_NO_MEMORY;
    const HYP_ReturnStatus status =
        switchRequest(kGetLagTable, SwitchRequest::named(switchName), table.get(), VSHYP_LAG_TABLE_SIZE);
    if (status == HYP_OK) *lagTable = table.release();
    return status;
}

extern "C" HYP_ReturnStatus VSHYP_GetSwitchInfo(const char *alias, void **info) {
    if (alias == nullptr || info == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = request.nameByAlias(alias); status != HYP_OK) return status;
    return fetchRecord<VSHYP_SWITCH_INFO_SIZE>(kGetSwitchInfo, request, info);
}

extern "C" HYP_ReturnStatus VSHYP_GetVSInfo(const char *switchName, void *info) {
    if (info == nullptr) return HYP_BAD_PARAM;
    return fetchIntoCleared<VSHYP_SWITCH_INFO_SIZE>(info, [&](Area out) {
        if (switchName == nullptr) return HYP_BAD_PARAM;
        return switchRequest(kGetSwitchInfo, SwitchRequest::named(switchName), out);
    });
}

extern "C" HYP_ReturnStatus VSHYP_GetSwitchPortInfo(const char *alias, void **ports) {
    return fetchListByAlias(kGetSwitchPortInfo, alias, {VSHYP_PORT_INFO_SIZE}, ports);
}

extern "C" HYP_ReturnStatus VSHYP_GetPortInfo(const char *alias, const char *dvPortId, void **info) {
    SwitchRequest request;
    const HYP_ReturnStatus status = VSDVS_DvPortIDToPortID(alias, dvPortId, &request.portId);
    if (status != HYP_OK) return status;
    return fetchRecord<VSHYP_PORT_INFO_SIZE>(kGetPortInfo, request, info);
}

extern "C" HYP_ReturnStatus VSHYP_PortGetTeamUplinkHint(uint32_t portId, void *hint) {
    if (hint == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    request.portId = portId;
    return fetchIntoCleared<VSHYP_TEAM_UPLINK_HINT_SIZE>(
        hint, [&](Area out) { return switchRequest(kGetTeamUplinkHint, request, out); });
}

extern "C" HYP_ReturnStatus VSHYP_GetUplinkDVPortID(const char *uplinkName, void *identity) {
    if (identity == nullptr) return HYP_BAD_PARAM;
    return fetchIntoCleared<VSHYP_UPLINK_DV_PORT_ID_SIZE>(identity, [&](Area out) {
        if (uplinkName == nullptr) return HYP_BAD_PARAM;
        return switchRequest(kGetUplinkDvPortId, forUplink("", uplinkName), out);
    });
}

// This list differs from all others: its input is the selector, and the status of the first request is
// ignored. If the kernel did not overwrite the preset count word, it did not answer.
extern "C" HYP_ReturnStatus VSHYP_GetSwitches(uint32_t selector, void **switches) {
    constexpr uint32_t kNoAnswer = 0xffffffff;
    if (switches == nullptr) return HYP_BAD_PARAM;
    *switches = nullptr;

    VSHYP_ListHeader header = {kNoAnswer, 0};
    const Area input = {&selector, sizeof selector};
    static_cast<void>(switchRequest(kGetSwitches, input, Area{&header, sizeof header}));
    if (header.count == kNoAnswer) return HYP_FAILURE;

    const uint32_t entrySize =
        selector == VSHYP_SELECT_SWITCH_NAMES ? VSHYP_SWITCH_NAME_ENTRY_SIZE : VSHYP_SWITCH_ALIAS_ENTRY_SIZE;
    const uint64_t size = uint64_t{header.count} * entrySize + sizeof header;
    HeapBytes buffer = allocateZeroed(size);
    if (buffer == nullptr) return HYP_NO_MEMORY;
    if (header.count == 0) {
        header.word = selector;
        std::memcpy(buffer.get(), &header, sizeof header);
    } else {
        const HYP_ReturnStatus status =
            switchRequest(kGetSwitches, input, Area{buffer.get(), static_cast<uint32_t>(size)});
        if (status != HYP_OK) return status;
    }
    *switches = buffer.release();
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSHYP_DVSAliasToSwitchId(const char *alias, void *switchId) {
    if (alias == nullptr || switchId == nullptr) return HYP_BAD_PARAM;
    char shortAlias[kAliasSize];
    copyText(shortAlias, alias);
    return fetchIntoCleared<sizeof(SwitchIdString)>(switchId, [&](Area out) {
        return switchRequest(kAliasToSwitchId, SwitchRequest::named(shortAlias), out);
    });
}

extern "C" HYP_ReturnStatus VSHYP_SetUplinkAdminLinkState(const char *switchName, const char *uplinkName,
                                                          int32_t state) {
    if (switchName == nullptr || uplinkName == nullptr) return HYP_BAD_PARAM;
    return switchRequest(kSetUplinkAdminLinkState, forUplink(switchName, uplinkName, state != 0));
}

extern "C" HYP_ReturnStatus VSHYP_RefreshDevNUMAInfo(const char *switchName) {
    if (switchName == nullptr) return HYP_BAD_PARAM;
    return switchRequest(kRefreshDevNumaInfo, SwitchRequest::named(switchName));
}
