// SPDX-License-Identifier: Apache-2.0
// A program that has functions of the library's names: the library calls its own all the same.
#include <qvs/reporting.h>

#include "support/intercept.h"
#include "support/test.h"

namespace {

// What the library has called of this program's functions, from its load on.
char called[256];
HYP_ReturnStatus note(const char *name) {
    const std::string_view before(called);
    std::string_view(name).copy(called + before.size(), sizeof called - 1 - before.size());
    return HYP_FAILURE;
}

}  // namespace

using qvs::test::next;

extern "C" {
void LibraryInit(void) {
    note("LibraryInit ");
}
void SharedObjectInit(void) {
    note("SharedObjectInit ");
}
HYP_ReturnStatus DVSLoadConfig(void) {
    note("DVSLoadConfig ");
    return next(&DVSLoadConfig, "DVSLoadConfig")();
}
HYP_ReturnStatus HYPIoctl(const char *, int, void *) {
    return note("HYPIoctl ");
}
HYP_ReturnStatus DVSAliasToSwitchId(const char *, char *) {
    return note("DVSAliasToSwitchId ");
}
HYP_ReturnStatus VSHYP_DVSAliasToSwitchId(const char *, void *) {
    return note("VSHYP_DVSAliasToSwitchId ");
}
HYP_ReturnStatus SetNumSwitchUplinkPortsByUUID(const char *, uint32_t) {
    return note("SetNumSwitchUplinkPortsByUUID ");
}
const char *ReturnStatusToString(HYP_ReturnStatus) {
    note("ReturnStatusToString ");
    return "";
}
void Log(const char *, ...) {
    note("Log ");
}
void Warning(const char *, ...) {
    note("Warning ");
}
void Panic(const char *, ...) {
    note("Panic ");
}
}

namespace qvs::test {
namespace {

TEST(OwnNames, AreNotCalledByTheLibrary) {
    EXPECT_STREQ(called, "");
    EXPECT_EQ(maskLengths(takeTrace(), "StateGet"), "state StateGet -> 0x0 length=*\n");

    EXPECT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 1, 1), 0);
    EXPECT_STATUS(next(&DVSLoadConfig, "DVSLoadConfig")(), 0);
    EXPECT_STATUS(VSDVS_AddDVPort("sw1", "more", 1), 0);
    void *names = nullptr, *ports = nullptr;
    EXPECT_STATUS(VSDVS_GetSwitchUplinkPorts("sw1", &names, &ports), 0);
    VSDVS_FreeMemory(names);
    VSDVS_FreeMemory(ports);
    char *text = nullptr;
    EXPECT_STATUS(NetDVS_Dump("sw1", &text), 0);
    // Only a sorted registry has a printer for this key.
    EXPECT_NE(std::string(text).find("port.connectid = 1 , \tpropType"), std::string::npos);
    NetDVS_FreeMemory(text);
    addFault("device open", R"("errno":"EBUSY")");
    testing::internal::CaptureStderr();
    EXPECT_EQ(TFHYP_GetPortStats(1), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Failed to get port stats: Busy\n");
    EXPECT_STREQ(called, "");
}

}  // namespace
}  // namespace qvs::test
