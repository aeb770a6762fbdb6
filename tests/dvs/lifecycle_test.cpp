// SPDX-License-Identifier: Apache-2.0
// Switches and ports: what creating one stores and runs, what a failing step undoes, which names are refused,
// destroying.
#include "support/intercept.h"
#include "support/test.h"

namespace qvs::test {
namespace {

const std::string kZeros128(256, '0');

std::string ordinaryPort(const std::string &name, const std::string &nameHex,
                         const std::string &connectId = "01000000") {
    const std::string port = "id port " + name;
    return port + "\n" + port + " com.quillon.common.port.alias 16 " + nameHex + "\n" +  //
           port + " com.quillon.common.port.block 16 66616c736500\n" +                   //
           port + " com.quillon.common.port.connectid 16 " + connectId + "\n" +          //
           port + " com.quillon.common.port.statistics 32 " + kZeros128 + "\n" +         //
           port + " com.quillon.vswitch.port.vlan 8 0000000000000000\n";
}

std::string uplinkPort(const std::string &name, const std::string &nameHex) {
    std::string lines = ordinaryPort(name, nameHex);
    // A trunk of one range, VLANs 1 to 4094.
    return lines.replace(lines.size() - 17, 16,
                         "0100000000000100"
                         "0100fe0f");
}

TEST(Switch, StoredFromNothingButAnAlias) {
    CallsReset reset;
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 0, 0), 0);
    ASSERT_EQ(calls().commands.size(), 1u);
    EXPECT_EQ(calls().commands[0], "/bin/treesh -e set /net/create sw1 \"128\n\" vswitch 2>/dev/null");
    EXPECT_EQ(
        hostState(),
        "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 global com.quillon.common.alias 16 73773100\n"
        "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 global com.quillon.common.opaqueDvs 16 "
        "66616c736500\n"
        "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 global com.quillon.common.version 16 69000000\n"
        "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 host com.quillon.common.host.portset 16 73773100\n"
        "73 77 31 00 00 00 00 00-00 00 00 00 00 00 00 00 vswitch 128 105\n"
        "portset sw1\n");
}

TEST(Switch, StoredWithEverythingGiven) {
    CallsReset reset;
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw 1", "id", "ps.1", 0x01020304, 0x80, 4, 2, 2), 0);
    ASSERT_EQ(calls().commands.size(), 1u);
    EXPECT_EQ(calls().commands[0], "/bin/treesh -e set /net/create ps.1 \"4\n\" vswitch 2>/dev/null");
    const std::string zeros74(148, '0'), zeros41(82, '0');
    EXPECT_EQ(hostState(),
              "id global com.quillon.common.alias 16 7377203100\n"
              "id global com.quillon.common.opaqueDvs 16 7472756500\n"
              "id global com.quillon.common.uplinkPorts 16 02000000"
              "75706c696e6b30" +
                  zeros74 + "75706c696e6b31" + zeros74 +
                  "\n"
                  "id global com.quillon.common.version 16 04030201\n"
                  "id host com.quillon.common.host.portset 16 70732e3100\n"
                  "id host com.quillon.common.host.uplinkPorts 16 02000000"
                  "75706c696e6b30" +
                  zeros41 + "75706c696e6b31" + zeros41 + "\n" + ordinaryPort("port0", "706f72743000") +
                  ordinaryPort("port1", "706f72743100") + uplinkPort("uplink0", "75706c696e6b3000") +
                  uplinkPort("uplink1", "75706c696e6b3100") +
                  "id vswitch 4 16909060\n"
                  "portset ps.1\n");
}

uint32_t create() {
    return VSDVS_CreateVSwitch("sw1", "id", nullptr, 105, 0, 0, 2, 2);
}

