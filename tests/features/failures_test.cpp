// SPDX-License-Identifier: Apache-2.0
// What single requests leave behind and print when they fail, or when the kernel answers nonsense.
#include <cerrno>
#include <cstdlib>

#include "features/runtime_host.h"
#include "support/alloc_fault.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr uint32_t kNoStatus = 0xffffffff;

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
        // A kernel that fails half way through its answer leaves no part of it.
        std::memset(buffer, 0xee, sizeof buffer);
        patchAnswer("", 0, std::string(300, '\xa5'));
        calls().ioctlResults = {-1};
        calls().ioctlErrno = EBUSY;
        EXPECT_STATUS(call(buffer), 0xbad0004);
        EXPECT_BYTES(bytesAt(buffer, size + 1), before);
        // All of the record is handed on, however little text there is in it.
        patchAnswer("", 0, std::string(300, '\xa5'));
        EXPECT_STATUS(call(buffer), 0);
        EXPECT_BYTES(bytesAt(buffer, size + 1), std::string(size, '\xa5') + '\xee');
        // What a kernel leaves out of its answer stays as it was.
        std::memset(buffer, 0xee, sizeof buffer);
        addFault("device ioctl", R"("truncate":0)");
        EXPECT_STATUS(call(buffer), 0);
        EXPECT_BYTES(bytesAt(buffer, size + 1), before);
    }
}

