// SPDX-License-Identifier: Apache-2.0
// What loading the library does, reloading the snapshot, and giving buffers back.
#include <cstdlib>

#include "support/intercept.h"
#include "support/test.h"

namespace {

// What the library asked for first, before this program had constructors: 's'ort, 'r'eset.
char early[3];
void note(char what) {
    char *end = early + std::strlen(early);
    if (end < early + sizeof early - 1) *end = what;
}

}  // namespace

using qvs::test::next;

extern "C" __attribute__((visibility("default"))) void qsort(void *base, size_t count, size_t size,
                                                             __compar_fn_t compare) {
    note('s');
    next(&qsort, "qsort")(base, count, size, compare);
}

extern "C" HYP_ReturnStatus DVSState_ConfigReset(void) {
    note('r');
    return next(&DVSState_ConfigReset, "DVSState_ConfigReset")();
}

namespace qvs::test {
namespace {

TEST(Startup, SortsTheRegistryBeforeItLoads) {
    EXPECT_STREQ(early, "sr");
}

// One request has been sent before any test says so, and no other.
TEST(Startup, LoadsTheSnapshotOnce) {
    EXPECT_EQ(maskLengths(takeTrace(), "StateGet"), "state StateGet -> 0x0 length=*\n");
    LibraryInit();
    EXPECT_EQ(maskLengths(takeTrace(), "StateGet"), "state StateGet -> 0x0 length=*\n");
    SharedObjectInit();
    EXPECT_EQ(takeTrace(), "");
}

TEST(Startup, SnapshotIsAsOldAsTheLastLoad) {
    SwitchIdString id;
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 0, 1), 0);
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", id), 0xbad0003);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", id), 0);

    // A reload that fails returns the status as it is and leaves the snapshot empty.
    addFault("state StateGet", R"("status":"0xbad00d7")");
    clearTrace();
    EXPECT_STATUS(DVSLoadConfig(), 0xbad00d7);
    EXPECT_EQ(takeTrace(), "state StateGet -> 0xbad00d7\n");
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", id), 0xbad0003);

    ASSERT_STATUS(DVSLoadConfig(), 0);
    addFault("state StateGet", R"("truncate":16)");
    EXPECT_NE(DVSLoadConfig(), HYP_OK);
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", id), 0xbad0003);

    // The status of loading is nobody's business when the library does it.
    addFault("state StateGet", R"("status":"0xbad00d7")");
    LibraryInit();
    EXPECT_STATUS(DVSLoadConfig(), 0);
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", id), 0);
}

TEST(Release, TakesNull) {
    NetDVS_FreeMemory(nullptr);
    VSHYP_FreeMemory(nullptr);
    VSDVS_FreeMemory(nullptr);
    HealthCheck_FreeMemory(nullptr);
    IPFIXDVS_FreeMemory(nullptr);
}

}  // namespace
}  // namespace qvs::test