TEST(Switch, StoredInThisOrder) {
    clearTrace();
    EXPECT_STATUS(create(), 0);
    EXPECT_EQ(maskLengths(takeTrace(), "PortAdd"),
              R"(shell treesh -e set /net/create sw1 "128\n" vswitch -> exit 0
state SwitchAdd switch="id" class="vswitch" maxPorts=128 version=105 -> 0x0
state GlobalPropSet switch="id" key="com.quillon.common.alias" length=4 type=16 -> 0x0
state GlobalPropSet switch="id" key="com.quillon.common.version" length=4 type=16 -> 0x0
state GlobalPropSet switch="id" key="com.quillon.common.opaqueDvs" length=6 type=16 -> 0x0
state HostPropSet switch="id" key="com.quillon.common.host.portset" length=4 type=16 -> 0x0
state SwitchAssociate switch="id" -> 0x0
state PortAdd switch="id" port="uplink0" length=* -> 0x0
state PortAdd switch="id" port="uplink1" length=* -> 0x0
state GlobalPropSet switch="id" key="com.quillon.common.uplinkPorts" length=166 type=16 -> 0x0
state HostPropSet switch="id" key="com.quillon.common.host.uplinkPorts" length=100 type=16 -> 0x0
state PortAdd switch="id" port="port0" length=* -> 0x0
state PortAdd switch="id" port="port1" length=* -> 0x0
)");
}

TEST(Switch, EveryResultOfTheShellButZeroIsAFailure) {
    CallsReset reset;
    for (const int result : {-1, 1 << 8, 127 << 8, 9, 1 << 16}) {
        calls().systemResult = result;
        EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 0, 0), 0xbad0001) << result;
    }
    EXPECT_EQ(takeTrace().find("SwitchAdd"), std::string::npos);
}

TEST(Switch, TakenNamesLeaveTheirOwnerAlone) {
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 105, 0, 0, 1, 1), 0);
    const std::string before = hostState();
    EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", "id2", nullptr, 105, 0, 0, 0, 0), 0xbad0001);
    EXPECT_EQ(hostState(), before);
    EXPECT_STATUS(VSDVS_CreateVSwitch("sw2", "id", nullptr, 105, 0, 0, 0, 0), 0xbad0005);
    EXPECT_EQ(hostState(), before);
    // More ports than there is room for.
    EXPECT_STATUS(VSDVS_CreateVSwitch("sw3", "id3", nullptr, 105, 0, 3, 2, 2), 0xbad0006);
    EXPECT_EQ(hostState(), before);
}

TEST(Switch, GeneratedIdentifierSpellsTheAlias) {
    constexpr struct {
        const char *alias, *id;
    } kRows[] = {
        {"a", "61 00 00 00 00 00 00 00-00 00 00 00 00 00 00 00"},
        {"12345678", "31 32 33 34 35 36 37 38-00 00 00 00 00 00 00 00"},
        {"abcdefghijklmno", "61 62 63 64 65 66 67 68-69 6a 6b 6c 6d 6e 6f 00"},
        {"Abcdefghijklmnop", "41 62 63 64 65 66 67 68-69 6a 6b 6c 6d 6e 6f 00"},
        {"\x80\xff\xc3\xa4", "80 ff c3 a4 00 00 00 00-00 00 00 00 00 00 00 00"},
    };
    for (const auto &[alias, id] : kRows) {
        ASSERT_STATUS(VSDVS_CreateVSwitch(alias, nullptr, nullptr, 105, 0, 0, 0, 0), 0);
        EXPECT_EQ(globalProp(id, "com.quillon.common.alias"), text(alias));
        ASSERT_STATUS(DVSLoadConfig(), 0);
        SwitchIdString found;
        EXPECT_STATUS(DVSAliasToSwitchId(alias, found), 0);
        EXPECT_STREQ(found, id);
    }
}

// What would mean something to the shell or to the node path is refused before anything happens.
TEST(Switch, PortsetNamesThatTheShellWouldInterpret) {
    const std::string before = hostState();
    CallsReset reset;
    for (const std::string name :
         {"",    " ",   "a b", "a\tb", "a\nb", "a\001b", "a\177b", "a'b", "a\"b", "a`id`",
          "a;b", "a&b", "a|b", "a<b",  "a>b",  "a(b",    "a)b",    "a$b", "a\\b", "a*b",
          "a?b", "a[b", "a/b", "/",    "-a",   "~a",     "#a",     ".",   ".."}) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, name.c_str(), 105, 0, 0, 1, 1), 0xbad0007);
        EXPECT_STATUS(VSDVS_CreateVSwitch(name.c_str(), "id", nullptr, 105, 0, 0, 1, 1), 0xbad0007);
    }
    EXPECT_STATUS(VSDVS_CreateVSwitch(nullptr, "id", "ps", 105, 0, 0, 1, 1), 0xbad0007);
    EXPECT_EQ(takeTrace(), "");
    EXPECT_TRUE(calls().commands.empty());
    EXPECT_EQ(hostState(), before);
}

