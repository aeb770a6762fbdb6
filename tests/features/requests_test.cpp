// Every single request to the kernel's devices, byte for byte, and nothing beside it.
#include <qvs/bfd.h>
#include <qvs/ipfixhyp.h>
#include <qvs/kcp.h>
#include <qvs/livetracehyp.h>
#include <qvs/spfhyp.h>
#include <qvs/tfhyp.h>
#include <qvs/vshyp.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "features/runtime_host.h"
#include "support/bytes.h"
#include "support/host.h"

namespace qvs::test {
namespace {

// Hexadecimal digits of a byte repeated.
std::string repeated(const char *digits, size_t count) {
    std::string all;
    while (count-- > 0)
        all += digits;
    return all;
}

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

// Answers by pointer go back to where they came from.
void drop(void *answer) {
    free(answer);
}

struct Request {
    const char *path;
    std::function<void()> call;
    std::string line;
    const char *answer = "0";
    std::string before = {};  // what the state library is asked first
};

// The lengths and addresses in a frame, which lie where the device has them.
struct Frame {
    uint32_t inLength = 0, outLength = 0;
    uint64_t inAddress = 0, outAddress = 0;

    Frame(const std::string &path, const void *bytes) {
        const bool packed = path == kBfd || path == kTraceflow || path == kLivetrace;
        const auto at = [&](size_t offset, auto &field) {
            std::memcpy(&field, static_cast<const char *>(bytes) + offset, sizeof field);
        };
        if (path == kKcp) {
            uint32_t reserved = 0;
            at(0, reserved), at(4, outLength), at(8, outAddress);
            EXPECT_EQ(reserved, 0u);
        } else {
            at(0, inLength), at(packed ? 4 : 8, inAddress);
            at(packed ? 12 : 4, outLength), at(16, outAddress);
        }
    }
};

class Requests : public RuntimeHost {
  protected:
    void TearDown() override { free(block), block = nullptr; }

