// SPDX-License-Identifier: Apache-2.0
// Flows of sampled ports: which frames make them, when they end, and the messages that report them.
#include "datapath/network.h"
#include "datapath/rules.h"

namespace qvs::test {
namespace {

std::string sampled(const std::string &members) {
    return "ipfix: {slot: 150, domain: 7, idle: 15, active: 60, "
           "collectors: [{address: [127, 0, 0, 1], port: 4739}], " +
           members + "}";
}

INSTANTIATE_TEST_SUITE_P(
    flows, Rules,
    testing::Values(
        Case{"idle and active",
             "",
             {"1" + kVlan10 + ", " + sampled(""), "2", "8"},
             "1: 1>m -> 8[10] \n count 150 begun 1 flows 1 \n at 14999 -> \n count 150 flows 1 records 0 \n"
             "at 15000 -> \n count 150 flows 0 idle 1 records 1 messages 1 templates 2 message-bytes 247 \n"
             "1: 1>m -> 8[10] \n at 29000 -> \n 1: 1>m -> 8[10] \n at 43000 -> \n 1: 1>m -> 8[10] \n"
             "at 57000 -> \n 1: 1>m -> 8[10] \n at 71000 -> \n 1: 1>m -> 8[10] \n at 75000 -> \n"
             "count 150 begun 2 flows 0 active 1 records 2 templates 4"},
        Case{"both directions",
             "",
             {"1" + sampled(""), "2", "8"},
             "1: 1>m -> 2 8 \n 2: 2>m -> 1 8 \n 8: e>m -> 1 2 \n count 150 seen 3 flows 2 \n 1: 1>m[5] -> \n"
             "count 150 seen 3"},
        Case{"every second frame, and frames without a packet",
             "",
             {"1" + sampled("sampling: 2"), "2", "8"},
             "1: 1>m -> 2 8 \n 1: 1>n -> 2 8 \n 1: 1>2 -> 2 \n 1: 1>n -> 2 8 \n"
             "count 150 seen 4 sampled 2 flows 1 no-packet 1 without-flow 1"},
        Case{"only on this host",
             "",
             {"1" + sampled("internal_only: true"), "2", "8"},
             "1: 1>2 -> 2 \n 1: 1>e -> 8 \n 1: 1>* -> 2 8 \n 8: e>1 -> 1 \n 2: 2>1 -> 1 \n count 150 seen 2"},
        Case{"a collector that does not take messages",
             "",
             {"1" + sampled("domain_name: \"refused\""), "8"},
             "1: 1>m -> 8 \n at 15000 -> \n count 150 idle 1 records 0 messages 0 not-sent 2"}),
    nameOf);

const std::string kFields =
    "00040001"
    "00050001"
    "003d0001"
    "00070002"
    "000b0002"
    "003a0002"
    "000a0004"
    "000e0004"
    "00380006"
    "00500006"
    "00060001"
    "00020008"
    "00010008"
    "00980008"
    "00990008"
    "00880001";

TEST(Export, message) {
    Network network;
    const Case value = {"", "", {"1" + kVlan10 + ", " + sampled(""), "8"}, ""};
    network.configure(policyOf(jsonOf(value)));
    network.receive(1, frameOf("1>m"), 1000);
    network.receive(1, frameOf("1>m"), 3000);
    EXPECT_EQ(network.run("at 18000 ->"), "");
    // The header, the templates for both versions of IP, and a record.
    const std::string expected =
        "000a"
        "00f7"
        "6553f112"
        "00000000"
        "00000007"
        "0002"
        "009c"
        "0100"
        "0012"
        "00080004"
        "000c0004" +
        kFields +
        "0101"
        "0012"
        "001b0010"
        "001c0010" +
        kFields +
        "0100"
        "004b"
        "0a000001"
        "ef010101"
        "11"
        "00"
        "00"
        "0000"
        "0000"
        "000a"
        "00000001"
        "00000008"
        "020000000001"
        "01005e010101"
        "00"
        "0000000000000002"
        "000000000000005c"
        "0000018bcfe56be8"
        "0000018bcfe573b8"
        "01";
    ASSERT_EQ(network.takeReports(), std::vector<Bytes>{bytesOf(expected)});
    // Templates are not repeated for a minute. A policy that ends reports what is there.
    network.receive(1, frameOf("1>m"), 20000);
    network.configure(policyOf(jsonOf({"", "", {"1" + kVlan10, "8"}, ""})), 21000);
    const std::vector<Bytes> last = network.takeReports();
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(last[0].size(), 16U + 75U);
    EXPECT_EQ(last[0].back(), 4);
}

}  // namespace
}  // namespace qvs::test