// A name that a lookup would cut belongs to a switch that nobody could address again.
TEST(Switch, NamesThatLookupsCut) {
    const std::string name63(63, 'i'), name64(64, 'i'), name127(127, 'n'), name128(128, 'n'),
        name300(300, 'n');
    struct {
        const char *alias, *id, *portset;
        uint32_t status;
    } const rows[] = {
        {"sw1", name64.c_str(), "ps", 0xbad0007},    {"sw1", name300.c_str(), "ps", 0xbad0007},
        {"sw1", "id", name128.c_str(), 0xbad0007},   {"sw1", "id", name300.c_str(), 0xbad0007},
        {name128.c_str(), "id", nullptr, 0xbad0007}, {"sw1", name63.c_str(), name127.c_str(), 0},
        {name127.c_str(), nullptr, nullptr, 0},      {name128.c_str(), "id", "ps", 0},
    };
    const std::string before = hostState();
    for (const auto &[alias, id, portset, status] : rows) {
        SCOPED_TRACE(std::string(alias) + ", " + (id != nullptr ? id : "-"));
        CallsReset reset;
        clearTrace();
        EXPECT_STATUS(VSDVS_CreateVSwitch(alias, id, portset, 105, 0, 0, 1, 1), status);
        if (status != HYP_OK) {
            EXPECT_EQ(takeTrace(), "");
            EXPECT_TRUE(calls().commands.empty());
            continue;
        }
        ASSERT_STATUS(DVSLoadConfig(), 0);
        EXPECT_STATUS(VSDVS_AddDVPort(alias, "more", 1), 0);
        EXPECT_STATUS(VSDVS_DestroyVSwitch(alias), 0);
        EXPECT_EQ(hostState(), before);
    }
}

TEST(Switch, PortsetNamesThatWork) {
    const std::string name127(127, 'n');
    const std::string before = hostState();
    for (const std::string name :
         {"a-b", "a.b", "a..b", ".a", "a~", "a#b", "a=b", "a]b", "a{b}", "a,b", "a:b", "a!b", "a%sb", "a@b",
          "a^b", "schalter-\xc3\xa4\xff", name127.c_str()}) {
        SCOPED_TRACE(name);
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", name.c_str(), 105, 0, 0, 1, 1), 0);
        EXPECT_NE(hostState().find("portset " + name + "\n"), std::string::npos);
        SwitchAliasName found;
        EXPECT_STATUS(DVSPortsetNameToAlias(name.c_str(), found), 0);
        EXPECT_STREQ(found, "sw1");
        EXPECT_STATUS(VSDVS_DestroyVSwitch("sw1"), 0);
        EXPECT_EQ(hostState(), before);
    }
}

TEST(Switch, DestroyingStopsAtTheFirstFailure) {
    ASSERT_STATUS(create(), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    for (const char *step : {"SwitchDissociate", "SwitchRemove"}) {
        addFault(step, R"("status":"0xbad00d7")");
        clearTrace();
        EXPECT_STATUS(VSDVS_DestroyVSwitch("sw1"), 0xbad00d7);
        EXPECT_TRUE(takeTrace().ends_with(" -> 0xbad00d7\n")) << step;
    }
}

TEST(Switch, DestroyingFromItsNames) {
    const std::string before = hostState();
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", "ps1", 105, 0, 0, 2, 2), 0);
    EXPECT_STATUS(VSDVS_DestroyVSwitch("sw1"), 0xbad0003);  // the snapshot does not know it yet
    ASSERT_STATUS(DVSLoadConfig(), 0);
    CallsReset reset;
    calls().commands.clear();
    EXPECT_STATUS(VSDVS_DestroyVSwitch("sw1"), 0);
    ASSERT_EQ(calls().commands.size(), 1u);
    EXPECT_EQ(calls().commands[0], "/bin/treesh -e set /net/portsets/ps1/destroy destroy 2> /dev/null");
    EXPECT_EQ(hostState(), before);

    // A stored name that nobody made through this library.
    ASSERT_STATUS(DVSHYP_SwitchAdd("bad", "vswitch", 8, 105), 0);
    ASSERT_STATUS(DVSHYP_GlobalPropSet("bad", "com.quillon.common.alias", "bad", 4, 16), 0);
    ASSERT_STATUS(DVSHYP_HostPropSet("bad", "com.quillon.common.host.portset", "a;b", 4, 16), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    clearTrace();
    EXPECT_STATUS(VSDVS_DestroyVSwitch("bad"), 0xbad0007);
    EXPECT_EQ(takeTrace(), "");
}

// The capacity is printed as a signed number, which the kernel refuses.
TEST(Switch, CapacityBeyondTheSignedRange) {
    CallsReset reset;
    EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0xffffffff, 0, 0), 0xbad0001);
    ASSERT_EQ(calls().commands.size(), 1u);
    EXPECT_EQ(calls().commands[0], "/bin/treesh -e set /net/create sw1 \"-1\n\" vswitch 2>/dev/null");
}

