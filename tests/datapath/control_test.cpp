// SPDX-License-Identifier: Apache-2.0
// What a switch says to its neighbours, and hears from them: the check of VLANs and MTU, and LLDP.
#include <gtest/gtest.h>

#include "datapath/network.h"
#include "datapath/rules.h"

namespace qvs::test {
namespace {

const std::string kSystem = "mac: \"06:10:00:00:00:01\", system_name: \"left\", teaming: {active: [8]}, ";

class Control : public testing::Test {
  protected:
    void configure(const std::string &policies, uint64_t now = 0) {
        network.configure(policyOf(jsonOf({"",
                                           "name: \"sw1\", " + kSystem + policies + ",",
                                           {"1", "8mac: \"02:00:00:00:00:08\", id: \"p8\", client: \"nic8\""},
                                           ""})),
                          now);
    }
    // Frames that leave at a time, without what pads them to 60 bytes.
    std::vector<std::string> at(uint64_t now) {
        network.takeSent();
        EXPECT_GT(network.engine().tick(now), now);
        return hexOf(network.takeSent());
    }
    std::vector<std::string> receive(const std::string &hex, uint64_t now, uint32_t port = 8) {
        Bytes bytes = bytesOf(hex);
        if (bytes.size() < 60) bytes.resize(60);
        return hexOf(network.receive(port, bytes, now));
    }

    Network network;

