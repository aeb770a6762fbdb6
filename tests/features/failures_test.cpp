// What single requests leave behind and print when they fail, or when the kernel answers nonsense.
#include <qvs/bfd.h>
#include <qvs/discovery.h>
#include <qvs/dvs.h>
#include <qvs/healthcheck.h>
#include <qvs/ipfixhyp.h>
#include <qvs/kcp.h>
#include <qvs/livetracehyp.h>
#include <qvs/spfhyp.h>
#include <qvs/tfhyp.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "features/runtime_host.h"
#include "support/alloc_fault.h"
#include "support/bytes.h"
#include "support/host.h"

namespace qvs::test {
namespace {

constexpr uint32_t kNoStatus = 0xffffffff;

constexpr uint32_t kNoWords[64] = {};
constexpr const void *kNothing = kNoWords;
constexpr char kNoMac[] = "0:0:0:0:0:0";

class SingleFailures : public RuntimeHost {};

// What a request that fails, or an answer that holds nothing, leaves of the caller's buffer, which is full of
// 0xee.
enum Left { Untouched, Cleared };

TEST_F(SingleFailures, BuffersOfTheCaller) {
    constexpr struct {
        const char *name;
        size_t size;
        Left left;
        uint32_t (*call)(void *buffer);
    } kRows[] = {
        {"GetVSInfo", 220, Cleared, [](void *b) { return VSHYP_GetVSInfo("ps1", b); }},
        {"PortGetTeamUplinkHint", 32, Cleared,
         [](void *b) { return VSHYP_PortGetTeamUplinkHint(0x4000001, b); }},
        {"GetUplinkDVPortID", 48, Cleared, [](void *b) { return VSHYP_GetUplinkDVPortID("pnic0", b); }},
        {"DVSAliasToSwitchId", 64, Cleared, [](void *b) { return VSHYP_DVSAliasToSwitchId("sw1", b); }},
        {"GetPortMACLearningStats", 52, Cleared,
         [](void *b) { return VSHYP_GetPortMACLearningStats("port0", "sw1", b); }},
        {"GetGlobalMACLearningProps", 10, Untouched, VSHYP_GetGlobalMACLearningProps},
        {"GetSwitchMACLearningInfo", 88, Untouched,
         [](void *b) { return VSHYP_GetSwitchMACLearningInfo("ps1", b); }},
        {"GetRARPStats", 16, Cleared, [](void *b) { return VSHYP_GetRARPStats("ps1", b); }},
        {"GetServicePortTeamingStats", 48, Cleared,
         [](void *b) { return VSHYP_GetServicePortTeamingStats("ps1", b); }},
        {"GetDVMirrorSessionStats", 121, Untouched,
         [](void *b) { return VSHYP_GetDVMirrorSessionStats("sw1", "one", b); }},
        {"GetMcastFilterMode", 4, Untouched,
         [](void *b) { return VSHYP_GetMcastFilterMode("ps1", static_cast<uint32_t *>(b)); }},
        {"GetPortLSTeamingPolicyName", 136, Cleared,
         [](void *b) { return VSHYP_GetPortLSTeamingPolicyName(0x4000001, static_cast<char *>(b)); }},
        {"GetDVMirrorAgentWorldStats", 76, Untouched, VSHYP_GetDVMirrorAgentWorldStats},
        {"GetIpfixStats", 192, Untouched, [](void *b) { return IPFIXHYP_GetIpfixStats("sw1", b); }},
        {"GetIpfixGranularStats", 192, Untouched,
         [](void *b) { return IPFIXHYP_GetIpfixGranularStats("sw1", "port0", b); }},
    };
    for (const auto &[name, size, left, call] : kRows) {
        SCOPED_TRACE(name);
        alignas(8) char buffer[256];
        const std::string before = (left == Cleared ? zeros(size) : std::string(size, '\xee')) + '\xee';
        for (const char *step : {"device open", "device ioctl"}) {
            std::memset(buffer, 0xee, sizeof buffer);
            addFault(step, R"("errno":"EBUSY")");
            EXPECT_STATUS(call(buffer), 0xbad0004);
            EXPECT_BYTES(bytesAt(buffer, size + 1), before);
        }
        // A kernel that fails half way through its answer leaves no part of it.
        std::memset(buffer, 0xee, sizeof buffer);
        addFault("device ioctl",
                 R"("output":[{"offset":0,"hex":")" + toHex(std::string(300, '\xa5')) + "\"}]");
        calls().ioctlResults = {-1};
        calls().ioctlErrno = EBUSY;
        EXPECT_STATUS(call(buffer), 0xbad0004);
        EXPECT_BYTES(bytesAt(buffer, size + 1), before);
        // All of the record is handed on, however little text there is in it.
        addFault("device ioctl",
                 R"("output":[{"offset":0,"hex":")" + toHex(std::string(300, '\xa5')) + "\"}]");
        EXPECT_STATUS(call(buffer), 0);
        EXPECT_BYTES(bytesAt(buffer, size + 1), std::string(size, '\xa5') + '\xee');
        // What a kernel leaves out of its answer stays as it was.
        std::memset(buffer, 0xee, sizeof buffer);
        addFault("device ioctl", R"("truncate":0)");
        EXPECT_STATUS(call(buffer), 0);
        EXPECT_BYTES(bytesAt(buffer, size + 1), before);
    }
}

