// SPDX-License-Identifier: Apache-2.0
// Mirror sessions, multicast, and policies that change while frames flow.
#include "datapath/network.h"
#include "datapath/rules.h"

namespace qvs::test {
namespace {

std::string session(const std::string &policies) {
    return "mirrors: [{slot: 101, destinations: [{port: 3}], " + policies + "}],";
}

INSTANTIATE_TEST_SUITE_P(
    mirror, Rules,
    testing::Values(
        Case{"sent and received frames",
             session("sources_in: [1], sources_out: [2]"),
             {"1" + kVlan10, "2" + kVlan10, "3", "8"},
             "1: 1>2 -> 2 3 3 \n 2: 2>1 -> 1 \n 8: e>2[10] -> 2 3 \n 8: e>1[10] -> 1 \n 1: 1>* "
             "-> 2 3 3 8[10] \n"
             "count 101 copies 5 copy-bytes 300 \n 3: 3>1 -> 8 \n 1: 1>2[11] ->"},
        Case{"tags",
             session("sources_in: [1], keep_vlan: true, encapsulated: true, encap_vlan: 99"),
             {"1" + kVlan10, "3", "8"},
             "1: 1>e -> 3[99][10] 8[10]"},
        Case{"every third frame",
             session("sources_in: [1], sampling: 3"),
             {"1", "3", "8"},
             "1: 1>e -> 3 8 \n 1: 1>e -> 8 \n 1: 1>e -> 8 \n 1: 1>e -> 3 8 \n count 101 taken-in 4 skipped 2 "
             "copies 2"},
        Case{"destination by itself",
             session("sources_in: [1], no_output: true, no_input: true"),
             {"1", "2", "3", "8"},
             "1: 1>2 -> 2 3 \n 2: 2>3 -> \n 2: 2>* -> 1 8 \n 3: 3>1 -> \n count 3 mirror 1"},
        Case{"source uplink",
             session("sources_in: [8], sources_out: [8]"),
             {"1", "3", "8"},
             "8: e>1 -> 1 3 \n 1: 1>e -> 3 8 \n 1: 1>3 -> 3"},
        Case{"VLANs from outside",
             session("type: RemoteDestination, vlans_in: [50], vlans_out: [60]"),
             {"1", "2vlan: {id: 60}", "3", "8"},
             "2: 2>e -> 3 8[60] \n 8: e>f[60] -> \n 8: e>f[50] -> 3 \n 8: e>f[51] -> \n 1: 1>e -> 8"},
        Case{"to an uplink",
             "mirrors: [{slot: 101, type: RemoteSource, encapsulated: true, encap_vlan: 60, "
             "sources_in: [1], destinations: [{port: 8}]}],",
             {"1", "2", "8"},
             "1: 1>2 -> 2 8[60] \n down 8 -> \n 1: 1>2 -> 2 \n count 101 copies 1 no-link 1"},
        Case{"to an address",
             "mirrors: [{slot: 101, type: LogicalSpan, sources_in: [1], "
             "destinations: [{address: [2, 0, 0, 0, 0, 3]}]}],",
             {"1", "2", "3", "8"},
             "1: 1>2 -> 2 3"}),
    nameOf);

const std::string kList = "has_multicast_list: true, multicast_list: [";
const std::string kGroupM = "groups: [{address: [239, 1, 1, 1], slot: 102}]";

// IGMP: reports of the second version, a leave, a general query, and a report of the third version.
#define QVS_IGMP(destination, body) \
    "hex " destination              \
    "0800"                          \
    "4600002000000000010200000a000001" body " -> "
#define QVS_JOIN QVS_IGMP("01005e010101020000000001", "ef010101940400001600f9fdef010101")
#define QVS_LEAVE QVS_IGMP("01005e000002020000000001", "e0000002940400001700f8fdef010101")
#define QVS_QUERY QVS_IGMP("01005e000001020000000065", "e0000001940400001100eeff00000000")
#define QVS_ONLY_FROM_10_0_0_9                         \
    "hex 01005e0000160200000000010800"                 \
    "4600002c00000000010200000a000001e000001694040000" \
    "220000000000000103000001ef0101010a000009 -> "

// MLD for ff05::1:3: a report of the second version, a leave, a query, and a packet to the group.
#define QVS_MLD(destination, body) "hex 3333000000" destination "02000000000186dd60000000" body " -> "
#define QVS_FROM_LINK "fe800000000000000000000000000001ff0200000000000000000000000000"
#define QVS_GROUP6 "ff050000000000000000000000010003"
#define QVS_JOIN6 \
    QVS_MLD("16", "00240001" QVS_FROM_LINK "163a000502000001008f0070030000000104000000" QVS_GROUP6)
#define QVS_LEAVE6 QVS_MLD("02", "00200001" QVS_FROM_LINK "023a0005020000010084007f1c00000000" QVS_GROUP6)
#define QVS_QUERY6 \
    QVS_MLD("01",  \
            "00200001" QVS_FROM_LINK "013a00050200000100820059172710000000000000000000000000000000000000")
#define QVS_TO_GROUP6  \
    "hex 333300010003" \
    "0200000000ee"     \
    "86dd"             \
    "6000000000081140" \
    "fe800000000000000000000000000009" QVS_GROUP6 "0007000700080000 -> "

INSTANTIATE_TEST_SUITE_P(
    multicast, Rules,
    testing::Values(
        Case{"lists",
             kList + "\"01:00:5e:00:00:fb\"],",
             {"1", "2" + kList + "\"01:00:5e:01:01:01\"]", "3" + kGroupM,
              "4filter: {multicast: true, addresses: [\"01:00:5e:01:01:01\"]}",
              "5filter: {all_multicast: true}", "6" + kList + "]", "8"},
             "1: 1>m -> 2 3 4 5 8 \n 8: e>m -> 2 3 4 5 \n 8: e>n -> 1 2 3 4 5 6 \n count 102 matched 2 \n 8: "
             "e>* -> 1 2 3 4 5 6"},
        Case{"snooping",
             "multicast: Snooping,",
             {"1", "2", "3", "4" + kGroupM, "8"},
             "8: e>m -> 4 \n 1: " QVS_JOIN
             "8 \n events +239@1 \n 8: e>m -> 1 4 \n 2: 2>m -> 1 4 8 \n 8: e>n -> 1 2 3 4 \n"
             "1: " QVS_LEAVE "8 \n 8: e>m -> 1 4 \n at 1999 -> \n 8: e>m -> 1 4 \n at 2600 -> \n 8: e>m -> 4 "
             "\n events -239@1 \n"
             "count 100 reports 1 leaves 1 queries 0"},
        Case{"membership expires",
             "multicast: Snooping,",
             {"1", "2", "8"},
             "1: " QVS_JOIN "8 \n at 300000 -> \n 8: e>m -> 1 \n 8: " QVS_QUERY
             "1 2 \n at 310000 -> \n 8: e>m -> \n"
             "count 100 queries 1"},
        Case{"router on this switch",
             "multicast: Snooping,",
             {"1", "2", "3", "8"},
             "2: " QVS_QUERY "1 3 8 \n 1: " QVS_JOIN "2 8 \n 3: 3>m -> 1 2 8 \n 8: e>m -> 1 2"},
        Case{"snooping of IPv6",
             "multicast: Snooping,",
             {"1", "2", "8"},
             "8: " QVS_TO_GROUP6 "\n 1: " QVS_JOIN6 "8 \n events +255@1 \n 8: " QVS_TO_GROUP6
             "1 \n 2: " QVS_QUERY6 "1 8 \n 1: " QVS_LEAVE6
             "2 8 \n at 2600 -> \n events -255@1 \n 8: " QVS_TO_GROUP6
             "2 \n count 100 reports 1 leaves 1 queries 1"},
        Case{"list of IPv6 groups",
             kList + "\"33:33:00:01:00:03\"],",
             {"1", "2" + kList + "\"33:33:00:01:00:04\"]", "8"},
             "8: " QVS_TO_GROUP6 "1"},
        Case{"group in another VLAN",
             "multicast: Snooping,",
             {"1" + kVlan10, "2vlan: {id: 11}", "3", "8"},
             "1: " QVS_JOIN "8[10] \n 8: e>m[11] -> \n 8: e>m -> \n 8: e>m[10] -> 1 \n 2: 2>m -> 8[11]"},
        Case{"sources",
             "multicast: Snooping,",
             {"1", "2groups: [{address: [239, 1, 1, 1], sources: [{address: [10, 0, 0, 9]}], slot: 102}]",
              "8"},
             "1: " QVS_ONLY_FROM_10_0_0_9 "8 \n 8: e>m -> \n count 102 filtered 1 \n 1: " QVS_JOIN
             "8 \n 8: e>m -> 1"}),
    nameOf);

// The policies of one port change, and nothing else is disturbed.
TEST(Policies, change) {
    Case value = {"", "", {"1" + kVlan10 + ", " + kLearning, "2" + kVlan10, "8"}, ""};
    Network network;
    network.configure(policyOf(jsonOf(value)));
    EXPECT_EQ(network.run("1: a>2 -> 2 \n mac 2 c -> \n down 8 -> \n events +a@1/10"), "");
    value.ports[1] = "2vlan: {id: 11}";
    value.ports.push_back("3" + kVlan10);
    network.configure(policyOf(jsonOf(value)));
    EXPECT_EQ(network.run("events \n 3: 3>a -> 1 \n 3: 3>c -> \n 3: 3>e -> \n count 3 no-uplink 2"), "");
    value.ports[0] = "1" + kVlan10;
    network.configure(policyOf(jsonOf(value)));
    EXPECT_EQ(network.run("events -a@1/10 \n 3: 3>a ->"), "");
}

// What a port shares with others needs the whole switch.
TEST(Policies, changeOfMoreThanAPort) {
    Network network;
    const auto change = [&network](const std::string &port) {
        auto policy = policyOf(jsonOf({"", "", {port}, ""}));
        return network.engine().changePort(std::move(policy->ports[0]), 0);
    };
    network.configure(policyOf(jsonOf({"", "", {"1", "2teaming: {active: [8]}", "3ipfix: {}", "8"}, ""})));
    for (const char *port : {"1teaming: {active: [8]}", "1ipfix: {}", "1groups: [{address: [239, 1, 1, 1]}]",
                             "2", "3", "4", "8"})
        EXPECT_FALSE(change(port)) << port;
    EXPECT_EQ(network.run("1: 1>e -> 8"), "");
    EXPECT_TRUE(change("1" + kVlan10));
    EXPECT_EQ(network.run("1: 1>e -> 8[10]"), "");
}

std::string mirrorTo(const std::string &address) {
    const std::string type = "mirrors: [{slot: 101, type: EncapsulatedSource, sources_in: [1], ";
    return jsonOf({"", type + "destinations: [{address: [" + address + "]}]}],", {"1", "8"}, ""});
}

// What a session for a remote address sends: a probe first, and the copy to everybody until it is answered.
TEST(Policies, encapsulatedMirror) {
    Network network;
    network.configure(policyOf(mirrorTo("192, 0, 2, 7")));
    std::vector<Sent> sent = network.receive(1, frameOf("1>e"), 0);
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0].bytes,
              (Bytes{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 2, 16, 0, 0, 0, 7, 8, 6, 0, 1, 8, 0,   6, 4, 0,
                     1,    2,    16,   0,    0,    0,    7, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 192, 0, 2, 7}));
    Bytes head = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 2,  16,   0,    0,   0,   7, 8, 0,   0x45, 0, 0,
                  96,   0,    0,    0,    0,    64,   47, 0x0d, 0x63, 169, 254, 1, 7, 192, 0,    2, 7,
                  0x10, 0,    0x88, 0xbe, 0,    0,    0,  0,    0x10, 0,   0,   1, 0, 0,   0,    0};
    const Bytes frame = frameOf("1>e");
    head.insert(head.end(), frame.begin(), frame.end());
    EXPECT_EQ(sent[1].bytes, head);
    EXPECT_EQ(sent[2].bytes, frame);
    EXPECT_EQ(network.run("8: hex 0210000000070200000000ee08060001080006040002"
                          "0200000000ee"
                          "c0000207"
                          "021000000007"
                          "00000000 ->"),
              "");
    sent = network.receive(1, frame, 10);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(Bytes(sent[0].bytes.begin(), sent[0].bytes.begin() + 6), (Bytes{2, 0, 0, 0, 0, 0xee}));
    EXPECT_EQ(sent[0].bytes[41], 1) << "the sequence number";
}

