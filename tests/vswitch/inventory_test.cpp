// Inventory and link requests: names that are looked up, what comes back, and what a failure leaves.
#include <gtest/gtest.h>
#include <qvs/dvs.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#include <cstring>
#include <functional>
#include <string>

#include "support/alloc_fault.h"
#include "support/bytes.h"
#include "support/host.h"

namespace qvs::test {
namespace {

// A switch called sw1 on portset ps1, with two uplinks on pnic0 and pnic1.
class Inventory : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", "ps1", 105, 0, 16, 2, 1), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
    }
};

// The kernel's word is reduced to 0 or 1.
TEST_F(Inventory, LinkStates) {
    constexpr struct {
        const char *word;
        uint32_t up;
    } kWords[] = {{"00000000", 0}, {"01000000", 1}, {"02000000", 1}, {"00000080", 1}};
    for (const auto get : {VSHYP_GetUplinkLinkState, VSHYP_GetUplinkLACPLinkState}) {
        for (const auto &[word, expected] : kWords) {
            addFault("device ioctl", R"("output":[{"offset":0,"hex":")" + std::string(word) + R"("}])");
            uint32_t up = 0xeeeeeeee;
            EXPECT_STATUS(get("ps1", "pnic0", &up), 0);
            EXPECT_EQ(up, expected) << word;
        }
    }
}

TEST_F(Inventory, FailuresOfSingleRequests) {
    char untouched;
    struct {
        const char *name;
        std::function<uint32_t(void **)> call;
    } const pointers[] = {
        {"GetLAGTable", [](void **p) { return VSHYP_GetLAGTable("ps1", p); }},
        {"GetSwitchInfo", [](void **p) { return VSHYP_GetSwitchInfo("sw1", p); }},
        {"GetPortInfo", [](void **p) { return VSHYP_GetPortInfo("sw1", "port0", p); }},
    };
    for (const auto &[name, call] : pointers) {
        SCOPED_TRACE(name);
        void *result = &untouched;
        addFault("device ioctl", R"("errno":"EBUSY")");
        EXPECT_STATUS(call(&result), 0xbad0004);
        EXPECT_EQ(result, &untouched);
#ifndef QVS_TEST_SANITIZED
        AllocFault fault(1);
        EXPECT_STATUS(call(&result), 0xbad0014);
        EXPECT_EQ(result, std::strcmp(name, "GetLAGTable") == 0 ? &untouched : nullptr);
#endif
    }

    uint32_t up = 0xeeeeeeee;
    addFault("device ioctl", R"("errno":"EBUSY")", 1, 2);
    EXPECT_STATUS(VSHYP_GetUplinkLinkState("ps1", "pnic0", &up), 0xbad0004);
    EXPECT_STATUS(VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", &up), 0xbad0004);
    EXPECT_EQ(up, 0xeeeeeeeeu);
}

TEST_F(Inventory, ArgumentsThatReachNoDevice) {
    char area[256];
    uint32_t up = 0;
    char untouched;
    void *list = &untouched;
    struct {
        const char *name;
        uint32_t actual, expected;
    } const rows[] = {
        {"GetUplinks name", VSHYP_GetUplinks(nullptr, &list), 0xbad0007},
        {"GetUplinks result", VSHYP_GetUplinks("ps1", nullptr), 0xbad0007},
        {"GetLAGTable name", VSHYP_GetLAGTable(nullptr, &list), 0xbad0007},
        {"GetLAGTable result", VSHYP_GetLAGTable("ps1", nullptr), 0xbad0007},
        {"GetSwitchInfo name", VSHYP_GetSwitchInfo(nullptr, &list), 0xbad0007},
        {"GetSwitchInfo result", VSHYP_GetSwitchInfo("sw9", nullptr), 0xbad0007},
        {"GetSwitchInfo alias", VSHYP_GetSwitchInfo("ps1", &list), 0xbad0003},
        {"GetSwitchPortInfo name", VSHYP_GetSwitchPortInfo(nullptr, &list), 0xbad0007},
        {"GetSwitchPortInfo result", VSHYP_GetSwitchPortInfo("sw9", nullptr), 0xbad0007},
        {"GetSwitchPortInfo alias", VSHYP_GetSwitchPortInfo("ps1", &list), 0xbad0003},
        {"GetPortInfo alias", VSHYP_GetPortInfo("sw9", "port0", &list), 0xbad0003},
        {"GetPortInfo port", VSHYP_GetPortInfo("sw1", "port9", &list), 0xbad0003},
        {"DVSAliasToSwitchId name", VSHYP_DVSAliasToSwitchId(nullptr, area), 0xbad0007},
        {"DVSAliasToSwitchId result", VSHYP_DVSAliasToSwitchId("sw1", nullptr), 0xbad0007},
        {"GetUplinkLinkState name", VSHYP_GetUplinkLinkState(nullptr, "pnic0", &up), 0xbad0007},
        {"GetUplinkLinkState result", VSHYP_GetUplinkLinkState("ps1", "pnic0", nullptr), 0xbad0007},
        {"GetUplinkLACPLinkState name", VSHYP_GetUplinkLACPLinkState(nullptr, "pnic0", &up), 0xbad0007},
        {"GetUplinkLACPLinkState result", VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", nullptr), 0xbad0007},
        {"SetUplinkAdminLinkState name", VSHYP_SetUplinkAdminLinkState(nullptr, "pnic0", 1), 0xbad0007},
        {"SetUplinkAdminLinkState uplink", VSHYP_SetUplinkAdminLinkState("ps1", nullptr, 1), 0xbad0007},
        {"GetVSInfo result", VSHYP_GetVSInfo("ps1", nullptr), 0xbad0007},
        {"PortGetTeamUplinkHint result", VSHYP_PortGetTeamUplinkHint(1, nullptr), 0xbad0007},
        {"GetUplinkDVPortID result", VSHYP_GetUplinkDVPortID("pnic0", nullptr), 0xbad0007},
        {"RefreshDevNUMAInfo name", VSHYP_RefreshDevNUMAInfo(nullptr), 0xbad0007},
        // Not named, but better a status than a crash.
        {"GetUplinkLinkState uplink", VSHYP_GetUplinkLinkState("ps1", nullptr, &up), 0xbad0007},
        {"GetVSInfo name", VSHYP_GetVSInfo(nullptr, area), 0xbad0007},
        {"GetUplinkDVPortID name", VSHYP_GetUplinkDVPortID(nullptr, area), 0xbad0007},
        {"GetPortInfo null alias", VSHYP_GetPortInfo(nullptr, "port0", &list), 0xbad0007},
        {"GetPortInfo null port", VSHYP_GetPortInfo("sw1", nullptr, &list), 0xbad0007},
        {"GetSwitches result", VSHYP_GetSwitches(0, nullptr), 0xbad0007},
    };
    for (const auto &[name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(actual, expected);
    }
    EXPECT_EQ(list, &untouched);
    EXPECT_EQ(takeTrace().find("device"), std::string::npos);
    VSHYP_FreeMemory(nullptr);
}

}  // namespace
}  // namespace qvs::test