// The same for what is read from the state library.
TEST_F(SingleFailures, RecordsOfTheCaller) {
    static constexpr char kGlobal[] = "state GlobalPropGet", kHost[] = "state HostPropGet",
                          kPort[] = "state PortDataGet";
    static constexpr auto kByte = [](void *b) { return static_cast<uint8_t *>(b); };
    static constexpr auto kWord = [](void *b) { return static_cast<uint32_t *>(b); };
    static constexpr auto kText = [](void *b) { return static_cast<char *>(b); };
    static constexpr char kSw[] = "sw1", kP[] = "port0";
    constexpr struct {
        const char *name, *step;
        size_t cleared;  // bytes, when it is cleared first
        uint32_t (*call)(void *buffer);
    } kRows[] = {
        {"GetParam", kGlobal, 0, [](void *b) { return Discovery_GetParam(kSw, kByte(b)); }},
        {"GetTeamCheckDeploy", kGlobal, 0,
         [](void *b) { return HealthCheck_GetTeamCheckDeploy(kSw, kByte(b)); }},
        {"GetTeamCheckParam", kGlobal, 0,
         [](void *b) { return HealthCheck_GetTeamCheckParam(kSw, kByte(b)); }},
        {"GetVLANMTUCheckDeploy", kGlobal, 0,
         [](void *b) { return HealthCheck_GetVLANMTUCheckDeploy(kSw, kByte(b)); }},
        {"GetVLANMTUCheckParam", kGlobal, 0,
         [](void *b) { return HealthCheck_GetVLANMTUCheckParam(kSw, kByte(b)); }},
        {"GetPortNestedVLANTagging", kPort, 0,
         [](void *b) { return VSDVS_GetPortNestedVLANTagging(kSw, kP, kByte(b)); }},
        {"GetPortSecurity", kPort, 0, [](void *b) { return VSDVS_GetPortSecurity(kSw, kP, kWord(b)); }},
        {"GetExtraEthFilter", kPort, 0, [](void *b) { return VSDVS_GetExtraEthFilter(kSw, kP, b); }},
        {"IsSinkPortEnabled", kPort, 0, [](void *b) { return VSDVS_IsSinkPortEnabled(kSw, kP, kByte(b)); }},
        {"GetTeamingPolicy", kGlobal, 0, [](void *b) { return VSDVS_GetTeamingPolicy(kSw, b); }},
        {"GetTeamingPolicyFromDVSID", kGlobal, 0,
         [](void *b) { return VSDVS_GetTeamingPolicyFromDVSID("id", b); }},
        {"GetPortTeamingPolicy", kPort, 0, [](void *b) { return VSDVS_GetPortTeamingPolicy(kSw, kP, b); }},
        {"GetPortTeamingOverride", kPort, 81,
         [](void *b) { return VSDVS_GetPortTeamingOverride(kSw, kP, kText(b)); }},
        {"GetPortLSTeamingPolicyName", kPort, 136,
         [](void *b) { return VSDVS_GetPortLSTeamingPolicyName(kSw, kP, kText(b)); }},
        {"GetTxUplinkAlways", kPort, 0, [](void *b) { return VSDVS_GetTxUplinkAlways(kSw, kP, kByte(b)); }},
        {"GetMACLearning", kHost, 0, [](void *b) { return VSDVS_GetMACLearning(kSw, b); }},
        {"GetPortMACLearning", kPort, 0, [](void *b) { return VSDVS_GetPortMACLearning(kSw, kP, b); }},
        {"GetLearnStatic", kHost, 0, [](void *b) { return VSDVS_GetLearnStatic(kSw, kByte(b)); }},
        {"GetStaticMACAllow", kHost, 0, [](void *b) { return VSDVS_GetStaticMACAllow(kSw, kByte(b)); }},
        {"GetMcastFilterMode", kGlobal, 0, [](void *b) { return VSDVS_GetMcastFilterMode(kSw, kWord(b)); }},
        {"GetGlobProp", kGlobal, 0,
         [](void *b) {
             VSDVS_PropBuffer buffer = {256, b};
             return VSDVS_GetGlobProp(kSw, "com.quillon.common.alias", &buffer, nullptr, 1);
         }},
        {"DvPortIDToPortID", kPort, 0, [](void *b) { return VSDVS_DvPortIDToPortID(kSw, kP, kWord(b)); }},
    };
    alignas(8) static char buffer[4096];
    for (const auto &[name, step, cleared, call] : kRows) {
        SCOPED_TRACE(name);
        std::memset(buffer, 0xee, sizeof buffer);
        addFault(step, R"("status":"0xbad0004")");
        EXPECT_STATUS(call(buffer), 0xbad0004);
        EXPECT_EQ(bytesAt(buffer, sizeof buffer),
                  zeros(cleared) + std::string(sizeof buffer - cleared, '\xee'));
    }
}

