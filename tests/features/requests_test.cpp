// SPDX-License-Identifier: Apache-2.0
// Every single request to the kernel's devices, byte for byte, and nothing beside it.
#include <cstdlib>

#include "features/runtime_host.h"
#include "support/frame.h"
#include "support/test.h"

namespace qvs::test {
namespace {

// An entry of the MAC table that the kernel takes: 86 bytes, none of them zero.
std::string macEntry() {
    std::string entry = hex("020304050607 01 08 0101");
    for (char byte = 11; entry.size() < 86; ++byte)
        entry += byte;
    return entry;
}
const std::string kEntry = macEntry();

// Blocks for the route-table module, as long as their count says: 2 * 136 + 9 and 2 * 5 + 132.
const std::string kRoutes = u32(2) + zeros(276) + "\x7f";
const std::string kChanges = u32(2) + zeros(137) + "\x7f";
const uint32_t *wordsOf(const std::string &block) {
    return reinterpret_cast<const uint32_t *>(block.data());
}

const std::string kLong(200, 'x');
constexpr uint8_t kBytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
// 14 bytes: option 7 with the value aa, option 0x1234 with bb.
const std::string kOptions = hex("0e000000 0700 0100 aa 3412 0100 bb");
constexpr uint16_t kOptionIds[] = {7, 0x1234};

alignas(8) char area[256];
uint32_t *const word = reinterpret_cast<uint32_t *>(area);
void *block = nullptr;

class Requests : public RuntimeHost {
  protected:
    void SetUp() override {
        RuntimeHost::SetUp();
        calls().onIoctl = [this](unsigned long, const void *argument) {
            const Frame frame(device_, argument);
            EXPECT_EQ(frame.reserved, 0u);
            EXPECT_EQ(frame.inLength == 0, frame.inAddress == 0);
            EXPECT_EQ(frame.outLength == 0, frame.outAddress == 0);
        };
    }

    // What the call has just asked of the device, and of the state library before; x31 stands for the digits
    // of a name of 31 characters. An answer by pointer goes back to where it came from.
    template <typename Result>
    auto expect(std::string line, Result result, const std::string &before = "") {
        SCOPED_TRACE(line);
        for (size_t at; (at = line.find(":x")) != std::string::npos;) {
            size_t digits = 0;
            const int length = std::stoi(line.substr(at + 2), &digits);
            std::string name;
            for (int i = 0; i < length; ++i)
                name += "78";
            line.replace(at + 1, 1 + digits, name);
        }
        EXPECT_EQ(takeTrace(), before + request(device_, line, answer_));
        free(block), block = nullptr;
        if constexpr (std::is_pointer_v<Result>) {
            free(result);
        } else {
            return result;
        }
    }

