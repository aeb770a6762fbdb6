// SPDX-License-Identifier: Apache-2.0
// The table of the functions of libqvs. The arguments belong to the host of steps_test.cpp.
#include "steps/functions.h"

#include <qvs/reporting.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "support/records.h"
#include "support/test.h"

namespace qvs::test {
namespace {

alignas(8) char area[4096];
void *pointers[2];
VSDVS_PropBuffer valueBuffer;

// A buffer of the caller, as whatever type the function wants.
struct Out {
    template <typename T>
    operator T *() const {
        return reinterpret_cast<T *>(area);
    }
    operator void **() const { return &pointers[second = !second]; }
    operator char **() const { return reinterpret_cast<char **>(&pointers[0]); }
    operator VSDVS_PropBuffer *() const { return &valueBuffer; }
    static inline bool second = false;
};
constexpr Out out;

void release(std::string_view name, void *pointer) {
    if (pointer == nullptr) return;
    if (name.starts_with("VSHYP_")) return VSHYP_FreeMemory(pointer);
    if (name.starts_with("NetDVS_")) return NetDVS_FreeMemory(pointer);
    if (name.starts_with("HealthCheck_")) return HealthCheck_FreeMemory(pointer);
    if (name.starts_with("IPFIXDVS_")) return IPFIXDVS_FreeMemory(pointer);
    VSDVS_FreeMemory(pointer);
}

template <typename Result, typename Call>
uint32_t statusOf(const char *name, Call call) {
    std::memset(area, 0xee, sizeof area);
    pointers[0] = pointers[1] = nullptr;
    valueBuffer = {8, area};
    uint32_t status = 0;
    if constexpr (std::is_void_v<Result>) {
        call();
    } else if constexpr (std::is_same_v<Result, const char *>) {
        status = call() != nullptr ? 0 : kNull;
    } else if constexpr (std::is_pointer_v<Result>) {
        void *answer = call();
        status = answer != nullptr ? 0 : kNull;
        free(answer);
    } else {
        status = static_cast<uint32_t>(call());
    }
    if (status != 0) return status;
    for (void *&pointer : pointers) {
        release(name, pointer);
        pointer = nullptr;
    }
    return status;
}

// The same call with another value of one argument: null for a pointer, a name that no switch has, and the
// one of a switch of another class.
template <typename Argument, typename Call>
void addRefusals(Function &row, size_t index, Argument given, Call callWith) {
    const auto add = [&](const char *what, Argument other) {
        row.refusals.push_back(
            {"argument " + std::to_string(index + 1) + " " + what, [=] { return callWith(other); }});
    };
    if constexpr (std::is_pointer_v<Argument>) {
        if (given != nullptr) add("null", nullptr);
    }
    if constexpr (std::is_same_v<Argument, const char *>) {
        if (given == nullptr || std::strcmp(given, "sw1") != 0) return;
        add("sw9", "sw9");
        add("hub", "hub");
    }
}

template <typename Result, typename... Arguments>
Function row(const char *name, Result (*function)(Arguments...), std::type_identity_t<Arguments>... given) {
    const auto call = [=](const std::tuple<Arguments...> &arguments) {
        return statusOf<Result>(name, [&] { return std::apply(function, arguments); });
    };
    const std::tuple<Arguments...> all(given...);
    Function result = {name, [=] { return call(all); }, {}};
    [&]<size_t... i>(std::index_sequence<i...>) {
        (addRefusals(result, i, std::get<i>(all),
                     [=](auto other) {
                         auto changed = all;
                         std::get<i>(changed) = other;
                         return call(changed);
                     }),
         ...);
    }
    (std::index_sequence_for<Arguments...>());
    return result;
}
Function row(const char *name, void (*report)(const char *, ...), const char *text) {
    return {name, [=] { return report(text), 0; }, {}};
}

#define ROW(name, ...) row(#name, name __VA_OPT__(, ) __VA_ARGS__)

constexpr char kKey[] = "com.example.key";
constexpr char kMac[] = "0:1b:2c:3:4:5";
constexpr uint32_t kPortNumber = 0x4000001;
constexpr uint32_t kMask = 7;
constexpr uint8_t kBlock[2700] = {1, 1};
constexpr uint8_t kZeros[2700] = {};
constexpr uint8_t kGroup[16] = {224, 1, 2, 251};
constexpr uint16_t kOptionIds[] = {7, 0x1234};
const std::string kSessions = sessions("new");
const std::string kNames = u32(1) + field("up", 81);
const std::string kPorts = u32(1) + field("up", 48);
const std::string kEntry = hex("020304050607 01 08 0101") + zeros(76);
const std::string kStored = hex("020000000001") + zeros(80);  // an entry of the lab
const std::string kRoutes = u32(2) + zeros(277);
const std::string kChanges = u32(2) + zeros(138);

const uint32_t *words(const std::string &block) {
    return reinterpret_cast<const uint32_t *>(block.data());
}

// The request that asks the switch device for the number of ports of a switch.
void *frame() {
    static struct {
        uint32_t inLength, outLength;
        uint64_t in, out;
    } request;
    static char name[268] = "ps1";
    request = {sizeof name, 8, reinterpret_cast<uint64_t>(name), reinterpret_cast<uint64_t>(area)};
    return &request;
}

}  // namespace

const std::string kOptions = hex("0e000000 0700 0100 aa 3412 0100 bb");

std::string callerRecord() {
    return bytesAt(area, sizeof area);
}

bool pointerLeft() {
    return pointers[0] != nullptr || pointers[1] != nullptr;
}

const std::vector<Function> kFunctions = {
    ROW(BFD_GetLogLevel),
    ROW(BFD_GetSessions, 2),
    ROW(BFD_GetStats),
    ROW(BFD_SetLogLevel, 1),
    ROW(DVPortExist, "id", "port0"),
    ROW(DVSAliasToPortsetName, "sw1", out),
    ROW(DVSAliasToSwitchId, "sw1", out),
    ROW(DVSAliasToSwitchIdAllTypes, "sw1", out),
    ROW(DVSLoadConfig),
    ROW(DVSPortsetNameToAlias, "ps1", out),
    ROW(Discovery_GetParam, "sw1", out),
    ROW(Discovery_SetParam, "sw1", kBlock),
    ROW(Discovery_SetParam, "sw1", kZeros),
    ROW(HYPIoctl, "/dev/vswitch", 0x100b, frame()),
    ROW(HealthCheck_ClearTeamCheck, "sw1"),
    ROW(HealthCheck_ClearVLANMTUCheck, "sw1"),
    ROW(HealthCheck_DeployTeamCheck, "sw1", kBlock),
    ROW(HealthCheck_DeployTeamCheck, "sw1", kZeros),
    ROW(HealthCheck_DeployVLANMTUCheck, "sw1", kBlock),
    ROW(HealthCheck_DeployVLANMTUCheck, "sw1", kZeros),
    ROW(HealthCheck_FreeMemory, nullptr),
    ROW(HealthCheck_GetMTUCheckResult, "sw1", "port0", out),
    ROW(HealthCheck_GetTeamCheckDeploy, "sw1", out),
    ROW(HealthCheck_GetTeamCheckParam, "sw1", out),
    ROW(HealthCheck_GetVLANCheckResult, "sw1", "port0", out),
    ROW(HealthCheck_GetVLANMTUCheckDeploy, "sw1", out),
    ROW(HealthCheck_GetVLANMTUCheckParam, "sw1", out),
    ROW(HealthCheck_SetTeamCheckParam, "sw1", 1),
    ROW(HealthCheck_SetVLANMTUCheckParam, "sw1", kBlock),
    ROW(IPFIXDVS_FreeMemory, nullptr),
    ROW(IPFIXDVS_GetIpfixGranular, "sw1", "port0", out),
    ROW(IPFIXDVS_SetIpfixGranular, "sw1", "port0", kBlock),
    ROW(IPFIXDVS_SetIpfixGranular, "sw1", "port0", nullptr),
    ROW(IPFIXHYP_GetIpfixGranularStats, "sw1", "port0", out),
    ROW(IPFIXHYP_GetIpfixStats, "sw1", out),
    ROW(KCP_CharDevCleanup),
    ROW(KCP_CharDevInit),
    ROW(KCP_GetCIFList),
    ROW(KCP_GetContainerList),
    ROW(KCP_GetDVSList),
    ROW(KCP_GetHYPNICList),
    ROW(KCP_GetHYPVIFList),
    ROW(KCP_GetPSPropList),
    ROW(KCP_GetStatus),
    ROW(KCP_GetUplinkList),
    ROW(KCP_GetVIFList),
    ROW(LIVETRACEHYP_CreateSession, "sw1", "port0", kBlock, 3),
    ROW(LIVETRACEHYP_GetCountActionData, 1),
    ROW(LIVETRACEHYP_GetPortData, kPortNumber),
    ROW(LIVETRACEHYP_GetStats),
    ROW(LIVETRACEHYP_ListSession),
    ROW(LibraryInit),
    ROW(Log, "%s"),
    ROW(NetDVS_Dump, nullptr, out),
    ROW(NetDVS_Dump, "sw1", out),
    ROW(NetDVS_FreeMemory, nullptr),
    ROW(Panic, "%s"),
    ROW(ReturnStatusToString, 0xbad0014),
    ROW(SPFHYP_GetConfigFailureStats),
    ROW(SPFHYP_GetGVMPortStats, kPortNumber),
    ROW(SPFHYP_GetPortsList, "sw1"),
    ROW(SPFHYP_GetSPFPortStats, "sw1"),
    ROW(SPFHYP_GetSVMPortStats, kPortNumber + 3),
    ROW(SPFHYP_PlumbSpfPort, "ps1", "port0", kBlock, "02:00:00:00:00:aa"),
    ROW(SPFHYP_UnPlumbSpfPort, "two", "a"),
    ROW(SetNumSwitchUplinkPortsByUUID, "none", 2),
    ROW(SharedObjectInit),
    ROW(TFHYP_ClearTraceflowConfig, "sw1"),
    ROW(TFHYP_ClearTraceflowConfig, "none"),
    ROW(TFHYP_CreateRequest, "sw1", "port0", kMac, kMac, 0, 0, 0, 0, 0),
    ROW(TFHYP_GetINTConfig),
    ROW(TFHYP_GetPortStats, kPortNumber),
    ROW(TFHYP_SetINTConfig, kBlock),
    ROW(TFHYP_SetTraceflowConfig, "sw1", 1),
    ROW(TFHYP_SetTraceflowConfig, "sw1", 0),
    ROW(VSDVS_AddDVPort, "sw1", "new", 1),
    ROW(VSDVS_AddOpaqueDVPort, "sw1", "new", "external"),
    ROW(VSDVS_AddSwitchUplinkPort, "sw1", "new"),
    ROW(VSDVS_AddSwitchUplinkPort, "none", "new"),
    ROW(VSDVS_AppendDVMirrorSessions, "sw1", "port0", kSessions.data()),
    ROW(VSDVS_AppendDVMirrorSessions, "sw1", "", kSessions.data()),
    ROW(VSDVS_ClearCaching, "sw1"),
    ROW(VSDVS_ClearDVMirrorSessions, "sw1", "port0"),
    ROW(VSDVS_ClearDVMirrorSessions, "sw1", ""),
    ROW(VSDVS_ClearExtraEthFilter, "sw1", "port0"),
    ROW(VSDVS_ClearGlobProp, "sw1", kKey, nullptr, 1),
    ROW(VSDVS_ClearHostProp, "sw1", kKey, nullptr, 1),
    ROW(VSDVS_ClearLSTeamingPolicy, "sw1"),
    ROW(VSDVS_ClearLearnStatic, "sw1"),
    ROW(VSDVS_ClearMACLearning, "sw1"),
    ROW(VSDVS_ClearMcastUserLegacyEntries, "sw1"),
    ROW(VSDVS_ClearPortLSTeamingPolicy, "sw1", "port0"),
    ROW(VSDVS_ClearPortMcastUserLegacyEntries, "sw1", "port0"),
    ROW(VSDVS_ClearPortProp, "sw1", "port0", kKey, nullptr, 1),
    ROW(VSDVS_ClearPortTeamingOverride, "sw1", "port0"),
    ROW(VSDVS_ClearPortTeamingPolicy, "sw1", "port0"),
    ROW(VSDVS_ClearPortVLANPolicy, "sw1", "port0"),
    ROW(VSDVS_ClearStaticMACAllow, "sw1"),
    ROW(VSDVS_ClearSwitchUplinkPorts, "sw1"),
    ROW(VSDVS_ClearTeamingPolicy, "sw1"),
    ROW(VSDVS_ConfigureSinkPort, "sw1", "port0", 1),
    ROW(VSDVS_ConfigureSinkPort, "sw1", "port0", 0),
    ROW(VSDVS_CreateVSwitch, "new", "new", nullptr, 105, 0, 0, 2, 2),
    ROW(VSDVS_DestroyVSwitch, "sw1"),
    ROW(VSDVS_DvPortIDToPortID, "sw1", "port0", out),
    ROW(VSDVS_DvPortIDToPortIDFromDVSID, "id", "port0", out),
    ROW(VSDVS_FreeMemory, nullptr),
    ROW(VSDVS_GetAliasFromPortset, "ps1", out),
    ROW(VSDVS_GetDVMirrorSessions, "sw1", "port0", out),
    ROW(VSDVS_GetDVMirrorSessions, "sw1", "", out),
    ROW(VSDVS_GetExtraEthFilter, "sw1", "port0", out),
    ROW(VSDVS_GetGlobProp, "sw1", kKey, out, nullptr, 1),
    ROW(VSDVS_GetHostProp, "sw1", kKey, out, nullptr, 1),
    ROW(VSDVS_GetLSTeamingPolicyTable, "sw1", out),
    ROW(VSDVS_GetLSTeamingPolicyTableFromDVSID, "id", out),
    ROW(VSDVS_GetLearnStatic, "sw1", out),
    ROW(VSDVS_GetMACLearning, "sw1", out),
    ROW(VSDVS_GetMTU, "sw1", out),
    ROW(VSDVS_GetMcastFilterMode, "sw1", out),
    ROW(VSDVS_GetMcastUserLegacyEntries, "sw1", out),
    ROW(VSDVS_GetPortLSTeamingPolicyName, "sw1", "port0", out),
    ROW(VSDVS_GetPortMACLearning, "sw1", "port0", out),
    ROW(VSDVS_GetPortMcastUserLegacyEntries, "sw1", "port0", out),
    ROW(VSDVS_GetPortNestedVLANTagging, "sw1", "port0", out),
    ROW(VSDVS_GetPortProp, "sw1", "port0", kKey, out, nullptr, 1),
    ROW(VSDVS_GetPortSecurity, "sw1", "port0", out),
    ROW(VSDVS_GetPortTeamingOverride, "sw1", "port0", out),
    ROW(VSDVS_GetPortTeamingPolicy, "sw1", "port0", out),
    ROW(VSDVS_GetPortVLANPolicy, "sw1", "port0", out, out),
    ROW(VSDVS_GetPrivateVLANMap, "sw1", out, out),
    ROW(VSDVS_GetRCFType, "sw1", out),
    ROW(VSDVS_GetStaticMACAllow, "sw1", out),
    ROW(VSDVS_GetSwitchUplinkPorts, "sw1", out, out),
    ROW(VSDVS_GetTeamingPolicy, "sw1", out),
    ROW(VSDVS_GetTeamingPolicyFromDVSID, "id", out),
    ROW(VSDVS_GetTxUplinkAlways, "sw1", "port0", out),
    ROW(VSDVS_IsSinkPortEnabled, "sw1", "port0", out),
    ROW(VSDVS_RemoveDVMirrorSession, "sw1", "port0", "old"),
    ROW(VSDVS_RemoveDVMirrorSession, "sw1", "", "old"),
    ROW(VSDVS_RemoveDVPort, "sw1", "port0"),
    ROW(VSDVS_RemoveSwitchUplinkPort, "sw1", "uplink0"),
    ROW(VSDVS_SetCaching, "sw1", 1),
    ROW(VSDVS_SetDVMirrorSessions, "sw1", "port0", kSessions.data()),
    ROW(VSDVS_SetDVMirrorSessions, "sw1", "", kSessions.data()),
    ROW(VSDVS_SetExtraEthFilter, "sw1", "port0", kBlock),
    ROW(VSDVS_SetGlobProp, "sw1", kKey, kBlock, 5, nullptr, 1),
    ROW(VSDVS_SetHostProp, "sw1", kKey, kBlock, 5, nullptr, 1),
    ROW(VSDVS_SetLSTeamingPolicy, "sw1", kZeros),
    ROW(VSDVS_SetLearnStatic, "sw1", 1),
    ROW(VSDVS_SetMACLearning, "sw1", kZeros),
    ROW(VSDVS_SetMTU, "sw1", 1600),
    ROW(VSDVS_SetMcastFilterMode, "two", 1),
    ROW(VSDVS_SetMcastUserLegacyEntries, "sw1", 1, kBlock),
    ROW(VSDVS_SetPortLSTeamingPolicy, "sw1", "port0", "name"),
    ROW(VSDVS_SetPortMACLearning, "sw1", "port0", kBlock),
    ROW(VSDVS_SetPortMcastUserLegacyEntries, "sw1", "port0", 1, kBlock),
    ROW(VSDVS_SetPortNestedVLANTagging, "sw1", "port0", 1),
    ROW(VSDVS_SetPortProp, "sw1", "port0", kKey, kBlock, 5, nullptr, 1),
    ROW(VSDVS_SetPortSecurity, "sw1", "port0", &kMask),
    ROW(VSDVS_SetPortTeamingOverride, "sw1", "port0", "name"),
    ROW(VSDVS_SetPortTeamingPolicy, "sw1", "port0", kBlock),
    ROW(VSDVS_SetPortVLANPolicy, "sw1", "port0", 9, 2, 0, 1, kBlock, 1),
    ROW(VSDVS_SetPortVLANPolicy, "sw1", "port0", 1, VSDVS_NO_PRIORITY, 0, 0, nullptr, 0),
    ROW(VSDVS_SetPrivateVLANMap, "sw1", kBlock, 1),
    ROW(VSDVS_SetPrivateVLANMap, "sw1", nullptr, 0),
    ROW(VSDVS_SetRCFType, "sw1", 1),
    ROW(VSDVS_SetRuntimeHostProp, "sw1", kKey, kBlock, 5, nullptr, 1),
    ROW(VSDVS_SetStaticMACAllow, "sw1", 1),
    ROW(VSDVS_SetSwitchUplinkPorts, "none", kNames.data(), kPorts.data()),
    ROW(VSDVS_SetTeamingPolicy, "sw1", kBlock),
    ROW(VSDVS_SetTxUplinkAlways, "sw1", "port0", 1),
    ROW(VSDVS_SetTxUplinkAlways, "sw1", "port0", 0),
    ROW(VSHYP_ClearPortMACTable, "sw1", "port0", kPortNumber, kStored.data()),
    ROW(VSHYP_DVSAliasToSwitchId, "sw1", out),
    ROW(VSHYP_FreeMemory, nullptr),
    ROW(VSHYP_GetDVMirrorAgentWorldStats, out),
    ROW(VSHYP_GetDVMirrorSessionIDs, "sw1", out),
    ROW(VSHYP_GetDVMirrorSessionStats, "sw1", "old", out),
    ROW(VSHYP_GetGlobalMACLearningProps, out),
    ROW(VSHYP_GetL2Security, "sw1", out),
    ROW(VSHYP_GetLAGTable, "ps1", out),
    ROW(VSHYP_GetLSTeamingPolicyTable, "sw1", out),
    ROW(VSHYP_GetMACLearningAllPorts, "sw1", out),
    ROW(VSHYP_GetMACTable, "sw1", 0, out),
    ROW(VSHYP_GetMcastFilterMode, "ps1", out),
    ROW(VSHYP_GetMcastFilterStats, "ps1", kPortNumber, 2, kGroup, out),
    ROW(VSHYP_GetMcastFilters, "ps1", kPortNumber, 2, out),
    ROW(VSHYP_GetPortInfo, "sw1", "port0", out),
    ROW(VSHYP_GetPortLSTeamingPolicyName, kPortNumber, out),
    ROW(VSHYP_GetPortMACLearningStats, "port0", "sw1", out),
    ROW(VSHYP_GetPortMACTable, "sw1", "port0", 0, out),
    ROW(VSHYP_GetPortStaticLectx, "sw1", "port0", out),
    ROW(VSHYP_GetPromiscSessionActiveDsts, "sw1", out),
    ROW(VSHYP_GetRARPStats, "ps1", out),
    ROW(VSHYP_GetRuntimeOptions, kOptionIds, 2, out),
    ROW(VSHYP_GetServicePortTeamingStats, "ps1", out),
    ROW(VSHYP_GetStaticLectx, "sw1", out),
    ROW(VSHYP_GetSwitchInfo, "sw1", out),
    ROW(VSHYP_GetSwitchMACLearningInfo, "ps1", out),
    ROW(VSHYP_GetSwitchMACLearningStats, "sw1", out),
    ROW(VSHYP_GetSwitchMcastFilters, "ps1", 0, out),
    ROW(VSHYP_GetSwitchPortInfo, "sw1", out),
    ROW(VSHYP_GetSwitches, 0, out),
    ROW(VSHYP_GetTeamMACTable, "sw1", 0, out),
    ROW(VSHYP_GetUplinkDVPortID, "pnic0", out),
    ROW(VSHYP_GetUplinkLACPLinkState, "ps1", "pnic0", out),
    ROW(VSHYP_GetUplinkLinkState, "ps1", "pnic0", out),
    ROW(VSHYP_GetUplinks, "ps1", out),
    ROW(VSHYP_GetVSInfo, "ps1", out),
    ROW(VSHYP_PortGetTeamUplinkHint, kPortNumber, out),
    ROW(VSHYP_RTMModOp, words(kChanges), 1),
    ROW(VSHYP_RTMOp, words(kRoutes), 1),
    ROW(VSHYP_RTMPortOp, 1, 2, 3),
    ROW(VSHYP_RefreshDevNUMAInfo, "ps1"),
    ROW(VSHYP_SetGlobalMACLearningProps, kBlock),
    ROW(VSHYP_SetPortMACTable, "sw1", "port0", kPortNumber, kEntry.data()),
    ROW(VSHYP_SetRuntimeOptions, words(kOptions)),
    ROW(VSHYP_SetUplinkAdminLinkState, "ps1", "pnic1", 1),
    ROW(Warning, "%s"),
};

}  // namespace qvs::test