// Blocks by pointer: null, and what the family says of the reason - in errno where it says anything.
TEST_F(SingleFailures, BlocksByPointer) {
    constexpr struct {
        const char *name;
        size_t size;
        uint32_t fails, noMemory;  // left in errno; 0 is what is there is nobody's business
        void *(*call)();
    } kRows[] = {
        {"BFD_GetSessions", 1139336, 0, 0, [] { return BFD_GetSessions(2); }},
        {"BFD_GetStats", 64, 0, 0, BFD_GetStats},
        {"KCP_GetStatus", 3, 0, 0, KCP_GetStatus},
        {"TFHYP_GetPortStats", 64, 0, 0, [] { return TFHYP_GetPortStats(0x4000001); }},
        {"TFHYP_GetINTConfig", 6, 0, 0, TFHYP_GetINTConfig},
        {"LIVETRACEHYP_ListSession", 705, 0, 0, LIVETRACEHYP_ListSession},
        {"LIVETRACEHYP_GetPortData", 21, 0, 0, [] { return LIVETRACEHYP_GetPortData(0x4000001); }},
        {"LIVETRACEHYP_GetStats", 96, 0, 0, LIVETRACEHYP_GetStats},
        {"SPFHYP_GetGVMPortStats", 256, 0xbad0004, ENOMEM, [] { return SPFHYP_GetGVMPortStats(0x4000001); }},
        {"SPFHYP_GetSVMPortStats", 104, 0xbad0004, ENOMEM, [] { return SPFHYP_GetSVMPortStats(0x4000004); }},
        {"SPFHYP_GetSPFPortStats", 80, 0xbad0004, ENOMEM, [] { return SPFHYP_GetSPFPortStats("sw1"); }},
        {"SPFHYP_GetConfigFailureStats", 8, 0xbad0004, ENOMEM, SPFHYP_GetConfigFailureStats},
    };
    testing::internal::CaptureStderr();
    for (const auto &[name, size, fails, noMemory, call] : kRows) {
        SCOPED_TRACE(name);
        for (const char *step : {"device open", "device ioctl"}) {
            addFault(step, R"("errno":"EBUSY")");
            errno = 0;
            // What close leaves in errno does not hide the status.
            calls().closeErrno = EINTR;
            EXPECT_EQ(call(), nullptr);
            const auto reason = static_cast<uint32_t>(errno);
            EXPECT_STATUS(fails != 0 ? reason : 0, fails);
            calls().closeErrno = 0;
        }
#ifndef QVS_TEST_SANITIZED
        {
            AllocFault fault(1);
            clearTrace();
            EXPECT_EQ(call(), nullptr);
            const auto reason = static_cast<uint32_t>(errno);
            EXPECT_STATUS(noMemory != 0 ? reason : 0, noMemory);
            EXPECT_EQ(takeTrace(), "");
        }
#endif
        addFault("device ioctl",
                 R"("output":[{"offset":)" + std::to_string(size - 1) + R"(,"hex":"a5a5a5a5"}])");
        void *answer = call();
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(static_cast<uint8_t *>(answer)[size - 1], 0xa5);
        free(answer);
        addFault("device ioctl", R"("truncate":0)");
        answer = call();
        ASSERT_NE(answer, nullptr);
        EXPECT_BYTES(bytesAt(answer, size), zeros(size));
        free(answer);
    }
    testing::internal::GetCapturedStderr();
}

