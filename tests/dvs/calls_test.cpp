// What each operation on policies asks of the state library, the shell and the kernel, and what it allocates.
#include <gtest/gtest.h>
#include <qvs/qvs.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>

#include "support/alloc_fault.h"
#include "support/bytes.h"
#include "support/host.h"
#include "support/places.h"

namespace qvs::test {
namespace {

constexpr char kSw[] = "sw1";
constexpr char kId[] = "id";
constexpr char kP[] = "port0";

std::string sessions(const char *id) {
    return u32(0xfacebeef) + u32(2) + u32(1) + u32(0) + u32(0) + field(id, 232);
}
const std::string kList = sessions("new");
const std::string kZeros = zeros(2616);
const char *const kNothing = kZeros.data();
const auto *const kOff = reinterpret_cast<const uint8_t *>(kZeros.data());
const uint8_t kOn[5] = {1, 1, 0, 0, 0};
const uint32_t kMask = 0;

// What the getters write into or hand out.
char out[2616];
auto *const kByte = reinterpret_cast<uint8_t *>(out);
uint32_t word;
int number;
void *block;

// Calls are two letters: g global, h host, p port; G get, S set, C clear. "sh" is a line for the shell, "io"
// a request to the device.
struct Row {
    const char *name;
    std::function<uint32_t()> call;
    const char *present;  // with every record stored
    const char *absent;   // with none
    int ownAllocations = 0;
};

const Row kRows[] = {
    {"GetMTU", [] { return VSDVS_GetMTU(kSw, &number); }, "sh", "sh"},
    {"SetMTU", [] { return VSDVS_SetMTU(kSw, 1500); }, "sh sh sh gS gS", "sh sh sh gS gS"},
    {"GetDVMirrorSessions", [] { return VSDVS_GetDVMirrorSessions(kSw, kP, &block); }, "pG", "pG"},
    {"SetDVMirrorSessions", [] { return VSDVS_SetDVMirrorSessions(kSw, kP, kList.data()); }, "pS", "pS"},
    {"ClearDVMirrorSessions", [] { return VSDVS_ClearDVMirrorSessions(kSw, kP); }, "pC", "pC"},
    {"AppendDVMirrorSessions", [] { return VSDVS_AppendDVMirrorSessions(kSw, kP, kList.data()); }, "pG pS",
     "pG pS", 1},
    {"RemoveDVMirrorSession", [] { return VSDVS_RemoveDVMirrorSession(kSw, kP, "old"); }, "pG pC", "pG"},
    {"GetDVMirrorSessions, host", [] { return VSDVS_GetDVMirrorSessions(kSw, "", &block); }, "hG", "hG"},
    {"SetDVMirrorSessions, host", [] { return VSDVS_SetDVMirrorSessions(kSw, "", kList.data()); }, "hS",
     "hS"},
    {"ClearDVMirrorSessions, host", [] { return VSDVS_ClearDVMirrorSessions(kSw, ""); }, "hC", "hC"},
    {"AppendDVMirrorSessions, host", [] { return VSDVS_AppendDVMirrorSessions(kSw, "", kList.data()); },
     "hG hS", "hG hS", 1},
    {"RemoveDVMirrorSession, host", [] { return VSDVS_RemoveDVMirrorSession(kSw, "", "old"); }, "hG hC",
     "hG"},
    {"GetPrivateVLANMap", [] { return VSDVS_GetPrivateVLANMap(kSw, &block, &word); }, "gG", "gG"},
    {"SetPrivateVLANMap", [] { return VSDVS_SetPrivateVLANMap(kSw, kNothing, 1); }, "gS", "gS"},
    {"SetPrivateVLANMap, empty", [] { return VSDVS_SetPrivateVLANMap(kSw, nullptr, 0); }, "gC", "gC"},
    {"GetPortVLANPolicy", [] { return VSDVS_GetPortVLANPolicy(kSw, kP, &block, &word); }, "pG pG", "pG"},
    {"SetPortVLANPolicy",
     [] { return VSDVS_SetPortVLANPolicy(kSw, kP, 1, VSDVS_NO_PRIORITY, 0, 0, nullptr, 0); }, "pS pG pC",
     "pS pG", 1},
    {"SetPortVLANPolicy, priority", [] { return VSDVS_SetPortVLANPolicy(kSw, kP, 1, 2, 1, 0, nullptr, 0); },
     "pS pS", "pS pS", 1},
    {"ClearPortVLANPolicy", [] { return VSDVS_ClearPortVLANPolicy(kSw, kP); }, "pS pG pC", "pS pG", 1},
    {"GetPortNestedVLANTagging", [] { return VSDVS_GetPortNestedVLANTagging(kSw, kP, kByte); }, "pG", "pG"},
    {"SetPortNestedVLANTagging", [] { return VSDVS_SetPortNestedVLANTagging(kSw, kP, 1); }, "pS", "pS"},
    {"GetPortSecurity", [] { return VSDVS_GetPortSecurity(kSw, kP, &word); }, "pG", "pG"},
    {"SetPortSecurity", [] { return VSDVS_SetPortSecurity(kSw, kP, &kMask); }, "pS", "pS"},
    {"GetExtraEthFilter", [] { return VSDVS_GetExtraEthFilter(kSw, kP, out); }, "pG", "pG"},
    {"SetExtraEthFilter", [] { return VSDVS_SetExtraEthFilter(kSw, kP, kNothing); }, "pS", "pS"},
    {"ClearExtraEthFilter", [] { return VSDVS_ClearExtraEthFilter(kSw, kP); }, "pC", "pC"},
    {"IsSinkPortEnabled", [] { return VSDVS_IsSinkPortEnabled(kSw, kP, kByte); }, "pG", "pG"},
    {"ConfigureSinkPort, on", [] { return VSDVS_ConfigureSinkPort(kSw, kP, 1); }, "pG pS", "pG pS"},
    {"ConfigureSinkPort, off", [] { return VSDVS_ConfigureSinkPort(kSw, kP, 0); }, "pG", "pG pS"},
    {"GetTeamingPolicyFromDVSID", [] { return VSDVS_GetTeamingPolicyFromDVSID(kId, out); }, "gG", "gG"},
    {"GetTeamingPolicy", [] { return VSDVS_GetTeamingPolicy(kSw, out); }, "gG", "gG"},
    {"SetTeamingPolicy", [] { return VSDVS_SetTeamingPolicy(kSw, kNothing); }, "gS", "gS"},
    {"ClearTeamingPolicy", [] { return VSDVS_ClearTeamingPolicy(kSw); }, "gC", "gC"},
    {"GetPortTeamingPolicy", [] { return VSDVS_GetPortTeamingPolicy(kSw, kP, out); }, "pG", "pG"},
    {"SetPortTeamingPolicy", [] { return VSDVS_SetPortTeamingPolicy(kSw, kP, kNothing); }, "pS", "pS"},
    {"ClearPortTeamingPolicy", [] { return VSDVS_ClearPortTeamingPolicy(kSw, kP); }, "pC", "pC"},
    {"GetPortTeamingOverride", [] { return VSDVS_GetPortTeamingOverride(kSw, kP, out); }, "pG", "pG"},
    {"SetPortTeamingOverride", [] { return VSDVS_SetPortTeamingOverride(kSw, kP, "n"); }, "pS", "pS"},
    {"ClearPortTeamingOverride", [] { return VSDVS_ClearPortTeamingOverride(kSw, kP); }, "pC", "pC"},
    {"GetLSTeamingPolicyTableFromDVSID", [] { return VSDVS_GetLSTeamingPolicyTableFromDVSID(kId, &block); },
     "gG", "gG"},
    {"GetLSTeamingPolicyTable", [] { return VSDVS_GetLSTeamingPolicyTable(kSw, &block); }, "gG", "gG"},
    {"SetLSTeamingPolicy", [] { return VSDVS_SetLSTeamingPolicy(kSw, kNothing); }, "gS", "gS"},
    {"ClearLSTeamingPolicy", [] { return VSDVS_ClearLSTeamingPolicy(kSw); }, "gC", "gC"},
    {"GetPortLSTeamingPolicyName", [] { return VSDVS_GetPortLSTeamingPolicyName(kSw, kP, out); }, "pG", "pG"},
    {"SetPortLSTeamingPolicy", [] { return VSDVS_SetPortLSTeamingPolicy(kSw, kP, "n"); }, "pS", "pS"},
    {"ClearPortLSTeamingPolicy", [] { return VSDVS_ClearPortLSTeamingPolicy(kSw, kP); }, "pC", "pC"},
    {"GetTxUplinkAlways", [] { return VSDVS_GetTxUplinkAlways(kSw, kP, kByte); }, "pG", "pG"},
    {"SetTxUplinkAlways", [] { return VSDVS_SetTxUplinkAlways(kSw, kP, 1); }, "pS", "pS"},
    {"GetMACLearning", [] { return VSDVS_GetMACLearning(kSw, out); }, "hG", "hG"},
    {"SetMACLearning", [] { return VSDVS_SetMACLearning(kSw, kNothing); }, "hS", "hS"},
    {"ClearMACLearning", [] { return VSDVS_ClearMACLearning(kSw); }, "hG hC", "hG"},
    {"GetPortMACLearning", [] { return VSDVS_GetPortMACLearning(kSw, kP, out); }, "pG", "pG"},
    {"SetPortMACLearning", [] { return VSDVS_SetPortMACLearning(kSw, kP, kNothing); }, "pG pS", "pG pS"},
    {"GetLearnStatic", [] { return VSDVS_GetLearnStatic(kSw, kByte); }, "hG", "hG"},
    {"SetLearnStatic", [] { return VSDVS_SetLearnStatic(kSw, 1); }, "hS", "hS"},
    {"ClearLearnStatic", [] { return VSDVS_ClearLearnStatic(kSw); }, "hC", "hC"},
    {"SetCaching", [] { return VSDVS_SetCaching(kSw, 1); }, "hS", "hS"},
    {"ClearCaching", [] { return VSDVS_ClearCaching(kSw); }, "hG hC", "hG"},
    {"GetStaticMACAllow", [] { return VSDVS_GetStaticMACAllow(kSw, kByte); }, "hG", "hG"},
    {"SetStaticMACAllow", [] { return VSDVS_SetStaticMACAllow(kSw, 1); }, "hS", "hS"},
    {"ClearStaticMACAllow", [] { return VSDVS_ClearStaticMACAllow(kSw); }, "hC", "hC"},
    {"GetMcastFilterMode", [] { return VSDVS_GetMcastFilterMode(kSw, &word); }, "gG", "gG io"},
    {"SetMcastFilterMode", [] { return VSDVS_SetMcastFilterMode(kSw, 0); }, "gG gS", "gG gS"},
    {"GetRCFType", [] { return VSDVS_GetRCFType(kSw, &word); }, "gG", "gG"},
    {"SetRCFType", [] { return VSDVS_SetRCFType(kSw, 1); }, "gS", "gS"},
    {"GetMcastUserLegacyEntries", [] { return VSDVS_GetMcastUserLegacyEntries(kSw, &block); }, "hG", "hG"},
    {"SetMcastUserLegacyEntries", [] { return VSDVS_SetMcastUserLegacyEntries(kSw, 1, kNothing); }, "hS",
     "hS", 1},
    {"ClearMcastUserLegacyEntries", [] { return VSDVS_ClearMcastUserLegacyEntries(kSw); }, "hC", "hC"},
    {"GetPortMcastUserLegacyEntries", [] { return VSDVS_GetPortMcastUserLegacyEntries(kSw, kP, &block); },
     "pG", "pG"},
    {"SetPortMcastUserLegacyEntries",
     [] { return VSDVS_SetPortMcastUserLegacyEntries(kSw, kP, 1, kNothing); }, "pS", "pS", 1},
    {"ClearPortMcastUserLegacyEntries", [] { return VSDVS_ClearPortMcastUserLegacyEntries(kSw, kP); }, "pC",
     "pC"},
    {"Discovery_GetParam", [] { return Discovery_GetParam(kSw, kByte); }, "gG", "gG"},
    {"Discovery_SetParam", [] { return Discovery_SetParam(kSw, kOn); }, "gS", "gS"},
    {"Discovery_SetParam, down", [] { return Discovery_SetParam(kSw, kOff); }, "gC", "gC"},
    {"GetTeamCheckDeploy", [] { return HealthCheck_GetTeamCheckDeploy(kSw, kByte); }, "gG", "gG"},
    {"DeployTeamCheck", [] { return HealthCheck_DeployTeamCheck(kSw, kOn); }, "gS", "gS"},
    {"DeployTeamCheck, off", [] { return HealthCheck_DeployTeamCheck(kSw, kOff); }, "gC", "gC"},
    {"GetTeamCheckParam", [] { return HealthCheck_GetTeamCheckParam(kSw, kByte); }, "gG", "gG"},
    {"SetTeamCheckParam", [] { return HealthCheck_SetTeamCheckParam(kSw, 0); }, "gS", "gS"},
    {"ClearTeamCheck", [] { return HealthCheck_ClearTeamCheck(kSw); }, "gC gC", "gC gC"},
    {"GetVLANMTUCheckDeploy", [] { return HealthCheck_GetVLANMTUCheckDeploy(kSw, kByte); }, "gG", "gG"},
    {"DeployVLANMTUCheck", [] { return HealthCheck_DeployVLANMTUCheck(kSw, kOn); }, "gS", "gS"},
    {"DeployVLANMTUCheck, off", [] { return HealthCheck_DeployVLANMTUCheck(kSw, kOff); }, "gC", "gC"},
    {"GetVLANMTUCheckParam", [] { return HealthCheck_GetVLANMTUCheckParam(kSw, kByte); }, "gG", "gG"},
    {"SetVLANMTUCheckParam", [] { return HealthCheck_SetVLANMTUCheckParam(kSw, kNothing); }, "gS", "gS"},
    {"ClearVLANMTUCheck", [] { return HealthCheck_ClearVLANMTUCheck(kSw); }, "gC gC", "gC gC"},
    {"GetVLANCheckResult", [] { return HealthCheck_GetVLANCheckResult(kSw, kP, &block); }, "pG", "pG"},
    {"GetMTUCheckResult", [] { return HealthCheck_GetMTUCheckResult(kSw, kP, &block); }, "pG", "pG"},
    {"GetIpfixGranular", [] { return IPFIXDVS_GetIpfixGranular(kSw, kP, &block); }, "pG", "pG"},
    {"SetIpfixGranular", [] { return IPFIXDVS_SetIpfixGranular(kSw, kP, kNothing); }, "pS", "pS"},
    {"SetIpfixGranular, none", [] { return IPFIXDVS_SetIpfixGranular(kSw, kP, nullptr); }, "pG pC", "pG"},
};

struct Stored {
    Where where;
    const char *key;
    std::string value;
};
const Stored kRecords[] = {
    {Global, "com.quillon.vswitch.pvlanMap", zeros(8)},
    {Global, "com.quillon.vswitch.teaming", kZeros},
    {Global, "com.quillon.vswitch.logicalswitch.teaming", zeros(4)},
    {Global, "com.quillon.vswitch.multicastFilter", text("snooping")},
    {Global, "com.quillon.vswitch.rcf.INSNType", text("ebpf")},
    {Global, "com.quillon.etherswitch.cdp", zeros(2)},
    {Global, "com.quillon.common.teamcheck.deploy", zeros(5)},
    {Global, "com.quillon.mesh.teamcheck.param", zeros(1)},
    {Global, "com.quillon.common.vlanmtucheck.deploy", zeros(5)},
    {Global, "com.quillon.mesh.vlanmtucheck.param", zeros(512)},
    {Host, "com.quillon.vswitch.uplinkMirrorSessions", sessions("old")},
    {Host, "com.quillon.vswitch.macLearning", zeros(8)},
    {Host, "com.quillon.vswitch.macLearning.learnStatic", text("true")},
    {Host, "com.quillon.vswitch.macLearning.overlay.cache", text("true")},
    {Host, "com.quillon.vswitch.macLearning.staticMACAllow", text("true")},
    {Host, "com.quillon.vswitch.mcast.user.addresses", zeros(1)},
    {Port, "com.quillon.vswitch.port.mirrorSessions", sessions("old")},
    {Port, "com.quillon.vswitch.port.vlan", zeros(8)},
    {Port, "com.quillon.vswitch.port.priority", zeros(4)},
    {Port, "com.quillon.vswitch.port.vlanNestedTag", zeros(4)},
    {Port, "com.quillon.vswitch.port.security", zeros(4)},
    {Port, "com.quillon.vswitch.port.extraEthFRP", zeros(200)},
    {Port, "com.quillon.vswitch.port.teaming.policy", kZeros},
    {Port, "com.quillon.vswitch.port.teaming.override", text("n")},
    {Port, "com.quillon.vswitch.port.logicalswitch.teaming", field("n", 136)},
    {Port, "com.quillon.vswitch.port.txUplink", text("always")},
    {Port, "com.quillon.vswitch.port.macManagement", zeros(11)},
    {Port, "com.quillon.vswitch.port.mcast.user.addresses.override", zeros(1)},
    {Port, "com.quillon.common.port.volatile.vlanchkresult", zeros(4)},
    {Port, "com.quillon.common.port.volatile.mtuchkresult", zeros(4)},
    {Port, "com.quillon.net.ipfix.port", zeros(184)},
};

// "pG pS" for the trace of a get and a set of a port's property.
std::string summary(const std::string &trace) {
    const std::pair<const char *, const char *> kWords[] = {
        {"state GlobalProp", "g"}, {"state HostProp", "h"}, {"state PortData", "p"},
        {"shell treesh", "sh"},    {"device ioctl", "io"},  {"device open", ""},
    };
    std::string calls;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        const auto *found = std::find_if(std::begin(kWords), std::end(kWords),
                                         [&](const auto &known) { return line.starts_with(known.first); });
        if (found == std::end(kWords)) return line;
        std::string call = found->second;
        if (call.size() == 1) call += line[std::string_view(found->first).size()];
        if (!call.empty()) calls += (calls.empty() ? "" : " ") + call;
    }
    return calls;
}

class Calls : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch(kSw, kId, nullptr, 106, 0, 0, 0, 1), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
    }

    static void prepare(bool present) {
        for (const Stored &record : kRecords) {
            if (present) {
                ASSERT_STATUS(store(record.where, record.key, record.value), 0) << record.key;
            } else {
                clear(record.where, record.key);
            }
        }
        clearTrace();
    }

    static uint32_t run(const Row &row) {
        block = nullptr;
        const uint32_t status = row.call();
        VSDVS_FreeMemory(block);
        return status;
    }
};

TEST_F(Calls, AreExactlyThese) {
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.name);
        prepare(true);
        EXPECT_STATUS(run(row), 0);
        EXPECT_EQ(summary(takeTrace()), row.present);
        prepare(false);
        run(row);
        EXPECT_EQ(summary(takeTrace()), row.absent);
    }
}

TEST_F(Calls, AllocateOnlyRecordsOfTheirOwn) {
    SKIP_WITHOUT_ALLOC_FAULT();
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.name);
        for (const bool present : {true, false}) {
            prepare(present);
            const AllocFault counting(0);
            run(row);
            EXPECT_EQ(counting.seen(), row.ownAllocations);
        }
    }
}

}  // namespace
}  // namespace qvs::test