    static void expect(const std::vector<Request> &rows) {
        for (const Request &row : rows) {
            SCOPED_TRACE(row.line);
            clearTrace();
            calls().onIoctl = [&row](unsigned long, const void *argument) {
                const Frame frame(row.path, argument);
                EXPECT_EQ(frame.inLength == 0, frame.inAddress == 0);
                EXPECT_EQ(frame.outLength == 0, frame.outAddress == 0);
            };
            row.call();
            free(block), block = nullptr;
            EXPECT_EQ(takeTrace(), row.before + request(row.path, row.line, row.answer));
        }
    }
};

TEST_F(Requests, SwitchDevice) {
    expect({
        {kSwitchDevice, [] { VSHYP_GetRARPStats("ps1", area); },
         "0x1001 GetRARPStats in=268 out=16 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetServicePortTeamingStats("ps1", area); },
         "0x1002 GetServicePortTeamingStats in=268 out=48 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_SetRuntimeOptions(wordsOf(kOptions)); },
         "0x2001 SetRuntimeOptions in=14 out=0 input=[0:0e 4:07 6:01 8:aa341201 13:bb]"},
        {kSwitchDevice, [] { VSHYP_GetRuntimeOptions(kOptionIds, 2, &block); },
         "0x1003 GetRuntimeOptions in=4 out=4096 input=[0:07 2:3412]"},
        {kSwitchDevice, [] { VSHYP_GetRuntimeOptions(kOptionIds, 0, &block); },
         "0x1003 GetRuntimeOptions in=0 out=4096 input=[]"},
        {kSwitchDevice, [] { VSHYP_GetRuntimeOptions(nullptr, 2, &block); },
         "0x1003 GetRuntimeOptions in=0 out=4096 input=[]"},
        {kSwitchDevice, [] { VSHYP_GetDVMirrorSessionStats("sw1", "one", area); },
         "0x1006 GetDVMirrorSessionStats in=268 out=121 input=[0:707331 176:6f6e65]"},
        {kSwitchDevice, [] { VSHYP_GetMcastFilterMode("ps1", word); },
         "0x1007 GetMcastFilterMode in=268 out=4 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetUplinkLinkState("ps1", "pnic0", word); },
         "0x100c GetUplinkLinkState in=268 out=4 input=[0:707331 176:706e696330]"},
        {kSwitchDevice, [] { VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", word); },
         "0x100d GetUplinkLACPLinkState in=268 out=4 input=[0:707331 176:706e696330]"},
        {kSwitchDevice, [] { VSHYP_GetLAGTable("ps1", &block); },
         "0x100e GetLAGTable in=268 out=35588 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetVSInfo("ps1", area); },
         "0x1010 GetSwitchInfo in=268 out=220 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetSwitchInfo("sw1", &block); },
         "0x1010 GetSwitchInfo in=268 out=220 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetPortInfo("sw1", "port0", &block); },
         "0x1014 GetPortInfo in=268 out=1458 input=[128:01 131:04]", "0",
         "state PortDataGet switch=\"id\" port=\"port0\" key=\"com.quillon.common.port.volatile.status\" -> "
         "0x0 length=29\n"},
        // The port comes first, the alias second.
        {kSwitchDevice, [] { VSHYP_GetPortMACLearningStats("port0", "sw1", area); },
         "0x101c GetPortMACLearningStats in=268 out=52 input=[0:6964 128:706f727430]"},
        {kSwitchDevice, [] { VSHYP_GetGlobalMACLearningProps(area); },
         "0x101d GetGlobalMACLearningProps in=268 out=10 input=[]"},
        {kSwitchDevice, [] { VSHYP_GetSwitchMACLearningInfo("ps1", area); },
         "0x101e GetSwitchMACLearningInfo in=268 out=88 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_PortGetTeamUplinkHint(0x4000001, area); },
         "0x1022 PortGetTeamUplinkHint in=268 out=32 input=[128:01 131:04]"},
        {kSwitchDevice, [] { VSHYP_GetUplinkDVPortID("pnic1", area); },
         "0x1023 GetUplinkDVPortID in=268 out=48 input=[176:706e696331]"},
        {kSwitchDevice, [] { VSHYP_GetPortLSTeamingPolicyName(0x4000001, area); },
         "0x1024 GetPortLSTeamingPolicyName in=268 out=136 input=[128:01 131:04]"},
        {kSwitchDevice, [] { VSHYP_DVSAliasToSwitchId("sw1", area); },
         "0x1027 DVSAliasToSwitchId in=268 out=64 input=[0:737731]"},
        {kSwitchDevice, [] { VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 5); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331 208:01]"},
        {kSwitchDevice, [] { VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", INT32_MIN); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331 208:01]"},
        {kSwitchDevice, [] { VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 0); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331]"},
        // A number without a text goes with the portset's name when an entry is set, with the identifier when
        // it is cleared; beside a text it is not sent.
        {kSwitchDevice, [] { VSHYP_SetPortMACTable("sw1", "port0", 0x4000001, kEntry.data()); },
         "0x2003 SetPortMACTable in=268 out=0 input=[0:6964 128:706f727430 176:" + toHex(kEntry) + "]"},
        {kSwitchDevice, [] { VSHYP_ClearPortMACTable("sw1", "port0", 0x4000001, kEntry.data()); },
         "0x2004 ClearPortMACTable in=268 out=0 input=[0:6964 128:706f727430 176:" + toHex(kEntry) + "]"},
        {kSwitchDevice, [] { VSHYP_SetPortMACTable("sw1", nullptr, 0x4000001, kEntry.data()); },
         "0x2003 SetPortMACTable in=268 out=0 input=[0:707331 176:" + toHex(kEntry) + " 264:01 267:04]"},
        {kSwitchDevice, [] { VSHYP_ClearPortMACTable("sw1", nullptr, 0x4000001, kEntry.data()); },
         "0x2004 ClearPortMACTable in=268 out=0 input=[0:6964 176:" + toHex(kEntry) + " 264:01 267:04]"},
        {kSwitchDevice, [] { VSHYP_SetGlobalMACLearningProps(kBytes); },
         "0x2005 SetGlobalMACLearningProps in=268 out=0 input=[176:0102030405060708090a]"},
        {kSwitchDevice, [] { VSHYP_RefreshDevNUMAInfo("ps1"); },
         "0x2006 RefreshDevNUMAInfo in=268 out=0 input=[0:707331]"},
        {kSwitchDevice, [] { VSHYP_GetDVMirrorAgentWorldStats(area); },
         "0x2007 GetDVMirrorAgentWorldStats in=0 out=76 input=[]"},
    });
}

TEST_F(Requests, FeatureDevices) {
    expect({
        {kRouteTable, [] { VSHYP_RTMOp(wordsOf(kRoutes), 0x80000003); },
         "0x80000003 RTMOp in=281 out=0 input=[0:02 280:7f]"},
        {kRouteTable, [] { VSHYP_RTMModOp(wordsOf(kChanges), 0xffffffff); },
         "0xffffffff RTMOp in=142 out=0 input=[0:02 141:7f]"},
        {kRouteTable, [] { VSHYP_RTMPortOp(0x04030201, 0x80706050, 0xfe); },
         "0xa RTMPortOp in=9 out=0 input=[0:0102030450607080fe]"},

        {kBfd, [] { drop(BFD_GetSessions(0xfe)); }, "0x2 GetSessions in=1 out=1139336 input=[0:fe]"},
        {kBfd, [] { drop(BFD_GetSessions(1)); }, "0x2 GetSessions in=1 out=1139336 input=[0:01]"},
        {kBfd, [] { EXPECT_EQ(BFD_SetLogLevel(5), 0); }, "0x4 SetLogLevel in=4 out=0 input=[0:05]"},
        {kBfd, [] { EXPECT_EQ(BFD_GetLogLevel(), 5u); }, "0x3 GetLogLevel in=0 out=4 input=[]"},
        {kBfd, [] { EXPECT_EQ(BFD_SetLogLevel(0), 0); }, "0x4 SetLogLevel in=4 out=0 input=[]"},
        {kBfd, [] { drop(BFD_GetStats()); }, "0x5 GetStats in=0 out=64 input=[]"},
        {kKcp, [] { drop(KCP_GetStatus()); }, "0x14 GetStatus in=0 out=3 input=[]"},

        // One digit or two, either case; what follows the sixth group does not matter.
        {kTraceflow,
         [] {
             TFHYP_CreateRequest("sw1", "port0", "0:1b:2C:3:4:5", "ff:FE:fd:0c:b:a:extra", 0x04030201,
                                 0x08070605, 0x0a09, 0x1817161514131211, 0x2827262524232221);
         },
         "0x0 CreateRequest in=150 out=0 input=[0:6964 64:706f727430 113:1b2c030405fffefd0c0b0a"
         "0102030405060708090a11121314151617182122232425262728]"},
        {kTraceflow, [] { TFHYP_ClearTraceflowConfig("sw1"); }, "0x1 ClearConfig in=112 out=0 input=[0:6964]",
         "0",
         "state HostPropGet switch=\"id\" key=\"com.quillon.tarnData.traceflow.enabled\" -> 0xbad0003\n"},
        {kTraceflow, [] { drop(TFHYP_GetPortStats(0x4000001)); },
         "0x2 GetPortStats in=4 out=64 input=[0:01 3:04]"},
        {kTraceflow, [] { TFHYP_SetINTConfig(kBytes); },
         "0x3 SetINTConfig in=6 out=0 input=[0:010203040506]"},
        {kTraceflow, [] { drop(TFHYP_GetINTConfig()); }, "0x4 GetINTConfig in=0 out=6 input=[]"},

        {kLivetrace, [] { LIVETRACEHYP_CreateSession("sw1", "port0", kBytes, 3); },
         "0x0 CreateSession in=115 out=0 input=[0:6964 64:706f727430 112:010203]"},
        {kLivetrace, [] { LIVETRACEHYP_CreateSession("sw1", "port0", kBytes, 0); },
         "0x0 CreateSession in=112 out=0 input=[0:6964 64:706f727430]"},
        {kLivetrace, [] { drop(LIVETRACEHYP_ListSession()); }, "0x1 ListSession in=0 out=705 input=[]"},
        {kLivetrace, [] { drop(LIVETRACEHYP_GetPortData(0x4000001)); },
         "0x3 GetPortData in=4 out=21 input=[0:01 3:04]"},
        {kLivetrace, [] { drop(LIVETRACEHYP_GetStats()); }, "0x4 GetStats in=0 out=96 input=[]"},

        {kIpfix, [] { IPFIXHYP_GetIpfixStats("sw1", area); },
         "0x1001 GetIpfixStats in=176 out=192 input=[0:707331]"},
        {kIpfix, [] { IPFIXHYP_GetIpfixGranularStats("sw1", "port0", area); },
         "0x1002 GetIpfixGranularStats in=176 out=192 input=[0:6964 128:706f727430]"},

        {kSpf, [] { drop(SPFHYP_GetGVMPortStats(0x4000001)); },
         "0x1002 GetGVMPortStats in=4 out=256 input=[0:01 3:04]"},
        {kSpf, [] { drop(SPFHYP_GetSVMPortStats(0x4000004)); },
         "0x1003 GetSVMPortStats in=4 out=104 input=[0:04 3:04]"},
        {kSpf, [] { drop(SPFHYP_GetSPFPortStats("sw1")); },
         "0x1004 GetSPFPortStats in=194 out=80 input=[0:707331]"},
        {kSpf, [] { SPFHYP_PlumbSpfPort("ps1", "port0", area, "02:00:00:00:00:aa"); },
         "0x2001 PlumbSpfPort in=194 out=0 input=[0:707331 128:706f727430 "
         "176:30323a30303a30303a30303a30303a6161]"},
        {kSpf, [] { SPFHYP_UnPlumbSpfPort("ps1", "port0"); },
         "0x2002 UnPlumbSpfPort in=194 out=0 input=[0:707331 128:706f727430]"},
        {kSpf, [] { drop(SPFHYP_GetConfigFailureStats()); },
         "0x2003 GetConfigFailureStats in=0 out=8 input=[]"},
    });
}

// Names are cut to what their field holds with a NUL, never refused.
TEST_F(Requests, LongNames) {
    const std::string x31 = repeated("78", 31), x47 = repeated("78", 47), x63 = repeated("78", 63),
                      x80 = repeated("78", 80), x127 = repeated("78", 127);
    const char *const name = kLong.c_str();
    std::vector<Request> rows = {
        {kSwitchDevice, [&] { VSHYP_GetUplinkLinkState(name, name, word); },
         "0x100c GetUplinkLinkState in=268 out=4 input=[0:" + x127 + " 176:" + x31 + "]"},
        {kSwitchDevice, [&] { VSHYP_GetSwitchInfo("sw1", &block); },
         "0x1010 GetSwitchInfo in=268 out=220 input=[0:" + x127 + "]"},
        {kSwitchDevice, [&] { VSHYP_GetMACTable("sw1", 0, &block); },
         "0x1017 GetMACTable in=268 out=8 input=[0:" + x127 + "]"},
        {kSwitchDevice, [&] { VSHYP_DVSAliasToSwitchId(name, area); },
         "0x1027 DVSAliasToSwitchId in=268 out=64 input=[0:" + x80 + "]"},
        {kSwitchDevice, [&] { VSHYP_GetPortMACLearningStats(name, "sw1", area); },
         "0x101c GetPortMACLearningStats in=268 out=52 input=[0:" + x63 + " 128:" + x47 + "]"},
        {kSwitchDevice, [&] { VSHYP_GetPortMACTable("sw1", name, 1, &block); },
         "0x1019 GetPortMACTable in=268 out=8 input=[0:" + x63 + " 128:" + x47 + " 182:01]"},
        {kSwitchDevice, [&] { VSHYP_GetDVMirrorSessionStats("sw1", name, area); },
         "0x1006 GetDVMirrorSessionStats in=268 out=121 input=[0:" + x127 + " 176:" + x31 + "]"},
        {kTraceflow, [&] { TFHYP_CreateRequest("sw1", name, "0:0:0:0:0:0", "0:0:0:0:0:0", 0, 0, 0, 0, 0); },
         "0x0 CreateRequest in=150 out=0 input=[0:" + x63 + " 64:" + x47 + "]"},
        {kLivetrace, [&] { LIVETRACEHYP_CreateSession("sw1", name, kBytes, 1); },
         "0x0 CreateSession in=113 out=0 input=[0:" + x63 + " 64:" + x47 + " 112:01]"},
        {kIpfix, [&] { IPFIXHYP_GetIpfixStats("sw1", area); },
         "0x1001 GetIpfixStats in=176 out=192 input=[0:" + x127 + "]"},
        {kIpfix, [&] { IPFIXHYP_GetIpfixGranularStats("sw1", name, area); },
         "0x1002 GetIpfixGranularStats in=176 out=192 input=[0:" + x63 + " 128:" + x47 + "]"},
        {kSpf, [&] { drop(SPFHYP_GetPortsList("sw1")); },
         "0x1001 GetPortsList in=194 out=8 input=[0:" + x127 + "]"},
        {kSpf, [&] { drop(SPFHYP_GetSPFPortStats("sw1")); },
         "0x1004 GetSPFPortStats in=194 out=80 input=[0:" + x127 + "]"},
        {kSpf, [&] { SPFHYP_PlumbSpfPort(name, name, nullptr, name); },
         "0x2001 PlumbSpfPort in=194 out=0 input=[0:" + x63 + " 128:" + x47 + " 176:" + repeated("78", 17) +
             "]"},
        {kSpf, [&] { SPFHYP_UnPlumbSpfPort(name, name); },
         "0x2002 UnPlumbSpfPort in=194 out=0 input=[0:" + x63 + " 128:" + x47 + "]"},
    };
    for (Request &row : rows)
        row.answer = "ENOENT";
    // An identifier of 200 characters, and a portset name that has no NUL.
    calls().longIds["id"] = kLong;
    calls().record = [](std::string_view key, std::string_view value) {
        return key == "com.quillon.common.host.portset" ? std::string_view(kLong) : value;
    };
    expect(rows);
}

// Traceflow is switched by a property; the device is asked only when there is none to clear.
TEST_F(Requests, TraceflowSwitch) {
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
                               request(kTraceflow, "0x1 ClearConfig in=112 out=0 input=[0:6964]"));
}

}  // namespace
}  // namespace qvs::test
