// SPDX-License-Identifier: Apache-2.0
// Checksums and segments that a sender left to the network. The checksums were calculated by another program.
#include <gtest/gtest.h>

#include "datapath/network.h"

namespace qvs::test {
namespace {

using datapath::Frame;
using datapath::Offload;

std::vector<std::string> completed(const std::string &frame, Offload offload, size_t mtu = 1500) {
    const Bytes bytes = bytesOf(frame);
    std::vector<std::string> texts;
    if (!datapath::complete({bytes, offload}, mtu,
                            [&](std::span<const uint8_t> part) { texts.push_back(hexOf(part)); }))
        texts.emplace_back("refused");
    return texts;
}

const std::string kMacs = "020000000002020000000001";
struct Sum {
    const char *name;
    std::string frame;
    uint16_t start;
    uint16_t offset;
    std::string complete;
};

const std::vector<Sum> kSums = {
    {"TCP in IPv4",
     kMacs + "08004500003c12344000400614860a0000010a00000203e80050000000050000004d501801f41431000030313233343"
             "5363738393a3b3c3d3e3f40414243",
     34, 16,
     kMacs + "08004500003c12344000400614860a0000010a00000203e80050000000050000004d501801f458f2000030313233343"
             "5363738393a3b3c3d3e3f40414243"},
    {"UDP in IPv4, odd length",
     kMacs + "08004500002312344000401114940a0000010a00000203e80035000f142330313233343536", 34, 6,
     kMacs + "08004500002312344000401114940a0000010a00000203e80035000f1b1730313233343536"},
    {"UDP whose sum is zero", kMacs + "08004500001e12344000401114990a0000010a00000203e80035000a141ee7ba", 34,
     6, kMacs + "08004500001e12344000401114990a0000010a00000203e80035000affffe7ba"},
    {"UDP in IPv6",
     kMacs + "86dd60000000001c1140fe800000000000000000000000000001fe80000000000000000000000000000203e80035001"
             "cfd31303132333435363738393a3b3c3d3e3f40414243",
     54, 6,
     kMacs + "86dd60000000001c1140fe800000000000000000000000000001fe80000000000000000000000000000203e80035001"
             "cc24e303132333435363738393a3b3c3d3e3f40414243"},
    {"TCP behind a tag",
     kMacs + "8100000a08004500003c12344000400614860a0000010a00000203e80050000000050000004d501801f414310000303"
             "132333435363738393a3b3c3d3e3f40414243",
     38, 16,
     kMacs + "8100000a08004500003c12344000400614860a0000010a00000203e80050000000050000004d501801f458f20000303"
             "132333435363738393a3b3c3d3e3f40414243"},
};

struct Split {
    const char *name;
    std::string frame;
    Offload offload;
    size_t mtu;
    std::vector<std::string> segments;
};

const std::vector<Split> kSplits = {
    {"TCP in IPv4",
     kMacs + "08004500003c12344000400614860a0000010a00000203e80050fffffff80000004d509901f41431000030313233343"
             "5363738393a3b3c3d3e3f40414243",
     Offload{1, 1, 54, 8, 34, 16},
     1500,
     {kMacs + "08004500003012344000400614920a0000010a00000203e80050fffffff80000004d509001f4c80700003031323334"
              "353637",
      kMacs + "08004500003012354000400614910a0000010a00000203e80050000000000000004d501001f4a860000038393a3b3c"
              "3d3e3f",
      kMacs +
          "08004500002c12364000400614940a0000010a00000203e80050000000080000004d501901f412c0000040414243"}},
    {"TCP in IPv6, with congestion notification",
     kMacs + "86dd6000000000280640fe800000000000000000000000000001fe80000000000000000000000000000203e80050000"
             "000640000004d501801f4fd320000303132333435363738393a3b3c3d3e3f40414243",
     Offload{1, 132, 74, 15, 54, 16},
     1500,
     {kMacs + "86dd6000000000230640fe800000000000000000000000000001fe80000000000000000000000000000203e8005000"
              "0000640000004d501001f4f2610000303132333435363738393a3b3c3d3e",
      kMacs + "86dd6000000000190640fe800000000000000000000000000001fe80000000000000000000000000000203e8005000"
              "0000730000004d501801f4e85400003f40414243"}},
    {"segments for a small MTU",
     kMacs + "08004500003c12344000400614860a0000010a00000203e80050000000640000004d501001f41431000030313233343"
             "5363738393a3b3c3d3e3f40414243",
     Offload{1, 1, 54, 18, 34, 16},
     52,
     {kMacs + "080045000034123440004006148e0a0000010a00000203e80050000000640000004d501001f455a400003031323334"
              "35363738393a3b",
      kMacs + "08004500003012354000400614910a0000010a00000203e80050000000700000004d501001f497e000003c3d3e3f40"
              "414243"}},
};

TEST(Offload, checksums) {
    for (const Sum &sum : kSums)
        EXPECT_EQ(completed(sum.frame, {1, 0, 0, 0, sum.start, sum.offset}),
                  std::vector<std::string>{sum.complete})
            << sum.name;
}

TEST(Offload, segments) {
    for (const Split &split : kSplits)
        EXPECT_EQ(completed(split.frame, split.offload, split.mtu), split.segments) << split.name;
}

TEST(Offload, refuses) {
    const std::string &frame = kSplits[0].frame;
    const auto refused = std::vector<std::string>{"refused"};
    for (const Offload &offload : std::initializer_list<Offload>{{1, 0, 0, 0, 13, 16},
                                                                 {1, 0, 0, 0, 34, 60000},
                                                                 {1, 1, 54, 0, 34, 16},
                                                                 {0, 1, 54, 8, 34, 16},
                                                                 {1, 1, 54, 8, 35, 16},
                                                                 {1, 1, 54, 8, 34, 6},
                                                                 {1, 4, 54, 8, 34, 16},
                                                                 {1, 3, 54, 8, 34, 16}})
        EXPECT_EQ(completed(frame, offload), refused)
            << int{offload.flags} << ' ' << int{offload.segments} << ' ' << offload.checksumStart;
    EXPECT_EQ(completed(frame.substr(0, 100), {1, 1, 54, 8, 34, 16}), refused) << "the packet ends early";
    EXPECT_EQ(completed("0200", {}), refused);
}

// A tag moves the offsets, and only segments have to be short enough for an uplink.
TEST(Offload, travelsThroughASwitch) {
    Network network;
    network.configure(policyOf(
        "{mtu: 50, ports: [{number: 1, slot: 1, link: true, vlan: {id: 10}, mac: \"02:00:00:00:00:01\"},"
        "{number: 8, slot: 8, link: true, uplink: true, mtu: 48, vlan: {trunk: true, ranges: [{first: 1, "
        "last: 9}, {first: 10, last: 10}]}}]}"));
    const Bytes bytes = bytesOf(kSplits[0].frame);
    const std::vector<Sent> sent = network.receive(1, bytes, 0, {1, 1, 54, 8, 34, 16});
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].port, 8u);
    EXPECT_EQ(sent[0].offload.headerLength, 58);
    EXPECT_EQ(sent[0].offload.checksumStart, 38);
    size_t parts = 0;
    EXPECT_TRUE(datapath::complete({sent[0].bytes, sent[0].offload}, 1500, [&](auto) { ++parts; }));
    EXPECT_EQ(parts, kSplits[0].segments.size());
    EXPECT_TRUE(network.receive(1, bytes, 0, {1, 1, 54, 9, 34, 16}).empty());
    EXPECT_TRUE(network.receive(1, bytes, 0, {1, 1, 54, 11, 34, 16}).empty());
    EXPECT_TRUE(network.receive(1, bytes, 0, {1, 2, 54, 8, 34, 16}).empty());
    EXPECT_EQ(network.run("count 8 long 1 \n count 1 long 1 malformed 1"), "");
}

}  // namespace
}  // namespace qvs::test