TEST_F(SingleFailures, PrintedLines) {
    const uint8_t config[6] = {};
    const struct {
        const char *name;
        uint32_t result;
        std::function<uint32_t()> call;
        const char *out, *err;
        const char *fault = R"("errno":"EBUSY")";
    } rows[] = {
        {"refused log level", kNoStatus, [] { return static_cast<uint32_t>(BFD_SetLogLevel(2)); },
         "Not a valid log level.\n", ""},
        {"log level", kNoStatus, [] { return static_cast<uint32_t>(BFD_SetLogLevel(1)); }, "", ""},
        {"read log level", kNoStatus, BFD_GetLogLevel, "", ""},
        {"telemetry", 0xbad0004, [&] { return TFHYP_SetINTConfig(config); }, "",
         "Failed to set INT config: Busy\n"},
        {"telemetry, gone", 0xbad000f, [&] { return TFHYP_SetINTConfig(config); }, "",
         "Failed to set INT config: No such SCSI adapter\n", R"("errno":"ENODEV")"},
        {"read telemetry", 0, [] { return uint32_t{TFHYP_GetINTConfig() != nullptr}; }, "",
         "Failed to get INT config: Busy\n"},
        {"port statistics", 0, [] { return uint32_t{TFHYP_GetPortStats(0x4000001) != nullptr}; }, "",
         "Failed to get port stats: Busy\n"},
        {"sessions", 0, [] { return uint32_t{LIVETRACEHYP_ListSession() != nullptr}; }, "", ""},
        {"port data", 0, [] { return uint32_t{LIVETRACEHYP_GetPortData(0x4000001) != nullptr}; }, "", ""},
        {"counts", 0, [] { return uint32_t{LIVETRACEHYP_GetCountActionData(1) != nullptr}; }, "", ""},
        {"BFD sessions", 0, [] { return uint32_t{BFD_GetSessions(1) != nullptr}; }, "", ""},
        {"KCP", 0, [] { return uint32_t{KCP_GetVIFList() != nullptr}; }, "", ""},
        {"trace", 0xbad0004,
         [] { return TFHYP_CreateRequest("sw1", "port0", kNoMac, kNoMac, 0, 0, 0, 0, 0); }, "", ""},
    };
    for (const auto &[name, result, call, out, err, action] : rows) {
        SCOPED_TRACE(name);
        clearFaults();
        addFault("device ioctl", action);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_STATUS(call(), result);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), out);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), err);
    }
#ifndef QVS_TEST_SANITIZED
    clearFaults();
    constexpr struct {
        void *(*call)();
        const char *err;
    } kWithoutMemory[] = {
        {[] { return TFHYP_GetPortStats(1); }, "Failed to allocate traceflow port stats\n"},
        {TFHYP_GetINTConfig, ""},
    };
    for (const auto &[call, err] : kWithoutMemory) {
        testing::internal::CaptureStderr();
        AllocFault fault(1);
        EXPECT_EQ(call(), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), err);
    }
#endif
}

// Log levels and flags that no request is made for.
TEST_F(SingleFailures, BfdArguments) {
    testing::internal::CaptureStdout();
    for (const uint32_t level : {2u, 4u, 6u, 32u, 33u, 35u, 37u, UINT32_MAX})
        EXPECT_EQ(BFD_SetLogLevel(level), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout().size(), 8 * std::strlen("Not a valid log level.\n"));
    for (const uint8_t flags : std::initializer_list<uint8_t>{0x00, 0x04, 0xfc})
        EXPECT_EQ(BFD_GetSessions(flags), nullptr);
    EXPECT_EQ(takeTrace(), "");
    for (const uint32_t level : {0u, 1u, 3u, 5u})
        EXPECT_EQ(BFD_SetLogLevel(level), 0);
    // What the kernel says, even if it can be none of them; any result of 0 or more is a success.
    patchAnswer(kBfd, 0, u32(0xfffffffe));
    calls().ioctlResults = {7};
    EXPECT_EQ(BFD_GetLogLevel(), 0xfffffffe);
    // A failure answers the device's own result.
    calls().ioctlResults = {-5, -5};
    EXPECT_EQ(BFD_GetLogLevel(), static_cast<uint32_t>(-5));
    EXPECT_EQ(BFD_SetLogLevel(1), -5);
    addFault("device open", R"("errno":"ENOENT")", 1, 2);
    EXPECT_EQ(BFD_GetLogLevel(), kNoStatus);
    EXPECT_EQ(BFD_SetLogLevel(1), -1);
#ifndef QVS_TEST_SANITIZED
    AllocFault fault(1);
    EXPECT_EQ(BFD_GetLogLevel(), kNoStatus);
#endif
}

