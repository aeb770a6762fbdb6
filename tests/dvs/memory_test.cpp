// SPDX-License-Identifier: Apache-2.0
// Memory that runs out in the middle of a change: each allocation of libqvs and of the state library in turn.
#include "support/alloc_fault.h"
#include "support/test.h"

namespace qvs::test {
namespace {

const std::string kNames = u32(1) + field("up", 81);
const std::string kPorts = u32(1) + field("up", 48);

struct Row {
    const char *name;
    std::function<uint32_t()> change;
    int ownAllocations;  // of libqvs
};
const Row kRows[] = {
    {"CreateVSwitch", [] { return VSDVS_CreateVSwitch("new", nullptr, nullptr, 105, 0, 0, 2, 2); }, 2},
    {"AddDVPort", [] { return VSDVS_AddDVPort("sw1", "new", 1); }, 0},
    {"AddOpaqueDVPort", [] { return VSDVS_AddOpaqueDVPort("sw1", "new", "external"); }, 0},
    {"RemoveDVPort", [] { return VSDVS_RemoveDVPort("sw1", "port0"); }, 0},
    {"SetSwitchUplinkPorts", [] { return VSDVS_SetSwitchUplinkPorts("none", kNames.data(), kPorts.data()); },
     0},
    {"SetNumSwitchUplinkPortsByUUID", [] { return SetNumSwitchUplinkPortsByUUID("none", 2); }, 2},
    {"AddSwitchUplinkPort", [] { return VSDVS_AddSwitchUplinkPort("sw1", "new"); }, 3},
    {"AddSwitchUplinkPort, first", [] { return VSDVS_AddSwitchUplinkPort("none", "new"); }, 2},
    {"RemoveSwitchUplinkPort", [] { return VSDVS_RemoveSwitchUplinkPort("sw1", "uplink0"); }, 1},
    {"DestroyVSwitch", [] { return VSDVS_DestroyVSwitch("sw1"); }, 0},
};

TEST(Memory, ChangeThatFindsNoneLeavesEverythingAsItWas) {
    SKIP_WITHOUT_ALLOC_FAULT();
    const auto prepare = [] {
        resetHost();
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 2, 1), 0);
        ASSERT_STATUS(VSDVS_CreateVSwitch("none", "none", nullptr, 105, 0, 0, 0, 0), 0);
    };
    prepare();
    const std::string before = hostState();
    for (const auto &[name, change, ownAllocations] : kRows) {
        for (const char *library : {"libqvs.so", "libmeshPublic.so"}) {
            int allocations = 0;
            {
                AllocFault counting(0, AllocFault::kOnce, library);
                EXPECT_STATUS(change(), 0);
                allocations = counting.seen();
            }
            SCOPED_TRACE(std::string(name) + ", " + library);
            if (library == std::string("libqvs.so")) {
                EXPECT_EQ(allocations, ownAllocations);
            }
            prepare();
            ASSERT_EQ(hostState(), before);
            for (int nth = 1; nth <= allocations; ++nth) {
                {
                    AllocFault fault(nth, AllocFault::kOnce, library);
                    EXPECT_STATUS(change(), 0xbad0014) << nth;
                }
                EXPECT_EQ(hostState(), before) << nth;
            }
        }
    }
}

}  // namespace
}  // namespace qvs::test
