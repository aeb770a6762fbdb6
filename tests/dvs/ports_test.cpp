// Single ports of a switch: what adding one stores, and what a failure leaves behind.
#include "support/alloc_fault.h"
#include "support/test.h"

namespace qvs::test {
namespace {

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
              "id port p 1\n"
              "id port p 1 com.quillon.common.port.alias 16 70203100\n"
              "id port p 1 com.quillon.common.port.block 16 66616c736500\n"
              "id port p 1 com.quillon.common.port.connectid 16 04030201\n"
              "id port p 1 com.quillon.common.port.statistics 32 " +
                  std::string(256, '0') +
                  "\n"
                  "id port p 1 com.quillon.vswitch.port.vlan 8 0000000000000000\n");

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

TEST_F(Port, FailuresArePassedOn) {
    struct {
        const char *name;
        uint32_t actual, expected;
    } const rows[] = {
        {"unknown alias", VSDVS_AddDVPort("sw9", "p1", 1), 0xbad0003},
        {"unknown alias, opaque", VSDVS_AddOpaqueDVPort("sw9", "p1", "x"), 0xbad0003},
        {"unknown alias, removing", VSDVS_RemoveDVPort("sw9", "p1"), 0xbad0003},
        {"null port", VSDVS_AddDVPort("sw1", nullptr, 1), 0xbad0007},
        {"null external identifier", VSDVS_AddOpaqueDVPort("sw1", "p1", nullptr), 0xbad0007},
        {"null port, removing", VSDVS_RemoveDVPort("sw1", nullptr), 0xbad0007},
        {"port identifier of 48 characters", VSDVS_AddDVPort("sw1", std::string(48, 'p').c_str(), 1),
         0xbad0007},
    };
    for (const auto &[name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(actual, expected);
    }
    EXPECT_EQ(hostState(), empty_);
    for (const char *port : {"p1", "p2", "p3", "p4"})
        EXPECT_STATUS(VSDVS_AddDVPort("sw1", port, 1), 0);
    EXPECT_STATUS(VSDVS_AddDVPort("sw1", "p5", 1), 0xbad0006);
}

}  // namespace
}  // namespace qvs::test