// Blocks by pointer: null, and what the family says of the reason - in errno where it says anything.
TEST_F(SingleFailures, BlocksByPointer) {
    constexpr struct {
        const char *name;
        size_t size;
        uint32_t fails, noMemory;  // left in errno; 0 is what is there is nobody's business
        void *(*call)();
        const char *printed = "", *printedWithoutMemory = "";
    } kRows[] = {
        {"BFD_GetSessions", 1139336, 0, 0, [] { return BFD_GetSessions(2); }},
        {"BFD_GetStats", 64, 0, 0, BFD_GetStats},
        {"KCP_GetStatus", 3, 0, 0, KCP_GetStatus},
        {"TFHYP_GetPortStats", 64, 0, 0, [] { return TFHYP_GetPortStats(0x4000001); },
         "Failed to get port stats: Busy\n", "Failed to allocate traceflow port stats\n"},
        {"TFHYP_GetINTConfig", 6, 0, 0, TFHYP_GetINTConfig, "Failed to get INT config: Busy\n"},
        {"LIVETRACEHYP_ListSession", 705, 0, 0, LIVETRACEHYP_ListSession},
        {"LIVETRACEHYP_GetPortData", 21, 0, 0, [] { return LIVETRACEHYP_GetPortData(0x4000001); }},
        {"LIVETRACEHYP_GetStats", 96, 0, 0, LIVETRACEHYP_GetStats},
        {"SPFHYP_GetGVMPortStats", 256, 0xbad0004, ENOMEM, [] { return SPFHYP_GetGVMPortStats(0x4000001); }},
        {"SPFHYP_GetSVMPortStats", 104, 0xbad0004, ENOMEM, [] { return SPFHYP_GetSVMPortStats(0x4000004); }},
        {"SPFHYP_GetSPFPortStats", 80, 0xbad0004, ENOMEM, [] { return SPFHYP_GetSPFPortStats("sw1"); }},
        {"SPFHYP_GetConfigFailureStats", 8, 0xbad0004, ENOMEM, SPFHYP_GetConfigFailureStats},
    };
    for (const auto &[name, size, fails, noMemory, call, printed, printedWithoutMemory] : kRows) {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();
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
        EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(printed) + printed);
        testing::internal::CaptureStderr();
#ifndef QVS_TEST_SANITIZED
        {
            AllocFault fault(1);
            clearTrace();
            EXPECT_EQ(call(), nullptr);
            const auto reason = static_cast<uint32_t>(errno);
            EXPECT_STATUS(noMemory != 0 ? reason : 0, noMemory);
            EXPECT_EQ(takeTrace(), "");
            EXPECT_EQ(testing::internal::GetCapturedStderr(), printedWithoutMemory);
            testing::internal::CaptureStderr();
        }
#endif
        patchAnswer("", static_cast<uint32_t>(size - 1), hex("a5a5a5a5"));
        void *answer = call();
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(static_cast<uint8_t *>(answer)[size - 1], 0xa5);
        free(answer);
        addFault("device ioctl", R"("truncate":0)");
        answer = call();
        ASSERT_NE(answer, nullptr);
        EXPECT_BYTES(bytesAt(answer, size), zeros(size));
        free(answer);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
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
        {"counts", 0, [] { return uint32_t{LIVETRACEHYP_GetCountActionData(1) != nullptr}; }, "", ""},
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

// The kernel's word is reduced to 0 or 1.
TEST_F(SingleFailures, LinkStates) {
    for (const auto get : {VSHYP_GetUplinkLinkState, VSHYP_GetUplinkLACPLinkState}) {
        uint32_t up = 0xeeeeeeee;
        addFault("device ioctl", R"("errno":"EBUSY")");
        EXPECT_STATUS(get("ps1", "pnic0", &up), 0xbad0004);
        EXPECT_EQ(up, 0xeeeeeeeeu);
        for (const uint32_t word : {0u, 1u, 2u, 0x80000000u}) {
            patchAnswer(kSwitchDevice, 0, u32(word));
            EXPECT_STATUS(get("ps1", "pnic0", &up), 0);
            EXPECT_EQ(up, word != 0 ? 1u : 0u);
        }
    }
}

// Blocks by pointer with a status: what becomes of the pointer.
TEST_F(SingleFailures, BlocksWithAStatus) {
    char before;
    const struct {
        uint32_t (*call)(void **p);
        void *refused, *noMemory;
    } rows[] = {
        {[](void **p) { return VSHYP_GetLAGTable("ps1", p); }, &before, &before},
        {[](void **p) { return VSHYP_GetSwitchInfo("sw1", p); }, &before, nullptr},
        {[](void **p) { return VSHYP_GetPortInfo("sw1", "port0", p); }, &before, nullptr},
        {[](void **p) { return VSHYP_GetRuntimeOptions(nullptr, 0, p); }, nullptr, nullptr},
    };
    for (const auto &[call, refused, noMemory] : rows) {
        void *result = &before;
        addFault("device ioctl", R"("errno":"EBUSY")");
        EXPECT_STATUS(call(&result), 0xbad0004);
        EXPECT_EQ(result, refused);
#ifndef QVS_TEST_SANITIZED
        result = &before;
        AllocFault fault(1);
        EXPECT_STATUS(call(&result), 0xbad0014);
        EXPECT_EQ(result, noMemory);
#endif
    }
    // A length whose record has no 32-bit size.
    clearTrace();
    EXPECT_STATUS(LIVETRACEHYP_CreateSession("sw1", "port0", "", UINT32_MAX - 111), 0xbad0014);
#ifndef QVS_TEST_SANITIZED
    AllocFault fault(1);
    EXPECT_STATUS(LIVETRACEHYP_CreateSession("sw1", "port0", "", 1), 0xbad0014);
#endif
    EXPECT_EQ(takeTrace(), "");
}

TEST_F(SingleFailures, ArgumentsThatReachNoDevice) {
    alignas(8) char buffer[256];
    char untouched;
    void *p = &untouched;
    EXPECT_STATUS(VSHYP_GetPortMACLearningStats("sw1", "port0", buffer), 0xbad0003);
    for (const char *mac : {"00-1b-2c-03-04-05", "0:1:2:3:4"}) {
        EXPECT_STATUS(TFHYP_CreateRequest("sw1", "port0", mac, kNoMac, 0, 0, 0, 0, 0), 0xbad0007) << mac;
        EXPECT_STATUS(TFHYP_CreateRequest("sw1", "port0", kNoMac, mac, 0, 0, 0, 0, 0), 0xbad0007) << mac;
    }
    for (const auto get : {SPFHYP_GetPortsList, SPFHYP_GetSPFPortStats}) {
        errno = 0;
        EXPECT_EQ(get("sw9"), nullptr);
        EXPECT_STATUS(static_cast<uint32_t>(errno), 0xbad0003);
    }
    EXPECT_EQ(takeTrace(), "");
    EXPECT_STATUS(VSHYP_GetPortInfo("sw1", "port9", &p), 0xbad0003);
    EXPECT_EQ(takeTrace().find("device"), std::string::npos);
    EXPECT_EQ(p, &untouched);
    EXPECT_EQ(KCP_CharDevInit(), 0);
    EXPECT_EQ(KCP_CharDevCleanup(), 0);
}

}  // namespace
}  // namespace qvs::test