  private:
    static std::vector<std::string> hexOf(const std::vector<Sent> &sent) {
        std::vector<std::string> texts;
        for (const Sent &frame : sent) {
            size_t size = frame.bytes.size();
            while (size > 0 && frame.bytes[size - 1] == 0)
                --size;
            texts.push_back(std::to_string(frame.port) + ":");
            for (size_t i = 0; i < size; ++i) {
                constexpr char kDigits[] = "0123456789abcdef";
                texts.back() += {kDigits[frame.bytes[i] >> 4], kDigits[frame.bytes[i] & 15]};
            }
            if (frame.bytes.size() > 100) texts.back() += "+" + std::to_string(frame.bytes.size());
        }
        return texts;
    }
};

using Texts = std::vector<std::string>;

// A probe of uplink 8 in its first round, from its kind on, and an answer to it.
const std::string kProbe = "8:031000000001020000000008";
const std::string kAsk =
    "88b6"
    "51565343"
    "0101"
    "061000000001"
    "00000008"
    "00000001";
std::string answered(const std::string &vlan, const std::string &length = "0000",
                     const std::string &round = "00000001") {
    return "0200000000080200000000ee8100" + vlan +
           "88b6"
           "51565343"
           "0102"
           "061000000001"
           "00000008" +
           round + length;
}

TEST_F(Control, check) {
    configure("check: {minutes: 2, vlans: [{first: 10, last: 12}]}");
    EXPECT_EQ(network.takeEvents(), "check@8= ");
    EXPECT_EQ(at(0),
              (Texts{kProbe + "8100000a" + kAsk, kProbe + "8100000b" + kAsk, kProbe + "8100000c" + kAsk}));
    // An answer to another round does not count.
    EXPECT_EQ(receive(answered("000a"), 10), Texts{});
    EXPECT_EQ(receive(answered("000c"), 10), Texts{});
    EXPECT_EQ(receive(answered("000b", "0000", "00000007"), 10), Texts{});
    EXPECT_EQ(at(999), Texts{});
    // Two lengths are asked for in a VLAN that was answered; the uplink has an MTU of 1,500.
    EXPECT_EQ(at(1000),
              (Texts{kProbe + "8100000a" + kAsk + "05dc+1518", kProbe + "8100000a" + kAsk + "05+1298"}));
    EXPECT_EQ(receive(answered("000a", "0500"), 1010), Texts{});
    EXPECT_EQ(at(2000), Texts{});
    EXPECT_EQ(network.takeEvents(), "check@8=10,12/1280 ");
    // The next round comes after the interval, or when a link changes. Other changes do not disturb it.
    configure("check: {minutes: 2, vlans: [{first: 10, last: 12}]}, aging: 7", 5000);
    EXPECT_EQ(at(119'999), Texts{});
    EXPECT_EQ(at(120'000).size(), 3U);
    EXPECT_EQ(network.run("down 8 -> \n at 130000 -> \n at 131000 -> \n at 132000 ->"), "");
    EXPECT_EQ(network.takeEvents(), "check@8=/0 ");
}

TEST_F(Control, answers) {
    const std::string asked =
        "88b6"
        "51565343"
        "0101"
        "061000000002"
        "00000009"
        "00000005"
        "05dc";
    const std::string probe = "0310000000010200000000ee8100000a" + asked;
    const std::string answer =
        "8:0200000000ee0200000000088100000a"
        "88b6"
        "51565343"
        "0102"
        "061000000002"
        "00000009"
        "00000005"
        "05dc";
    configure("aging: 7");
    EXPECT_EQ(receive(probe, 0), Texts{}) << "without the check";
    configure("check: {}");
    EXPECT_EQ(receive(probe, 0), Texts{answer});
    EXPECT_EQ(receive(kProbe.substr(2) + "8100000a" + kAsk, 0), Texts{}) << "its own probe";
    // A client cannot ask.
    EXPECT_EQ(receive("031000000001020000000001" + asked, 0, 1).size(), 1U);
}

TEST_F(Control, lldp) {
    EXPECT_EQ(at(0), Texts{}) << "without a policy";
    configure("discovery: {advertise: true}", 1000);
    const Texts sent = at(1000);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0],
              "8:0180c200000e020000000008"
              "88cc"
              "0207"
              "04"
              "061000000001"
              "0405"
              "05"
              "6e696338"
              "0602"
              "0078"
              "0802"
              "7038"
              "0a04"
              "6c656674"
              "0c0a"
              "73776974636820737731"
              "0e04"
              "0004"
              "0004");
    EXPECT_EQ(at(30'999), Texts{});
    EXPECT_EQ(at(31'000).size(), 1U);
    EXPECT_EQ(network.run("down 8 -> \n at 62000 -> \n up 8 -> \n at 62500 -> 8"), "");
    // It says that it ends.
    network.takeSent();
    configure("discovery: {listen: true}", 63'000);
    const std::vector<Sent> last = network.takeSent();
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(Bytes(last[0].bytes.begin() + 30, last[0].bytes.begin() + 34), bytesOf("06020000"));
}

TEST_F(Control, neighbours) {
    const std::string head =
        "0180c200000e0200000000ee"
        "88cc";
    const std::string parts =
        "0207"
        "04"
        "0200000000ee"
        "0402"
        "05"
        "61";
    configure("discovery: {listen: true}");
    for (const std::string bad : {"", "0207", "0207040200000000ee0602000a0402056100000000", "02ff"})
        receive(head + bad, 0);
    receive(head + parts +
                "0602"
                "000a"
                "0000",
            0, 1);
    EXPECT_EQ(network.takeEvents(), "");
    receive(head + parts +
                "0602"
                "000a"
                "0000",
            0);
    EXPECT_EQ(network.takeEvents(), "neighbour@8=46 ");
    EXPECT_EQ(at(9999), Texts{});
    EXPECT_EQ(network.takeEvents(), "");
    EXPECT_EQ(at(10'000), Texts{});
    EXPECT_EQ(network.takeEvents(), "neighbour@8=0 ");
    for (const char *lifetime : {"ffff", "0000"})
        receive(head + parts + "0602" + lifetime + "0000", 11'000);
    EXPECT_EQ(network.takeEvents(), "neighbour@8=46 neighbour@8=0 ");
    EXPECT_EQ(network.value(8, 14), 7U) << "exceptions";
}

}  // namespace
}  // namespace qvs::test