// Whatever changes something tells of the device's refusal by its status.
TEST_F(SingleFailures, Changes) {
    const struct {
        const char *name;
        uint32_t (*call)();
    } rows[] = {
        {"SetUplinkAdminLinkState", [] { return VSHYP_SetUplinkAdminLinkState("ps1", "pnic0", 0); }},
        {"RefreshDevNUMAInfo", [] { return VSHYP_RefreshDevNUMAInfo("ps1"); }},
        {"SetPortMACTable", [] { return VSHYP_SetPortMACTable("sw1", "port0", 0, kNothing); }},
        {"ClearPortMACTable", [] { return VSHYP_ClearPortMACTable("sw1", nullptr, 1, kNothing); }},
        {"SetGlobalMACLearningProps", [] { return VSHYP_SetGlobalMACLearningProps(kNothing); }},
        {"SetRuntimeOptions", [] { return VSHYP_SetRuntimeOptions(kNoWords); }},
        {"RTMOp", [] { return VSHYP_RTMOp(kNoWords, 1); }},
        {"RTMModOp", [] { return VSHYP_RTMModOp(kNoWords, 1); }},
        {"RTMPortOp", [] { return VSHYP_RTMPortOp(1, 2, 3); }},
        {"CreateRequest", [] { return TFHYP_CreateRequest("sw1", "port0", kNoMac, kNoMac, 0, 0, 0, 0, 0); }},
        {"ClearTraceflowConfig", [] { return TFHYP_ClearTraceflowConfig("sw1"); }},
        {"CreateSession", [] { return LIVETRACEHYP_CreateSession("sw1", "port0", kNothing, 1); }},
        {"PlumbSpfPort", [] { return SPFHYP_PlumbSpfPort("ps1", "port0", nullptr, kNoMac); }},
        {"UnPlumbSpfPort", [] { return SPFHYP_UnPlumbSpfPort("ps1", "port0"); }},
    };
    for (const auto &[name, call] : rows) {
        SCOPED_TRACE(name);
        for (const char *step : {"device open", "device ioctl"}) {
            addFault(step, R"("errno":"EBUSY")");
            EXPECT_STATUS(call(), 0xbad0004);
        }
    }
}

TEST_F(SingleFailures, RuntimeOptionsAndSessions) {
    void *options = &options;
    addFault("device ioctl", R"("errno":"EBUSY")");
    EXPECT_STATUS(VSHYP_GetRuntimeOptions(nullptr, 0, &options), 0xbad0004);
    EXPECT_EQ(options, nullptr);
    addFault("device ioctl", R"("errno":"EBUSY")");
    EXPECT_STATUS(LIVETRACEHYP_CreateSession("sw1", "port0", "", 1), 0xbad0004);
    // A length whose record has no 32-bit size.
    clearTrace();
    EXPECT_STATUS(LIVETRACEHYP_CreateSession("sw1", "port0", "", UINT32_MAX - 111), 0xbad0014);
#ifndef QVS_TEST_SANITIZED
    options = &options;
    AllocFault fault(1);
    EXPECT_STATUS(VSHYP_GetRuntimeOptions(nullptr, 0, &options), 0xbad0014);
    EXPECT_EQ(options, nullptr);
    AllocFault again(1);
    EXPECT_STATUS(LIVETRACEHYP_CreateSession("sw1", "port0", "", 1), 0xbad0014);
#endif
    EXPECT_EQ(takeTrace(), "");
}

