// SPDX-License-Identifier: Apache-2.0
// The forwarding tables of a switch and the state of its MAC learning.
#include <cstring>

#include "qvs/vshyp.h"
#include "vswitch/request.h"

namespace qvs {
namespace {

constexpr SwitchCommand kGetMacTable{0x1017};
constexpr SwitchCommand kGetStaticLectx{0x1018};
constexpr SwitchCommand kGetPortMacTable{0x1019};
constexpr SwitchCommand kGetPortStaticLectx{0x101a};
constexpr SwitchCommand kGetTeamMacTable{0x101b};
constexpr SwitchCommand kGetPortMacLearningStats{0x101c};
constexpr SwitchCommand kGetGlobalMacLearningProps{0x101d};
constexpr SwitchCommand kGetSwitchMacLearningInfo{0x101e};
constexpr SwitchCommand kGetMacLearningAllPorts{0x101f};
constexpr SwitchCommand kGetSwitchMacLearningStats{0x1020};
constexpr SwitchCommand kGetL2Security{0x1021};
constexpr SwitchCommand kSetPortMacTable{0x2003};
constexpr SwitchCommand kClearPortMacTable{0x2004};
constexpr SwitchCommand kSetGlobalMacLearningProps{0x2005};

struct TableFields {
    uint8_t unused[6];
    uint8_t selector;
};
using MacEntry = uint8_t[VSHYP_MAC_ENTRY_SIZE];

// Fetches a table of a switch that is selected by a byte.
HYP_ReturnStatus selectTable(SwitchCommand command, const char *alias, uint8_t selector, void **table) {
    if (alias == nullptr || table == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = request.nameByAlias(alias); status != HYP_OK) return status;
    request.with(TableFields{{}, selector});
    return fetchSwitchList(command, request, {VSHYP_MAC_ENTRY_SIZE}, table);
}

// Fills the request record for a port of a distributed switch.
HYP_ReturnStatus forPort(const char *alias, const char *dvPortId, SwitchRequest &request) {
    if (const HYP_ReturnStatus status = request.identifyByAlias(alias); status != HYP_OK) return status;
    if (dvPortId == nullptr) return HYP_BAD_PARAM;
    copyText(request.dvPortId, dvPortId);
    return HYP_OK;
}

// Addresses a port by its identifier, or by its kernel port number if the identifier is null.
void addressPort(SwitchRequest &request, const char *dvPortId, uint32_t portNumber) {
    if (dvPortId != nullptr) {
        copyText(request.dvPortId, dvPortId);
    } else {
        request.portNumber = portNumber;
    }
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSHYP_GetMACTable(const char *alias, uint8_t tableSelector, void **table) {
    return selectTable(kGetMacTable, alias, tableSelector, table);
}

extern "C" HYP_ReturnStatus VSHYP_GetTeamMACTable(const char *alias, uint8_t tableSelector, void **table) {
    return selectTable(kGetTeamMacTable, alias, tableSelector, table);
}

extern "C" HYP_ReturnStatus VSHYP_GetPortMACTable(const char *alias, const char *dvPortId,
                                                  uint8_t tableSelector, void **table) {
    if (table == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = forPort(alias, dvPortId, request); status != HYP_OK) return status;
    request.with(TableFields{{}, tableSelector});
    return fetchSwitchList(kGetPortMacTable, request, {VSHYP_MAC_ENTRY_SIZE}, table);
}

extern "C" HYP_ReturnStatus VSHYP_GetStaticLectx(const char *alias, void **table) {
    return fetchListByAlias(kGetStaticLectx, alias, {VSHYP_STATIC_LECTX_SIZE}, table);
}

extern "C" HYP_ReturnStatus VSHYP_GetPortStaticLectx(const char *alias, const char *dvPortId, void **table) {
    if (table == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = forPort(alias, dvPortId, request); status != HYP_OK) return status;
    return fetchSwitchList(kGetPortStaticLectx, request, {VSHYP_STATIC_LECTX_SIZE}, table);
}

extern "C" HYP_ReturnStatus VSHYP_GetMACLearningAllPorts(const char *alias, void **ports) {
    return fetchListByAlias(kGetMacLearningAllPorts, alias, {VSHYP_PORT_MAC_LEARNING_SIZE}, ports);
}

extern "C" HYP_ReturnStatus VSHYP_GetSwitchMACLearningStats(const char *alias, void **stats) {
    return fetchListByAlias(kGetSwitchMacLearningStats, alias, {VSHYP_MAC_LEARNING_STATS_SIZE}, stats);
}

extern "C" HYP_ReturnStatus VSHYP_GetL2Security(const char *alias, void **table) {
    return fetchListByAlias(kGetL2Security, alias, {VSHYP_L2_SECURITY_SIZE}, table);
}

// The interface defines the order of the arguments: port first, alias second.
extern "C" HYP_ReturnStatus VSHYP_GetPortMACLearningStats(const char *dvPortId, const char *alias,
                                                          void *stats) {
    if (stats == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = forPort(alias, dvPortId, request); status != HYP_OK) return status;
    return fetchIntoCleared<VSHYP_MAC_LEARNING_STATS_SIZE>(
        stats, [&](Area out) { return switchRequest(kGetPortMacLearningStats, request, out); });
}

extern "C" HYP_ReturnStatus VSHYP_GetSwitchMACLearningInfo(const char *switchName, void *info) {
    if (switchName == nullptr || info == nullptr) return HYP_BAD_PARAM;
    const SwitchRequest request = SwitchRequest::named(switchName);
    return fetchInto<VSHYP_MAC_LEARNING_INFO_SIZE>(
        info, [&](Area out) { return switchRequest(kGetSwitchMacLearningInfo, request, out); });
}

extern "C" HYP_ReturnStatus VSHYP_GetGlobalMACLearningProps(void *props) {
    if (props == nullptr) return HYP_BAD_PARAM;
    const SwitchRequest request = {};
    return fetchInto<sizeof(VSHYP_GlobalMACLearningProps)>(
        props, [&](Area out) { return switchRequest(kGetGlobalMacLearningProps, request, out); });
}

extern "C" HYP_ReturnStatus VSHYP_SetGlobalMACLearningProps(const void *props) {
    if (props == nullptr) return HYP_BAD_PARAM;
    VSHYP_GlobalMACLearningProps given;
    std::memcpy(&given, props, sizeof given);
    return switchRequest(kSetGlobalMacLearningProps, SwitchRequest().with(given));
}

// Without a port identifier, this function sends the portset name of the switch. VSHYP_ClearPortMACTable
// always sends its identifier.
extern "C" HYP_ReturnStatus VSHYP_SetPortMACTable(const char *alias, const char *dvPortId,
                                                  uint32_t portNumber, const void *macEntry) {
    if (macEntry == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    const HYP_ReturnStatus status =
        dvPortId != nullptr ? request.identifyByAlias(alias) : request.nameByAlias(alias);
    if (status != HYP_OK) return status;
    addressPort(request, dvPortId, portNumber);
    request.with(*static_cast<const MacEntry *>(macEntry));
    return switchRequest(kSetPortMacTable, request);
}

extern "C" HYP_ReturnStatus VSHYP_ClearPortMACTable(const char *alias, const char *dvPortId,
                                                    uint32_t portNumber, const void *macEntry) {
    if (macEntry == nullptr) return HYP_BAD_PARAM;
    SwitchRequest request;
    if (const HYP_ReturnStatus status = request.identifyByAlias(alias); status != HYP_OK) return status;
    addressPort(request, dvPortId, portNumber);
    request.with(*static_cast<const MacEntry *>(macEntry));
    return switchRequest(kClearPortMacTable, request);
}