// Single ports: what adding one stores, and what a failure leaves behind.
constexpr char kExternalId[] = "com.quillon.port.extraConfig.vnic.external.id";

class Port : public testing::Test {
  protected:
    void SetUp() override {
        createSwitch(4, 0, 0);
        empty_ = hostState();
    }

    std::string empty_;
};

TEST_F(Port, CarriesItsInitialProperties) {
    ASSERT_STATUS(VSDVS_AddDVPort("sw1", "p 1", 0x01020304), 0);
    const std::string state = hostState();
    EXPECT_EQ(state.substr(0, state.find("id vswitch")).substr(empty_.find("id vswitch")),
              ordinaryPort("p 1", "70203100", "04030201"));

    EXPECT_STATUS(VSDVS_AddDVPort("sw1", "p 1", 7), 0xbad0005);
    EXPECT_EQ(hostState(), state);
    EXPECT_STATUS(VSDVS_RemoveDVPort("sw1", "p 1"), 0);
    EXPECT_STATUS(VSDVS_RemoveDVPort("sw1", "p 1"), 0xbad0003);
    EXPECT_EQ(hostState(), empty_);
}

TEST_F(Port, OpaquePortCarriesItsExternalIdentifier) {
    const std::string externalId(200, 'x');
    ASSERT_STATUS(VSDVS_AddOpaqueDVPort("sw1", "p1", externalId.c_str()), 0);
    EXPECT_EQ(portProp("id", "p1", kExternalId), text(externalId));
    EXPECT_EQ(portProp("id", "p1", "com.quillon.common.port.connectid"), u32(1));
    EXPECT_NE(takeTrace().find("external.id\" length=201 type=16 -> 0x0"), std::string::npos);
    ASSERT_STATUS(VSDVS_AddOpaqueDVPort("sw1", "p2", ""), 0);
    EXPECT_EQ(portProp("id", "p2", kExternalId), text(""));
}

TEST_F(Port, OpaquePortThatCannotBeMarkedIsRemovedAgain) {
    addFault("PortDataSet", R"("status":"0xbad00d7")");
    EXPECT_STATUS(VSDVS_AddOpaqueDVPort("sw1", "p1", "ext"), 0xbad00d7);
    EXPECT_EQ(
        maskLengths(takeTrace(), "PortAdd"),
        "state PortAdd switch=\"id\" port=\"p1\" length=* -> 0x0\n"
        "state PortDataSet switch=\"id\" port=\"p1\" key=\"com.quillon.port.extraConfig.vnic.external.id\" "
        "length=4 type=16 -> 0xbad00d7\n"
        "state PortRemove switch=\"id\" port=\"p1\" -> 0x0\n");
    EXPECT_EQ(hostState(), empty_);

    // The first failure is the one that is told.
    addFault("PortDataSet", R"("status":"0xbad00d7")");
    addFault("PortRemove", R"("status":"0xbad0004")");
    EXPECT_STATUS(VSDVS_AddOpaqueDVPort("sw1", "p1", "ext"), 0xbad00d7);
}

TEST_F(Port, TheKernelJudgesNamesAndRoom) {
    EXPECT_STATUS(VSDVS_AddDVPort("sw1", std::string(48, 'p').c_str(), 1), 0xbad0007);
    EXPECT_EQ(hostState(), empty_);
    for (const char *port : {"p1", "p2", "p3", "p4"})
        EXPECT_STATUS(VSDVS_AddDVPort("sw1", port, 1), 0);
    EXPECT_STATUS(VSDVS_AddDVPort("sw1", "p5", 1), 0xbad0006);
}

}  // namespace
}  // namespace qvs::test