TEST_F(SingleFailures, ArgumentsThatReachNoDevice) {
    const char *const none = nullptr;
    const uint8_t bytes[128] = {};
    alignas(8) char buffer[256];
    auto *const word = reinterpret_cast<uint32_t *>(buffer);
    char untouched;
    void *p = &untouched;
    const auto trace = [](const char *alias, const char *port, const char *from, const char *to) {
        return TFHYP_CreateRequest(alias, port, from, to, 0, 0, 0, 0, 0);
    };
    errno = 0;
    const struct {
        const char *name;
        uint32_t actual, expected = 0xbad0007;
    } rows[] = {
        {"GetMACTable alias", VSHYP_GetMACTable(none, 0, &p)},
        {"GetMACTable result", VSHYP_GetMACTable("sw9", 0, nullptr)},
        {"GetMACTable unknown", VSHYP_GetMACTable("ps1", 0, &p), 0xbad0003},
        {"GetTeamMACTable alias", VSHYP_GetTeamMACTable(none, 0, &p)},
        {"GetTeamMACTable result", VSHYP_GetTeamMACTable("sw9", 0, nullptr)},
        {"GetPortMACTable result", VSHYP_GetPortMACTable("sw9", "port0", 0, nullptr)},
        {"GetPortMACTable unknown", VSHYP_GetPortMACTable("id", "port0", 0, &p), 0xbad0003},
        {"GetStaticLectx alias", VSHYP_GetStaticLectx(none, &p)},
        {"GetStaticLectx result", VSHYP_GetStaticLectx("sw9", nullptr)},
        {"GetPortStaticLectx result", VSHYP_GetPortStaticLectx("sw9", "port0", nullptr)},
        {"GetMACLearningAllPorts alias", VSHYP_GetMACLearningAllPorts(none, &p)},
        {"GetMACLearningAllPorts result", VSHYP_GetMACLearningAllPorts("sw9", nullptr)},
        {"GetSwitchMACLearningStats alias", VSHYP_GetSwitchMACLearningStats(none, &p)},
        {"GetSwitchMACLearningStats result", VSHYP_GetSwitchMACLearningStats("sw9", nullptr)},
        {"GetL2Security alias", VSHYP_GetL2Security(none, &p)},
        {"GetL2Security result", VSHYP_GetL2Security("sw9", nullptr)},
        {"GetPortMACLearningStats result", VSHYP_GetPortMACLearningStats("port0", "sw9", nullptr)},
        {"GetPortMACLearningStats swapped", VSHYP_GetPortMACLearningStats("sw1", "port0", buffer), 0xbad0003},
        {"GetSwitchMACLearningInfo name", VSHYP_GetSwitchMACLearningInfo(none, buffer)},
        {"GetSwitchMACLearningInfo result", VSHYP_GetSwitchMACLearningInfo("ps1", nullptr)},
        {"GetGlobalMACLearningProps", VSHYP_GetGlobalMACLearningProps(nullptr)},
        {"SetGlobalMACLearningProps", VSHYP_SetGlobalMACLearningProps(nullptr)},
        {"SetPortMACTable entry", VSHYP_SetPortMACTable("sw9", "port0", 0, nullptr)},
        {"SetPortMACTable unknown", VSHYP_SetPortMACTable("sw9", none, 1, bytes), 0xbad0003},
        {"ClearPortMACTable entry", VSHYP_ClearPortMACTable("sw9", "port0", 0, nullptr)},
        {"ClearPortMACTable unknown", VSHYP_ClearPortMACTable("sw9", none, 1, bytes), 0xbad0003},
        {"GetRARPStats", VSHYP_GetRARPStats("ps1", nullptr)},
        {"GetServicePortTeamingStats", VSHYP_GetServicePortTeamingStats("ps1", nullptr)},
        {"SetRuntimeOptions", VSHYP_SetRuntimeOptions(nullptr)},
        {"GetPromiscSessionActiveDsts alias", VSHYP_GetPromiscSessionActiveDsts(none, &p)},
        {"GetPromiscSessionActiveDsts result", VSHYP_GetPromiscSessionActiveDsts("sw9", nullptr)},
        {"GetDVMirrorSessionIDs alias", VSHYP_GetDVMirrorSessionIDs(none, &p)},
        {"GetDVMirrorSessionStats alias", VSHYP_GetDVMirrorSessionStats(none, "one", buffer)},
        {"GetDVMirrorSessionStats session", VSHYP_GetDVMirrorSessionStats("sw9", none, buffer)},
        {"GetDVMirrorSessionStats result", VSHYP_GetDVMirrorSessionStats("sw9", "one", nullptr)},
        {"GetDVMirrorSessionStats unknown", VSHYP_GetDVMirrorSessionStats("sw9", "one", buffer), 0xbad0003},
        {"GetDVMirrorAgentWorldStats", VSHYP_GetDVMirrorAgentWorldStats(nullptr)},
        {"GetMcastFilterMode name", VSHYP_GetMcastFilterMode(none, word)},
        {"GetMcastFilterMode result", VSHYP_GetMcastFilterMode("ps1", nullptr)},
        {"GetMcastFilters name", VSHYP_GetMcastFilters(none, 0, 0, &p)},
        {"GetMcastFilters result", VSHYP_GetMcastFilters("ps1", 0, 0, nullptr)},
        {"GetMcastFilterStats name", VSHYP_GetMcastFilterStats(none, 0, 2, bytes, &p)},
        {"GetMcastFilterStats group", VSHYP_GetMcastFilterStats("ps1", 0, 2, nullptr, &p)},
        {"GetMcastFilterStats result", VSHYP_GetMcastFilterStats("ps1", 0, 2, bytes, nullptr)},
        {"GetPortLSTeamingPolicyName", VSHYP_GetPortLSTeamingPolicyName(1, nullptr)},
        {"GetLSTeamingPolicyTable alias", VSHYP_GetLSTeamingPolicyTable(none, &p)},
        {"GetLSTeamingPolicyTable result", VSHYP_GetLSTeamingPolicyTable("sw9", nullptr)},
        {"CreateRequest alias", trace(none, "port0", kNoMac, kNoMac)},
        {"CreateRequest port", trace("sw9", none, kNoMac, kNoMac)},
        {"CreateRequest source", trace("sw9", "port0", none, kNoMac)},
        {"CreateRequest destination", trace("sw9", "port0", kNoMac, none)},
        {"CreateRequest unknown", trace("sw9", "port0", "nonsense", kNoMac), 0xbad0003},
        {"CreateRequest hyphens", trace("sw1", "port0", "00-1b-2c-03-04-05", kNoMac)},
        {"CreateRequest five groups", trace("sw1", "port0", kNoMac, "0:1:2:3:4")},
        {"SetTraceflowConfig", TFHYP_SetTraceflowConfig(none, 1)},
        {"ClearTraceflowConfig", TFHYP_ClearTraceflowConfig(none)},
        {"ClearTraceflowConfig unknown", TFHYP_ClearTraceflowConfig("sw9"), 0xbad0003},
        {"SetINTConfig", TFHYP_SetINTConfig(nullptr)},
        {"CreateSession alias", LIVETRACEHYP_CreateSession(none, "port0", bytes, 1)},
        {"CreateSession port", LIVETRACEHYP_CreateSession("sw9", none, bytes, 1)},
        {"CreateSession data", LIVETRACEHYP_CreateSession("sw9", "port0", nullptr, 0)},
        {"CreateSession unknown", LIVETRACEHYP_CreateSession("sw9", "port0", bytes, 1), 0xbad0003},
        {"GetIpfixStats alias", IPFIXHYP_GetIpfixStats(none, buffer)},
        {"GetIpfixStats result", IPFIXHYP_GetIpfixStats("sw9", nullptr)},
        {"GetIpfixStats unknown", IPFIXHYP_GetIpfixStats("sw9", buffer), 0xbad0003},
        {"GetIpfixGranularStats port", IPFIXHYP_GetIpfixGranularStats("sw9", none, buffer)},
        {"GetIpfixGranularStats result", IPFIXHYP_GetIpfixGranularStats("sw9", "port0", nullptr)},
        {"GetPortsList unknown", SPFHYP_GetPortsList("sw9") == nullptr ? static_cast<uint32_t>(errno) : 0,
         0xbad0003},
        {"GetSPFPortStats unknown",
         SPFHYP_GetSPFPortStats("sw9") == nullptr ? static_cast<uint32_t>(errno) : 0, 0xbad0003},
    };
    for (const auto &[name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(actual, expected);
    }
    EXPECT_EQ(p, &untouched);
    EXPECT_EQ(takeTrace(), "");
    EXPECT_EQ(KCP_CharDevInit(), 0);
    EXPECT_EQ(KCP_CharDevCleanup(), 0);
}

}  // namespace
}  // namespace qvs::test
