// SPDX-License-Identifier: Apache-2.0
// What docs/rules.md promises to programs with several threads: everything but loading a snapshot at once.
#include <thread>

#include "support/test.h"

namespace qvs::test {
namespace {

constexpr int kTurns = 50;

TEST(Threads, ReadAndChangeAtTheSameTime) {
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", nullptr, nullptr, 105, 0, 0, 2, 2), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    const std::vector<std::function<void(int)>> tasks = {
        [](int turn) {
            const std::string port = "added" + std::to_string(turn);
            EXPECT_STATUS(VSDVS_AddDVPort("sw1", port.c_str(), 1), 0);
            EXPECT_STATUS(VSDVS_RemoveDVPort("sw1", port.c_str()), 0);
        },
        [](int) {
            char *text = nullptr;
            EXPECT_STATUS(NetDVS_Dump("sw1", &text), 0);
            EXPECT_EQ(std::strncmp(text, "switch 73 77 31 00 ", 19), 0);
            NetDVS_FreeMemory(text);
        },
        [](int turn) {
            const auto value = static_cast<uint32_t>(turn);
            EXPECT_STATUS(VSDVS_SetPortProp("sw1", "port0", "k", &value, 4, nullptr, 1), 0);
            uint32_t stored = 0;
            VSDVS_PropBuffer buffer = {4, &stored};
            EXPECT_STATUS(VSDVS_GetPortProp("sw1", "port0", "k", &buffer, nullptr, 1), 0);
            EXPECT_EQ(stored, value);
        },
        [](int) {
            void *uplinks = nullptr;
            EXPECT_STATUS(VSHYP_GetUplinks("sw1", &uplinks), 0);
            EXPECT_EQ(bytesAt(uplinks, 4), std::string("\2\0\0\0", 4));
            VSHYP_FreeMemory(uplinks);
        },
    };
    std::vector<std::thread> threads;
    for (const auto &task : tasks) {
        threads.emplace_back([&task] {
            for (int turn = 0; turn < kTurns; ++turn)
                task(turn);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}

}  // namespace
}  // namespace qvs::test