// The same for IPv6: a neighbour solicitation, and a header without a checksum.
TEST(Policies, encapsulatedMirrorOverIpv6) {
    Network network;
    network.configure(policyOf(mirrorTo("32, 1, 13, 184, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7")));
    const std::vector<Sent> sent = network.receive(1, frameOf("1>e"), 0);
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[0].bytes, bytesOf("3333ff000007"
                                     "021000000007"
                                     "86dd"
                                     "6000000000203aff"
                                     "fe80000000000000001000fffe000007"
                                     "ff0200000000000000000001ff000007"
                                     "87004c2900000000"
                                     "20010db8000000000000000000000007"
                                     "0101021000000007"));
    Bytes copy = bytesOf(
        "ffffffffffff"
        "021000000007"
        "86dd"
        "60000000004c2f40"
        "fe80000000000000001000fffe000007"
        "20010db8000000000000000000000007"
        "100088be00000000"
        "1000000100000000");
    const Bytes frame = frameOf("1>e");
    copy.insert(copy.end(), frame.begin(), frame.end());
    EXPECT_EQ(sent[1].bytes, copy);
    EXPECT_EQ(
        network.run("8: hex 0210000000070200000000ee86dd6000000000203aff20010db8000000000000000000000007"
                    "fe80000000000000001000fffe0000078800b99d6000000020010db8000000000000000000000007"
                    "02010200000000ee ->"),
        "");
    const std::vector<Sent> later = network.receive(1, frame, 10);
    ASSERT_EQ(later.size(), 2u);
    EXPECT_EQ(Bytes(later[0].bytes.begin(), later[0].bytes.begin() + 6), bytesOf("0200000000ee"));
}

