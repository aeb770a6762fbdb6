// SPDX-License-Identifier: Apache-2.0
// The MTU of a switch: its command lines, and what is put back when one of them fails.
#include "support/test.h"

namespace qvs::test {
namespace {

std::string get(const std::string &rest = " -> exit 0\n") {
    return "shell treesh -e get /net/portsets/sw1/mtu" + rest;
}
std::string list(const std::string &rest = " -> exit 0\n") {
    return "shell treesh -e ls /net/portsets/sw1/uplinks" + rest;
}
// The entry ends in "/" and the line adds none; the line that puts back adds one.
std::string nic(int number, int mtu, const std::string &rest = " -> exit 0\n") {
    return "shell treesh -e set /net/pNics/pnic" + std::to_string(number) + "/mtu " + std::to_string(mtu) +
           rest;
}
std::string back(int number) {
    return "shell treesh -e set /net/pNics/pnic" + std::to_string(number) + "//mtu 1500 -> exit 0\n";
}
std::string portset(int mtu, const std::string &rest = " -> exit 0\n") {
    return "shell treesh -e set /net/portsets/sw1/mtu " + std::to_string(mtu) + rest;
}
std::string property(const char *key, const std::string &rest = " -> 0x0\n") {
    return std::string(R"(state GlobalPropSet switch="id" key="com.quillon.)") + key +
           R"(.mtu" length=4 type=16)" + rest;
}

class Mtu : public testing::Test {
  protected:
    void SetUp() override { createSwitch(0, 4, 0); }
};

TEST_F(Mtu, IsSetOnNicsThenPortsetThenProperties) {
    const std::string nics = nic(0, 9000) + nic(1, 9000) + nic(2, 9000) + nic(3, 9000);
    EXPECT_STATUS(VSDVS_SetMTU("sw1", 9000), 0);
    EXPECT_EQ(takeTrace(),
              get() + list() + nics + portset(9000) + property("vswitch") + property("etherswitch"));
    EXPECT_BYTES(*globalProp("id", "com.quillon.vswitch.mtu"), u32(9000));
    EXPECT_BYTES(*globalProp("id", "com.quillon.etherswitch.mtu"), u32(9000));
    int mtu = 0;
    EXPECT_STATUS(VSDVS_GetMTU("sw1", &mtu), 0);
    EXPECT_EQ(mtu, 9000);
    // The second property is a courtesy.
    addFault("etherswitch.mtu", R"("status":"0xbad0014")");
    EXPECT_STATUS(VSDVS_SetMTU("sw1", 1280), 0);
}

TEST_F(Mtu, PutsBackLastFirstWhatWasSet) {
    const std::string before = hostState(), nics = nic(0, 1600) + nic(1, 1600) + nic(2, 1600) + nic(3, 1600);
    addFault("vswitch.mtu", R"("status":"0xbad0014")");
    EXPECT_STATUS(VSDVS_SetMTU("sw1", 1600), 0xbad0014);
    EXPECT_EQ(takeTrace(), get() + list() + nics + portset(1600) + property("vswitch", " -> 0xbad0014\n") +
                               portset(1500) + back(3) + back(2) + back(1) + back(0));
    EXPECT_EQ(hostState(), before);
}

TEST_F(Mtu, UsesTheUplinksThatAreListed) {
    std::string lines;
    for (int i = 0; i < 33; ++i)
        lines += toHex("pnic0/\n");
    struct {
        std::string fault;
        int uplinks;
    } const rows[] = {
        {R"("output":[{"offset":0,"hex":")" + lines + "\"}]", 32},
        {R"("truncate":0)", 0},
    };
    for (const auto &[fault, uplinks] : rows) {
        clearTrace();
        addFault("ls /net", fault);
        EXPECT_STATUS(VSDVS_SetMTU("sw1", 1600), 0);
        std::string nics;
        for (int i = 0; i < uplinks; ++i)
            nics += nic(0, 1600);
        EXPECT_EQ(takeTrace(),
                  get() + list() + nics + portset(1600) + property("vswitch") + property("etherswitch"));
    }
}

// A line as long as the buffer leaves its end for the next read: an empty entry, which is a node like any
// other.
TEST_F(Mtu, LongLineIsReadInPieces) {
    const std::string entry = "pnic0" + std::string(26, '/');
    addFault("ls /net", R"("output":[{"offset":0,"hex":")" + toHex(entry + '\n') + "\"}]");
    EXPECT_STATUS(VSDVS_SetMTU("sw1", 1600), 0xbad0001);
    EXPECT_EQ(takeTrace(), get() + list() + "shell treesh -e set /net/pNics/" + entry +
                               "mtu 1600 -> exit 0\n" +
                               "shell treesh -e set /net/pNics/mtu 1600 -> exit 1\n" +
                               "shell treesh -e set /net/pNics/" + entry + "/mtu 1500 -> exit 0\n");
}

TEST_F(Mtu, LastNumberInTheAnswerCounts) {
    struct {
        const char *hex;
        uint32_t status;
        int mtu;
    } const rows[] = {
        {"313530303a390a0000", 0, 9},            // 1500:9
        {"6d74753a783a370d0a", 0, 7},            // mtu:x:7, carriage return and line end
        {"6d74753a78787878780a", 0xbad0001, 5},  // no number at all
    };
    for (const auto &row : rows) {
        addFault("get /net", std::string(R"("output":[{"offset":0,"hex":")") + row.hex + "\"}]");
        int mtu = 5;
        EXPECT_STATUS(VSDVS_GetMTU("sw1", &mtu), row.status) << row.hex;
        EXPECT_EQ(mtu, row.mtu) << row.hex;
    }
    addFault("get /net", R"("truncate":0)");
    int mtu = 5;
    EXPECT_STATUS(VSDVS_GetMTU("sw1", &mtu), 0xbad0001);
}

}  // namespace
}  // namespace qvs::test
