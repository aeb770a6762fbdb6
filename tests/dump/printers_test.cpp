// The printers: the examples of docs/dump-format.md, the branches that those leave out, and hostile records.
#include <gtest/gtest.h>
#include <qvs/dvs.h>
#include <qvs/mesh_public.h>
#include <qvs/netdvs.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "dump/printed_keys.h"
#include "support/bytes.h"
#include "support/intercept.h"

namespace qvs::test {
namespace {

// The bytes of a record as the page writes them: hexadecimal digits, "text", [N] for zeros up to a length of
// N bytes from the text before it, or for N zeros, and # before a remark.
std::string record(std::string_view written) {
    std::string bytes, textBefore;
    for (size_t at = 0; at < written.size();) {
        const char c = written[at];
        const auto upTo = [&](char end) { return std::min(written.find(end, at + 1), written.size()); };
        if (c == '#') {
            at = upTo('\n');
        } else if (c == '"') {
            textBefore = written.substr(at + 1, upTo('"') - at - 1);
            at = upTo('"') + 1;
            if (at == written.size() || written[at] != '[') bytes += std::exchange(textBefore, "");
        } else if (c == '[') {
            size_t size = 0;
            std::from_chars(&written[at + 1], &written[upTo(']')], size);
            bytes += field(std::exchange(textBefore, ""), size);
            at = upTo(']') + 1;
        } else if (c == ' ' || c == '\n') {
            ++at;
        } else {
            bytes += hex(written.substr(at, 2));
            at += 2;
        }
    }
    return bytes;
}

struct Example {
    std::vector<std::string> keys;  // the text is of the first
    std::string classes, record, text;
    bool oldLayout;
};

// The examples of the page: lines that begin with "Key" and those up to the next blank one name keys, a block
// fenced as "record CLASS [99]" holds a record, and one fenced as "dump" its text.
std::vector<Example> readPage() {
    std::ifstream page(QVS_TEST_DATA "/../docs/dump-format.md");
    std::vector<Example> examples;
    Example example;
    std::string line;
    const auto block = [&] {
        std::string text;
        while (std::getline(page, line) && line != "```")
            text += line + '\n';
        return text;
    };
    while (std::getline(page, line)) {
        if (line.starts_with("Key")) {
            example.keys.clear();
            for (; !line.empty(); std::getline(page, line)) {
                for (size_t at = 0; (at = line.find('`', at)) != std::string::npos;) {
                    const size_t end = line.find('`', at + 1);
                    example.keys.push_back(line.substr(at + 1, end - at - 1));
                    at = end + 1;
                }
            }
        } else if (line.starts_with("```record ")) {
            example.oldLayout = line.ends_with(" 99");
            example.classes = line.substr(10, line.size() - 10 - (example.oldLayout ? 3 : 0));
            example.record = record(block());
        } else if (line == "```dump") {
            example.text = block();
            examples.push_back(example);
        } else if (line.starts_with("```")) {
            block();
        }
    }
    return examples;
}

uint32_t classBits(const std::string &classes) {
    static const std::map<std::string, uint32_t> bits = {
        {"CONFIG", 16}, {"RUNTIME", 32}, {"VOLATILE", 4}, {"POLICY", 8}};
    return bits.at(classes);
}

// Two switches, of the versions at which the layout changes.
constexpr const char *kOld = "old";
constexpr const char *kNew = "new";
void addSwitches() {
    ASSERT_STATUS(DVSHYP_SwitchAdd(kOld, "vswitch", 16, 99), 0);
    ASSERT_STATUS(DVSHYP_SwitchAdd(kNew, "vswitch", 16, 100), 0);
}

std::string dumpLoaded() {
    char *dumped = nullptr;
    EXPECT_STATUS(NetDVS_Dump(nullptr, &dumped), 0);
    const std::string text = dumped;
    NetDVS_FreeMemory(dumped);
    return text;
}

// How one property of a switch is printed.
std::string print(const char *id, const std::string &key, const std::string &bytes, uint32_t type) {
    EXPECT_STATUS(
        DVSHYP_GlobalPropSet(id, key.c_str(), bytes.data(), static_cast<uint32_t>(bytes.size()), type), 0);
    EXPECT_STATUS(DVSLoadConfig(), 0);
    const std::string text = dumpLoaded();
    EXPECT_STATUS(DVSHYP_GlobalPropClear(id, key.c_str()), 0);
    const std::string begin =
        std::string("switch ") + id + " (vswitch)\n\tmax ports: 16\n\tglobal properties:\n";
    const size_t start = text.find(begin) + begin.size();
    return text.substr(start, text.find("\thost properties:\n", start) - start);
}

TEST(Printers, ExamplesOfThePage) {
    addSwitches();
    std::set<std::string> seen;
    for (const Example &example : readPage()) {
        for (const std::string &key : example.keys) {
            SCOPED_TRACE(key);
            std::string text = example.text;
            EXPECT_EQ(text.find("\t\t" + example.keys[0]), 0u);
            text.replace(2, example.keys[0].size(), key);
            EXPECT_EQ(print(example.oldLayout ? kOld : kNew, key, example.record, classBits(example.classes)),
                      text);
            seen.insert(key);
        }
    }
    EXPECT_EQ(seen, std::set<std::string>(std::begin(kPrintedKeys), std::end(kPrintedKeys)));
}

// The text stands behind the key; "$" is the line of the classes.
TEST(Printers, Branches) {
    const std::string names81 = R"("a"[81] "b"[81] "c"[81])";
    struct {
        const char *key;
        std::string record;
        const char *text;
    } const rows[] = {
        {"com.quillon.vswitch.mtu", "ffffffff", " = -1 , \tpropType = CONFIG \n"},
        {"com.quillon.common.port.volatile.status", "0600000000000000 [12] \"n\" 00", " = free\n"},
        {"com.quillon.common.port.volatile.status", "0500000000000000 [8] ffffffff 00",
         " = inUse blocked portID=4294967295  propType = CONFIG \n"},
        {"com.quillon.common.port.volatile.status", "0100000000000000 [8] 05000000 \"n\" 00",
         " = inUse portID=5 n propType = CONFIG \n"},
        {"com.quillon.common.port.volatile.ptstatus", "f7ffffffffffffff ffffffffffffffff",
         " = noPassthruReason = 18446744073709551615, \tpropType = CONFIG \n"},
        {"com.quillon.common.host.volatile.status", "00000000 00", " = green , \tpropType = CONFIG \n"},
        {"com.quillon.common.host.volatile.status", "02000000 \"%s\" 00",
         " = red %s, \tpropType = CONFIG \n"},
        {"com.quillon.common.host.volatile.status", "07000000 \"why\" 00",
         " = unknown value 7, \tpropType = CONFIG \n"},
        {"com.quillon.common.port.linkstatus", "00ff 0000", " =\n\t\t\tlink down; unknow speed/duplex 0\n$"},
        {"com.quillon.common.port.linkstatus", "8000 0100", " =\n\t\t\tlink up; auto negotiation\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0200", " =\n\t\t\tlink up; 10 Mb/s, half duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0400", " =\n\t\t\tlink up; 10 Mb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0800", " =\n\t\t\tlink up; 100 Mb/s, half duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 1000", " =\n\t\t\tlink up; 100 Mb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 2000", " =\n\t\t\tlink up; 1000 Mb/s, half duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 4000", " =\n\t\t\tlink up; 1000 Mb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0001", " =\n\t\t\tlink up; 2500 Mb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0002", " =\n\t\t\tlink up; 20 Gb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0004", " =\n\t\t\tlink up; 40 Gb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 0008", " =\n\t\t\tlink up; 100 Gb/s, full duplex\n$"},
        {"com.quillon.common.port.linkstatus", "0100 ffff",
         " =\n\t\t\tlink up; unknow speed/duplex 65535\n$"},
        {"com.quillon.common.overlay", "00000000", " =\n$"},
        {"com.quillon.common.port.overlay", "00000000", " =\n$"},
        {"com.quillon.common.uplinkPorts", "00000000", ":\n\t\t\t<none>\n$"},
        {"com.quillon.common.uplinkPorts", "01000000 \"only\"[81]", ":\n\t\t\tonly\n$"},
        {"com.quillon.common.host.uplinkPorts", "03000000 \"1\"[48] \"2\"[48] \"3\"[48]",
         ":\n\t\t\t1, 2, 3\n$"},
        {"com.quillon.common.port.volatile.vlan", "ff0f 0000", " = VLAN 4095\n$"},
        {"com.quillon.common.port.volatile.vlan", "0000 0100 0500 0300", " = VLAN 0\n\t\t\tranges = 5-3\n$"},
        {"com.quillon.vswitch.teaming", "09000000 5f000000 ffffffff c3ffffff 00000000 00000000 [2592]",
         ":\n\t\t\tload balancing = \n\t\t\tlink selection =\n\t\t\tlink behavior =\n\t\t\tactive =\n"
         "\t\t\tstandby =\n$"},
        {"com.quillon.vswitch.teaming", "00000000 20000000 00000000 14000000 01000000 02000000" + names81,
         ":\n\t\t\tload balancing = none (all pkts dropped)\n\t\t\tlink selection = beacon state ok;\n"
         "\t\t\tlink behavior = best effort on failure; shotgun on failure;\n\t\t\tactive = a;\n"
         "\t\t\tstandby = b; c;\n$"},
        {"com.quillon.vswitch.port.vlan", "0600 0700 ffff 0000", " = PVLAN 7\n$"},
        {"com.quillon.vswitch.port.vlan", "0300 0700 0000 0100 0000 fe0f",
         " = Guest VLAN tagging\n\t\t\tranges = 0-4094\n$"},
        {"com.quillon.vswitch.port.vlan", "0400 0000 0000 0000", " = No VLAN\n$"},
        {"com.quillon.vswitch.pvlanMap", "0a00 0b00 00ffffff ffff 0000 0401ffff ffffffff",
         ":\n\t\t\t(10, 11) - unknown\n\t\t\t(65535, 0) - unknown\n$"},
        {"com.quillon.vswitch.pvlanMap", "", ":\n$"},
        {"com.quillon.vswitch.port.security", "02000000",
         " = allow promiscuous; deny mac change; allow forged frames\n$"},
        {"com.quillon.vswitch.port.extraEthFRP", "74000000 0100 ffffffffffff [190]",
         " =   ALLMULTI  PROMISC  USE_LADRF\n$"},
        {"com.quillon.etherswitch.cdp", "00 00", " = CDP, down\n$"},
        {"com.quillon.etherswitch.cdp", "00 01", " = CDP, listen\n$"},
        {"com.quillon.etherswitch.cdp", "01 02", " = LLDP, advertise\n$"},
        {"com.quillon.etherswitch.cdp", "02 04", " = unknown, unknown\n$"},
        {"com.quillon.etherswitch.ipfix", "01000000 02000000 fe80 [13] 01 ffff ffffffff 01 01 ffffffff",
         ":\n\t\t\tidle timeout = 1 seconds\n\t\t\tactive timeout = 2 seconds\n"
         "\t\t\tsampling rate = 4294967295\n"
         "\t\t\tcollector = [fe80:0000:0000:0000:0000:0000:0000:0001]:65535\n"
         "\t\t\tinternal flows only = true\n\t\t\tobsDomainID = 4294967295\n$"},
        {"com.quillon.net.ipfix.port", "[12] fc 00 0000 [168]",
         ":\n\t\t\tidle timeout = 0 seconds\n\t\t\tactive timeout = 0 seconds\n\t\t\tsampling rate = 0\n"
         "\t\t\tinternal flows only = false\n\t\t\tvNIC sampling only = false\n\t\t\tobsDomainID = 0\n"
         "\t\t\tsrcIPv4 = 0.0.0.0\n\t\t\tvirtualObsID = ''\n\t\t\tcollectorCount = 0\n$"},
        {"com.quillon.etherswitch.lacp",
         "02000000 \"a\"[65] \"b\"[16] 02000000 14000000 ffffffff [81] 03000000 15000000 00000000",
         ":\n\t\t\tlag name:\t\t\ta\n\t\t\tlag key:\t\t\tb\n\t\t\tmode:\t\t\t\tpassive\n"
         "\t\t\tload balance policy:\t\tSrc portID\n\t\t\tlag port number:\t\t-1\n\n"
         "\t\t\tlag name:\t\t\t\n\t\t\tlag key:\t\t\t\n\t\t\tmode:\t\t\t\tnone\n"
         "\t\t\tload balance policy:\t\tunknown\n\t\t\tlag port number:\t\t0\n\n$"},
        {"com.quillon.etherswitch.port.lacp", "02000000 01000000", ":\n\t\t\tstatus = disabled\n"},
        {"com.quillon.etherswitch.port.lacp", "01000000 01000000",
         ":\n\t\t\tstatus = enabled\n\t\t\tmode = active\n"},
        {"com.quillon.etherswitch.port.lacp", "01000000 03000000",
         ":\n\t\t\tstatus = enabled\n\t\t\tmode = none\n"},
        {"com.quillon.vswitch.port.mirrorSessions",
         "efbecefa 02000000 02000000 02000000 00000000"
         "\"s\"[32] \"d\"[84] 05000000 00000000 33000000 0000 ffff ffff [82] 01000000 [12]"
         "\"s\"[32] \"d\"[84] 06000000 00000000 00000000 0000 [86] 01000000 [8] 01000000"
         "[4] 02005e100001 [42]  [4] \"p\"[48]",
         ":\n\t\t\tsid = s\n\t\t\tdname = d\n\t\t\ttype = LOGICAL_SPAN\n\t\t\tsnapLen = 0\n"
         "\t\t\tflags = DST_NO_OUTPUT DST_NO_INPUT LEGACY DISABLED\n\t\t\tencapVlan = 0\n"
         "\t\t\tsamplingRate = 0\n\t\t\tdstEntities = 02:00:5e:10:00:01\n\t\t\tsrcInEntities =\n"
         "\t\t\tsrcOutEntities =\n"
         "\t\t\tsid = s\n\t\t\tdname = d\n\t\t\ttype = NOT_SUPPORTED_TYPE\n\t\t\tsnapLen = 0\n"
         "\t\t\tflags =\n\t\t\tencapVlan = 0\n\t\t\tsamplingRate = 0\n\t\t\tdstEntities = p\n"
         "\t\t\tsrcInEntities =\n\t\t\tsrcOutEntities =\n$"},
        {"com.quillon.common.port.volatile.vlanchkresult", "0000 0100 0500 0500 [4]",
         ":\n\t\t\ttrunked = <none>\n\t\t\tuntrunked = 5\n$"},
        {"com.quillon.common.teamcheck.deploy", "00 ffffffff",
         ":\n\t\t\tenabled = false\n\t\t\tinterval = 4294967295 minutes\n$"},
        {"com.quillon.mesh.teamcheck.param", "00", ":\n\t\t\tip hash expected = false\n$"},
        {"com.quillon.vswitch.macLearning", "40420fff 00000000",
         ":\n\t\t\tagingTime = 1000000 seconds\n\t\t\tmacLimit = 0\n$"},
        {"com.quillon.vswitch.macLearning.learnStatic", "\"false\" 00", ":\n\t\t\tenabled = false\n$"},
        {"com.quillon.vswitch.macLearning.learnStatic", "\"truest\" 00", ":\n\t\t\tenabled = true\n$"},
        {"com.quillon.vswitch.macLearning.learnStatic", "\"tru\" 00", ":\n\t\t\tenabled = false\n$"},
        {"com.quillon.vswitch.port.macManagement", "80 00 00 ffffffff 00000000",
         ":\n\t\t\tmac change = allow\n\t\t\tlearning = disabled\n\t\t\tflooding = disabled\n"
         "\t\t\tmacLimit = 4294967295\n\t\t\tmacLimitPolicy = allow\n$"},
        {"com.quillon.vswitch.mcast.user.addresses", "00", ":\n\t\t\tcount = 0\n$"},
        {"com.quillon.common.serviceinstance", "", ":\n\t\t\tlength = 0\n$"},
        {"com.quillon.common.serviceinstance", "00", ":\n\t\t\tlength = 1\n\t\t\ttext = \n$"},
        {"com.quillon.common.serviceinstance", "ff [15]",
         ":\n\t\t\tlength = 16\n\t\t\tbytes = ff 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n$"},
    };
    addSwitches();
    for (const auto &row : rows) {
        SCOPED_TRACE(row.record);
        std::string text = std::string("\t\t") + row.key + row.text;
        if (text.back() == '$') text.replace(text.size() - 1, 1, "\t\t\tpropType = CONFIG \n");
        EXPECT_EQ(print(kNew, row.key, record(row.record), 16), text);
    }
}

// Records that hold less than they count, or count more than there can be. A number that is cut short is not
// printed, a text is; a row of which nothing is whole stays empty.
TEST(Printers, CountsThatTheRecordsDoNotHold) {
    const std::string addresses33 = "02000000 2100 [192] ffff";
    std::string printed32;
    for (int i = 0; i < 32; ++i)
        printed32 += "\t\tmulticastAddr[" + std::to_string(i) + "] = 00:00:00:00:00:00\n";
    const std::string sampling =
        ":\n\t\t\tidle timeout = 0 seconds\n\t\t\tactive timeout = 0 seconds\n\t\t\tsampling rate = 0\n"
        "\t\t\tinternal flows only = false\n\t\t\tvNIC sampling only = false\n\t\t\tobsDomainID = 0\n"
        "\t\t\tsrcIPv4 = 0.0.0.0\n\t\t\tvirtualObsID = ''\n\t\t\tcollectorCount = 2\n";
    struct {
        const char *key;
        std::string record, text;
    } const rows[] = {
        {"com.quillon.common.port.overlay", "02000000 01000000 ff00000000000000 02000000 ff", " =0xff@1 \n$"},
        {"com.quillon.common.port.overlay", "01000000 01000000 ff000000", " =\n$"},
        {"com.quillon.common.port.volatile.vlan", "0a00 0200 0100 0200 6400",
         " = VLAN 10\n\t\t\tranges = 1-2\n$"},
        {"com.quillon.common.port.volatile.vlan", "0a00 0200 6400", " = VLAN 10\n\t\t\tranges =\n$"},
        {"com.quillon.vswitch.port.vlan", "0100 0000 0000 0100 64",
         " = Guest VLAN tagging\n\t\t\tranges =\n$"},
        {"com.quillon.common.port.volatile.vlanchkresult", "0100 0000 64",
         ":\n\t\t\ttrunked =\n\t\t\tuntrunked = <none>\n$"},
        {"com.quillon.common.port.volatile.mtuchkresult", "0200 0100 dc05 2823 dc",
         ":\n\t\t\tallowed = 1500-9000\n\t\t\tdisallowed =\n$"},
        {"com.quillon.vswitch.port.extraEthFRP", "02000000 0200 01005e000001 01005e0000",
         " =   MULTICAST\n\t\tmulticastAddr[0] = 01:00:5e:00:00:01\n$"},
        {"com.quillon.vswitch.port.extraEthFRP", addresses33, " =   MULTICAST\n" + printed32 + "$"},
        {"com.quillon.vswitch.port.extraEthFRP", addresses33 + "ffffffff [600]",
         " =   MULTICAST\n" + printed32 + "$"},
        {"com.quillon.vswitch.mcast.user.addresses", "02 01005e000001 01005e0000",
         ":\n\t\t\tcount = 2\n\t\t\taddress = 01:00:5e:00:00:01\n$"},
        {"com.quillon.net.ipfix.port", "[12] 00 02 0000 [8] 0a000001 [12] 0100 00 00 0a000002 [12] 0100 00",
         sampling + "\t\t\t\t0th collector = 10.0.0.1:1\n$"},
        {"com.quillon.common.uplinkPorts", "02000000", ":\n\t\t\t\n$"},
        {"com.quillon.common.uplinkPorts", "01000000 \"upl\"", ":\n\t\t\t\n$"},
        {"com.quillon.common.uplinkPorts", "03000000 \"uplink0\"[81] \"upl\"", ":\n\t\t\tuplink0, upl\n$"},
        {"com.quillon.common.host.uplinkPorts", "01000000", ":\n\t\t\t\n$"},
        {"com.quillon.common.host.uplinkPorts", "", ":\n\t\t\t<none>\n$"},
        {"com.quillon.common.overlay", "01000000 05000000 \"ov\"", " =\n$"},
    };
    addSwitches();
    for (const auto &row : rows) {
        SCOPED_TRACE(row.record);
        std::string text = std::string("\t\t") + row.key + row.text;
        text.replace(text.size() - 1, 1, "\t\t\tpropType = CONFIG \n");
        EXPECT_EQ(print(kNew, row.key, record(row.record), 16), text);
    }
}

// Megabytes, for which the text asks for memory in other ways.
TEST(Printers, LargeText) {
    CallsReset reset;
    ASSERT_STATUS(DVSHYP_SwitchAdd(kNew, "vswitch", 16, 105), 0);
    ASSERT_STATUS(DVSHYP_GlobalPropSet(kNew, "com.quillon.common.serviceinstance", "", 0, 16), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    std::string bytes, lines;
    for (uint64_t i = 0; i < 90000; ++i) {
        const std::string line = u64(i) + u64(~i);
        bytes += line;
        lines += "\t\t\tbytes =";
        for (const char byte : line)
            lines += " " + toHex({&byte, 1});
        lines += '\n';
    }
    calls().record = [&](const char *, std::string_view) { return std::string_view(bytes); };
    EXPECT_TRUE(dumpLoaded() ==
                "switch new (vswitch)\n\tmax ports: 16\n\tglobal properties:\n"
                "\t\tcom.quillon.common.serviceinstance:\n\t\t\tlength = 1440000\n" +
                    lines + "\t\t\tpropType = CONFIG \n\thost properties:\n");
}

// Records of any length that end where the readable memory ends.
class LastReadableBytes {
  public:
    LastReadableBytes() {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        void *pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) std::abort();
        end_ = static_cast<char *>(pages) + page;
        mprotect(end_, page, PROT_NONE);
    }
    std::string_view hold(std::string_view record) {
        record.copy(end_ - record.size(), record.size());
        return {end_ - record.size(), record.size()};
    }

  private:
    char *end_;
};

// Every printer, in both layouts, reads nothing behind its record and writes no more than a few times its
// size.
TEST(Printers, HostileRecords) {
    CallsReset reset;
    addSwitches();
    std::map<std::string, std::string> good;
    for (const Example &example : readPage()) {
        for (const std::string &key : example.keys)
            good[key] = std::max(good[key], example.record,
                                 [](const auto &a, const auto &b) { return a.size() < b.size(); });
    }
    for (const char *id : {kOld, kNew}) {
        for (const auto &[key, bytes] : good)
            ASSERT_STATUS(DVSHYP_GlobalPropSet(id, key.c_str(), "", 0, 16), 0);
    }
    ASSERT_STATUS(DVSLoadConfig(), 0);

    LastReadableBytes last;
    size_t bytesGiven = 0;
    const auto dumpAll = [&](const auto &recordOf) {
        bytesGiven = 0;
        calls().record = [&](const char *key, std::string_view) {
            const std::string bytes = recordOf(good.at(key));
            bytesGiven += bytes.size();
            return last.hold(bytes);
        };
        EXPECT_LE(dumpLoaded().size(), 1000 * std::size(kPrintedKeys) * 2 + 8 * bytesGiven);
    };
    const size_t longest = std::max_element(good.begin(), good.end(), [](const auto &a, const auto &b) {
                               return a.second.size() < b.second.size();
                           })->second.size();
    EXPECT_EQ(longest, 2616u);
    for (size_t length = 0; length <= longest + 1; ++length) {
        // Beyond a key's full size and one, its records are empty and cost nothing.
        const auto upTo = [length](const std::string &bytes) {
            return length <= bytes.size() + 1 ? length : 0;
        };
        dumpAll([&](const std::string &bytes) { return std::string(upTo(bytes), '\xff'); });
        dumpAll([&](const std::string &bytes) { return (bytes + '\xff').substr(0, upTo(bytes)); });
    }
    // One number after the other at its largest; what the longest have further behind are names.
    for (size_t offset = 0; offset < 800; ++offset) {
        dumpAll([&](std::string bytes) {
            if (offset >= bytes.size()) return std::string();
            const size_t size = std::min<size_t>(4, bytes.size() - offset);
            return bytes.replace(offset, size, size, '\xff');
        });
    }
}

}  // namespace
}  // namespace qvs::test