// The adapter asks for its own IP address, which it does not know, from the uplink that it uses now.
TEST(Policies, reverseArp) {
    Network network;
    network.configure(policyOf(jsonOf(
        {"", "teaming: {active: [8, 9], balance: Explicit, notify: true},", {"1" + kVlan10, "8", "9"}, ""})));
    network.engine().setCarrier(8, false, 0);
    const std::vector<Sent> sent = network.takeSent();
    ASSERT_EQ(sent.size(), 1u);
    Bytes frame = bytesOf(
        "ffffffffffff"
        "020000000001"
        "8100000a"
        "8035"
        "0001080006040003"
        "020000000001"
        "00000000"
        "020000000001"
        "00000000");
    frame.resize(64);
    EXPECT_EQ(sent[0], (Sent{9, frame}));
}

TEST(Policies, snapLength) {
    Network network;
    network.configure(
        policyOf(jsonOf({"", session("snap_length: 20, sources_in: [1]"), {"1", "3", "8"}, ""})));
    const std::vector<Sent> sent = network.receive(1, frameOf("1>e"), 0);
    ASSERT_EQ(sent.size(), 2u);
    const Bytes frame = frameOf("1>e");
    EXPECT_EQ(sent[0], (Sent{3, Bytes(frame.begin(), frame.begin() + 20)}));
    EXPECT_EQ(network.run("count 101 cut 1 copy-bytes 20"), "");
}

}  // namespace
}  // namespace qvs::test
