// SPDX-License-Identifier: Apache-2.0
// Requests on /dev/vswitch: the commands, the input record that nearly all of them share, and the functions
// that send them.
#pragma once

#include "core/request.h"
#include "core/text.h"

namespace qvs {

enum class SwitchCommand : uint32_t {
    GetRarpStats = 0x1001,
    GetServicePortTeamingStats = 0x1002,
    GetRuntimeOptions = 0x1003,
    GetPromiscSessionActiveDsts = 0x1004,
    GetMirrorSessionIds = 0x1005,
    GetMirrorSessionStats = 0x1006,
    GetMcastFilterMode = 0x1007,
    GetMcastFilters = 0x1008,
    GetSwitchMcastFilters = 0x1009,
    GetMcastFilterStats = 0x100a,
    GetUplinks = 0x100b,
    GetUplinkLinkState = 0x100c,
    GetUplinkLacpLinkState = 0x100d,
    GetLagTable = 0x100e,
    GetSwitchInfo = 0x1010,
    GetSwitchPortInfo = 0x1013,
    GetPortInfo = 0x1014,
    GetMacTable = 0x1017,
    GetStaticLectx = 0x1018,
    GetPortMacTable = 0x1019,
    GetPortStaticLectx = 0x101a,
    GetTeamMacTable = 0x101b,
    GetPortMacLearningStats = 0x101c,
    GetGlobalMacLearningProps = 0x101d,
    GetSwitchMacLearningInfo = 0x101e,
    GetMacLearningAllPorts = 0x101f,
    GetSwitchMacLearningStats = 0x1020,
    GetL2Security = 0x1021,
    GetTeamUplinkHint = 0x1022,
    GetUplinkDvPortId = 0x1023,
    GetPortLsTeamingPolicyName = 0x1024,
    GetLsTeamingPolicyTable = 0x1025,
    GetSwitches = 0x1026,
    AliasToSwitchId = 0x1027,
    SetRuntimeOptions = 0x2001,
    SetUplinkAdminLinkState = 0x2002,
    SetPortMacTable = 0x2003,
    ClearPortMacTable = 0x2004,
    SetGlobalMacLearningProps = 0x2005,
    RefreshDevNumaInfo = 0x2006,
    GetMirrorAgentWorldStats = 0x2007,  // only reads, in spite of its number
};

// The part of the record after the names. Each command has its own layout.
struct LinkFields {
    char uplinkName[32];
    uint32_t linkState;
};
struct TableFields {
    uint8_t unused[6];
    uint8_t selector;
};
struct QVS_PACKED LearningFields {
    uint64_t first;
    uint16_t second;
};
struct FilterFields {
    uint32_t port;
    uint32_t type;
    uint8_t group[16];
};

// The input record. It is initialised with zeros, and each request fills the fields that it needs. Text that
// does not fit into a field is truncated.
struct SwitchRequest {
    char switchName[128] = {};  // name in the kernel, or identifier if the request addresses a port
    union {
        char dvPortId[48] = {};  // identifier of a port of a distributed switch,
        uint32_t portId;         // or kernel port number
    };
    union {
        uint8_t area[88] = {};
        LinkFields link;
        uint8_t macEntry[86];
        TableFields table;
        LearningFields learning;
        char mirrorSession[32];
        FilterFields filter;
    };
    uint32_t portNumber = 0;

    // Returns a record with the name of a switch.
    static SwitchRequest named(const char *switchName) {
        SwitchRequest request;
        copyText(request.switchName, switchName);
        return request;
    }

    // Names the switch that has this alias, by the name of its portset.
    [[nodiscard]] HYP_ReturnStatus nameByAlias(const char *alias);

    // Names the switch that has this alias by its identifier, as requests on a distributed port do.
    [[nodiscard]] HYP_ReturnStatus identifyByAlias(const char *alias);
};
static_assert(sizeof(SwitchRequest) == 268);
static_assert(offsetof(SwitchRequest, dvPortId) == 128 && offsetof(SwitchRequest, area) == 176);
static_assert(offsetof(SwitchRequest, link.linkState) == 208);
static_assert(offsetof(SwitchRequest, table.selector) == 182);
static_assert(offsetof(SwitchRequest, learning.second) == 184);
static_assert(offsetof(SwitchRequest, filter.type) == 180 && offsetof(SwitchRequest, filter.group) == 184);
static_assert(offsetof(SwitchRequest, portNumber) == 264);

// Issues one request with input and output areas of any kind.
[[nodiscard]] HYP_ReturnStatus switchRequest(SwitchCommand command, Area in, Area out);

// Issues one request with the common record; `out`, if any, is filled by the kernel.
[[nodiscard]] inline HYP_ReturnStatus switchRequest(SwitchCommand command, const SwitchRequest &request,
                                                    Area out = {}) {
    return switchRequest(command, Area{&request, sizeof request}, out);
}
[[nodiscard]] inline HYP_ReturnStatus switchRequest(SwitchCommand command, const SwitchRequest &request,
                                                    void *out, uint32_t outLength) {
    return switchRequest(command, request, Area{out, outLength});
}

// Fetches a list. *list is untouched when the first request fails or there is no such list, and null after
// any later failure.
[[nodiscard]] HYP_ReturnStatus fetchSwitchList(SwitchCommand command, const SwitchRequest &request,
                                               const ListShape &shape, void **list);

// The same for a list that is asked for by alias; HYP_BAD_PARAM for null arguments.
[[nodiscard]] HYP_ReturnStatus fetchListByAlias(SwitchCommand command, const char *alias,
                                                const ListShape &shape, void **list);

}  // namespace qvs