    const char *device_ = kSwitchDevice;
    const char *answer_ = "0";
};

TEST_F(Requests, SwitchDevice) {
    expect("1001 GetRARPStats 268 16 0:707331", VSHYP_GetRARPStats("ps1", area));
    expect("1002 GetServicePortTeamingStats 268 48 0:707331", VSHYP_GetServicePortTeamingStats("ps1", area));
    expect("2001 SetRuntimeOptions 14 0 0:0e 4:07 6:01 8:aa341201 13:bb",
           VSHYP_SetRuntimeOptions(wordsOf(kOptions)));
    expect("1003 GetRuntimeOptions 4 4096 0:07 2:3412", VSHYP_GetRuntimeOptions(kOptionIds, 2, &block));
    expect("1003 GetRuntimeOptions 0 4096", VSHYP_GetRuntimeOptions(kOptionIds, 0, &block));
    expect("1003 GetRuntimeOptions 0 4096", VSHYP_GetRuntimeOptions(nullptr, 2, &block));
    expect("1006 GetDVMirrorSessionStats 268 121 0:707331 176:6f6e65",
           VSHYP_GetDVMirrorSessionStats("sw1", "one", area));
    expect("1007 GetMcastFilterMode 268 4 0:707331", VSHYP_GetMcastFilterMode("ps1", word));
    expect("100c GetUplinkLinkState 268 4 0:707331 176:706e696330",
           VSHYP_GetUplinkLinkState("ps1", "pnic0", word));
    expect("100d GetUplinkLACPLinkState 268 4 0:707331 176:706e696330",
           VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", word));
    expect("100e GetLAGTable 268 35588 0:707331", VSHYP_GetLAGTable("ps1", &block));
    expect("1010 GetSwitchInfo 268 220 0:707331", VSHYP_GetVSInfo("ps1", area));
    expect("1010 GetSwitchInfo 268 220 0:707331", VSHYP_GetSwitchInfo("sw1", &block));
    expect("1014 GetPortInfo 268 1458 128:01 131:04", VSHYP_GetPortInfo("sw1", "port0", &block),
           "state PortDataGet switch=\"id\" port=\"port0\" key=\"com.quillon.common.port.volatile.status\" "
           "-> 0x0 length=29\n");
    // The port comes first, the alias second.
    expect("101c GetPortMACLearningStats 268 52 0:6964 128:706f727430",
           VSHYP_GetPortMACLearningStats("port0", "sw1", area));
    expect("101d GetGlobalMACLearningProps 268 10", VSHYP_GetGlobalMACLearningProps(area));
    expect("101e GetSwitchMACLearningInfo 268 88 0:707331", VSHYP_GetSwitchMACLearningInfo("ps1", area));
    expect("1022 PortGetTeamUplinkHint 268 32 128:01 131:04", VSHYP_PortGetTeamUplinkHint(0x4000001, area));
    expect("1023 GetUplinkDVPortID 268 48 176:706e696331", VSHYP_GetUplinkDVPortID("pnic1", area));
    expect("1024 GetPortLSTeamingPolicyName 268 136 128:01 131:04",
           VSHYP_GetPortLSTeamingPolicyName(0x4000001, area));
    expect("1027 DVSAliasToSwitchId 268 64 0:737731", VSHYP_DVSAliasToSwitchId("sw1", area));
    expect("2002 SetUplinkAdminLinkState 268 0 0:707331 176:706e696331 208:01",
           VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 5));
    expect("2002 SetUplinkAdminLinkState 268 0 0:707331 176:706e696331 208:01",
           VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", INT32_MIN));
    expect("2002 SetUplinkAdminLinkState 268 0 0:707331 176:706e696331",
           VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 0));
    // A number without a text goes with the portset's name when an entry is set, with the identifier
    // when it is cleared; beside a text it is not sent.
    expect("2003 SetPortMACTable 268 0 0:6964 128:706f727430 176:" + toHex(kEntry),
           VSHYP_SetPortMACTable("sw1", "port0", 0x4000001, kEntry.data()));
    expect("2004 ClearPortMACTable 268 0 0:6964 128:706f727430 176:" + toHex(kEntry),
           VSHYP_ClearPortMACTable("sw1", "port0", 0x4000001, kEntry.data()));
    expect("2003 SetPortMACTable 268 0 0:707331 176:" + toHex(kEntry) + " 264:01 267:04",
           VSHYP_SetPortMACTable("sw1", nullptr, 0x4000001, kEntry.data()));
    expect("2004 ClearPortMACTable 268 0 0:6964 176:" + toHex(kEntry) + " 264:01 267:04",
           VSHYP_ClearPortMACTable("sw1", nullptr, 0x4000001, kEntry.data()));
    expect("2005 SetGlobalMACLearningProps 268 0 176:0102030405060708090a",
           VSHYP_SetGlobalMACLearningProps(kBytes));
    expect("2006 RefreshDevNUMAInfo 268 0 0:707331", VSHYP_RefreshDevNUMAInfo("ps1"));
    expect("2007 GetDVMirrorAgentWorldStats 0 76", VSHYP_GetDVMirrorAgentWorldStats(area));
}

TEST_F(Requests, FeatureDevices) {
    device_ = kRouteTable;
    expect("80000003 RTMOp 281 0 0:02 280:7f", VSHYP_RTMOp(wordsOf(kRoutes), 0x80000003));
    expect("ffffffff RTMOp 142 0 0:02 141:7f", VSHYP_RTMModOp(wordsOf(kChanges), 0xffffffff));
    expect("a RTMPortOp 9 0 0:0102030450607080fe", VSHYP_RTMPortOp(0x04030201, 0x80706050, 0xfe));

    device_ = kBfd;
    expect("2 GetSessions 1 1139336 0:fe", BFD_GetSessions(0xfe));
    expect("2 GetSessions 1 1139336 0:01", BFD_GetSessions(1));
    EXPECT_EQ(expect("4 SetLogLevel 4 0 0:05", BFD_SetLogLevel(5)), 0);
    EXPECT_EQ(expect("3 GetLogLevel 0 4", BFD_GetLogLevel()), 5u);
    EXPECT_EQ(expect("4 SetLogLevel 4 0", BFD_SetLogLevel(0)), 0);
    expect("5 GetStats 0 64", BFD_GetStats());

    device_ = kKcp;
    expect("14 GetStatus 0 3", KCP_GetStatus());
    // One digit or two, either case; what follows the sixth group does not matter.

    device_ = kTraceflow;
    expect(
        "0 CreateRequest 150 0 0:6964 64:706f727430 "
        "113:1b2c030405fffefd0c0b0a0102030405060708090a11121314151617182122232425262728",
        TFHYP_CreateRequest("sw1", "port0", "0:1b:2C:3:4:5", "ff:FE:fd:0c:b:a:extra", 0x04030201, 0x08070605,
                            0x0a09, 0x1817161514131211, 0x2827262524232221));
    expect("1 ClearConfig 112 0 0:6964", TFHYP_ClearTraceflowConfig("sw1"),
           "state HostPropGet switch=\"id\" key=\"com.quillon.tarnData.traceflow.enabled\" -> 0xbad0003\n");
    expect("2 GetPortStats 4 64 0:01 3:04", TFHYP_GetPortStats(0x4000001));
    expect("3 SetINTConfig 6 0 0:010203040506", TFHYP_SetINTConfig(kBytes));
    expect("4 GetINTConfig 0 6", TFHYP_GetINTConfig());

    device_ = kLivetrace;
    expect("0 CreateSession 115 0 0:6964 64:706f727430 112:010203",
           LIVETRACEHYP_CreateSession("sw1", "port0", kBytes, 3));
    expect("0 CreateSession 112 0 0:6964 64:706f727430",
           LIVETRACEHYP_CreateSession("sw1", "port0", kBytes, 0));
    expect("1 ListSession 0 705", LIVETRACEHYP_ListSession());
    expect("3 GetPortData 4 21 0:01 3:04", LIVETRACEHYP_GetPortData(0x4000001));
    expect("4 GetStats 0 96", LIVETRACEHYP_GetStats());

    device_ = kIpfix;
    expect("1001 GetIpfixStats 176 192 0:707331", IPFIXHYP_GetIpfixStats("sw1", area));
    expect("1002 GetIpfixGranularStats 176 192 0:6964 128:706f727430",
           IPFIXHYP_GetIpfixGranularStats("sw1", "port0", area));

    device_ = kSpf;
    expect("1002 GetGVMPortStats 4 256 0:01 3:04", SPFHYP_GetGVMPortStats(0x4000001));
    expect("1003 GetSVMPortStats 4 104 0:04 3:04", SPFHYP_GetSVMPortStats(0x4000004));
    expect("1004 GetSPFPortStats 194 80 0:707331", SPFHYP_GetSPFPortStats("sw1"));
    expect("2001 PlumbSpfPort 194 0 0:707331 128:706f727430 176:30323a30303a30303a30303a30303a6161",
           SPFHYP_PlumbSpfPort("ps1", "port0", area, "02:00:00:00:00:aa"));
    expect("2002 UnPlumbSpfPort 194 0 0:707331 128:706f727430", SPFHYP_UnPlumbSpfPort("ps1", "port0"));
    expect("2003 GetConfigFailureStats 0 8", SPFHYP_GetConfigFailureStats());
}

// Names are cut to what their field holds with a NUL, never refused.
TEST_F(Requests, LongNames) {
    const char *const name = kLong.c_str();
    // An identifier of 200 characters, and a portset name that has no NUL.
    calls().longIds["id"] = kLong;
    calls().record = [](std::string_view key, std::string_view value) {
        return key == "com.quillon.common.host.portset" ? std::string_view(kLong) : value;
    };
    answer_ = "ENOENT";
    device_ = kSwitchDevice;
    expect("100c GetUplinkLinkState 268 4 0:x127 176:x31", VSHYP_GetUplinkLinkState(name, name, word));
    expect("1010 GetSwitchInfo 268 220 0:x127", VSHYP_GetSwitchInfo("sw1", &block));
    expect("1017 GetMACTable 268 8 0:x127", VSHYP_GetMACTable("sw1", 0, &block));
    expect("1027 DVSAliasToSwitchId 268 64 0:x80", VSHYP_DVSAliasToSwitchId(name, area));
    expect("101c GetPortMACLearningStats 268 52 0:x63 128:x47",
           VSHYP_GetPortMACLearningStats(name, "sw1", area));
    expect("1019 GetPortMACTable 268 8 0:x63 128:x47 182:01", VSHYP_GetPortMACTable("sw1", name, 1, &block));
    expect("1006 GetDVMirrorSessionStats 268 121 0:x127 176:x31",
           VSHYP_GetDVMirrorSessionStats("sw1", name, area));

    device_ = kTraceflow;
    expect("0 CreateRequest 150 0 0:x63 64:x47",
           TFHYP_CreateRequest("sw1", name, "0:0:0:0:0:0", "0:0:0:0:0:0", 0, 0, 0, 0, 0));

    device_ = kLivetrace;
    expect("0 CreateSession 113 0 0:x63 64:x47 112:01", LIVETRACEHYP_CreateSession("sw1", name, kBytes, 1));

    device_ = kIpfix;
    expect("1001 GetIpfixStats 176 192 0:x127", IPFIXHYP_GetIpfixStats("sw1", area));
    expect("1002 GetIpfixGranularStats 176 192 0:x63 128:x47",
           IPFIXHYP_GetIpfixGranularStats("sw1", name, area));

    device_ = kSpf;
    expect("1001 GetPortsList 194 8 0:x127", SPFHYP_GetPortsList("sw1"));
    expect("1004 GetSPFPortStats 194 80 0:x127", SPFHYP_GetSPFPortStats("sw1"));
    expect("2001 PlumbSpfPort 194 0 0:x63 128:x47 176:x17", SPFHYP_PlumbSpfPort(name, name, nullptr, name));
    expect("2002 UnPlumbSpfPort 194 0 0:x63 128:x47", SPFHYP_UnPlumbSpfPort(name, name));
}

// Traceflow is switched by a property; the device is asked only when there is none to clear.
TEST_F(Requests, TraceflowSwitch) {
    device_ = kTraceflow;
    const std::string where = R"(switch="id" key="com.quillon.tarnData.traceflow.enabled")";
    const std::string clear = "state HostPropClear " + where;
    const struct {
        uint32_t status;
        uint32_t (*call)();
        std::string trace;
    } kRows[] = {
        {0, [] { return TFHYP_SetTraceflowConfig("sw1", 0); }, clear + " -> 0xbad0003\n"},
        {0, [] { return TFHYP_SetTraceflowConfig("sw1", 0xff); },
         "state HostPropSet " + where + " length=5 type=16 -> 0x0\n"},
        {0, [] { return TFHYP_SetTraceflowConfig("sw1", 0); }, clear + " -> 0x0\n"},
        {0, [] { return TFHYP_SetTraceflowConfig("sw1", 1); },
         "state HostPropSet " + where + " length=5 type=16 -> 0x0\n"},
        {0, [] { return TFHYP_ClearTraceflowConfig("sw1"); },
         "state HostPropGet " + where + " -> 0x0 length=5\n" + clear + " -> 0x0\n"},
    };
    for (const auto &[status, call, trace] : kRows) {
        clearTrace();
        EXPECT_STATUS(call(), status);
        EXPECT_EQ(takeTrace(), trace);
        const auto stored = hostProp("id", "com.quillon.tarnData.traceflow.enabled");
        EXPECT_EQ(stored,
                  trace.find("Set ") != std::string::npos ? std::optional(text("true")) : std::nullopt);
    }
    // A clear that fails is reported, but for its "Not found"; one behind a read is reported as it is.
    addFault("HostPropClear", R"("status":"0xbad0004")");
    EXPECT_STATUS(TFHYP_SetTraceflowConfig("sw1", 0), 0xbad0004);
    ASSERT_STATUS(TFHYP_SetTraceflowConfig("sw1", 1), 0);
    addFault("HostPropClear", R"("status":"0xbad0003")");
    EXPECT_STATUS(TFHYP_ClearTraceflowConfig("sw1"), 0xbad0003);
    // Any failing read has the kernel clear what it holds.
    addFault("HostPropGet", R"("status":"0xbad0014")");
    clearTrace();
    EXPECT_STATUS(TFHYP_ClearTraceflowConfig("sw1"), 0);
    EXPECT_EQ(takeTrace(), "state HostPropGet " + where + " -> 0xbad0014\n" +
                               request(kTraceflow, "1 ClearConfig 112 0 0:6964"));
}

}  // namespace
}  // namespace qvs::test
