// SPDX-License-Identifier: Apache-2.0
// The printers: the examples of docs/dump-format.md, the branches that those leave out, and hostile records.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <set>

#include "support/intercept.h"
#include "support/test.h"

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
    EXPECT_STATUS(setGlobalProp(id, key.c_str(), bytes, type), 0);
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
            if (!seen.insert(key).second) continue;
            // It has a printer of its own: no text is printed as one.
            text = print(kNew, key, qvs::test::text("abc"), 16);
            EXPECT_TRUE(text.starts_with("\t\t" + key)) << text;
            EXPECT_NE(text, "\t\t" + key + " = abc , \tpropType = CONFIG \n");
        }
    }
    EXPECT_EQ(seen.size(), 56u);
}

// KEY | RECORD | TEXT in a line, which goes on where the next one is indented: the key without
// "com.quillon.", the text that stands behind it. "~" begins a line of the text, "$" is the line of the
// classes and "^" the classes on another line, "`" is a tab and "!" a line end.
constexpr std::string_view kPrinted = R"table(
vswitch.mtu | ffffffff |  = -1 , `^
common.port.volatile.status | 0600000000000000 [12] "n" 00 |  = free
common.port.volatile.status | 0500000000000000 [8] ffffffff 00 |  = inUse blocked portID=4294967295  ^
common.port.volatile.status | 0100000000000000 [8] 05000000 "n" 00 |  = inUse portID=5 n ^
common.port.volatile.ptstatus | f7ffffffffffffff
    ffffffffffffffff |  = noPassthruReason = 18446744073709551615, `^
common.host.volatile.status | 00000000 00 |  = green , `^
common.host.volatile.status | 02000000 "%s" 00 |  = red %s, `^
common.host.volatile.status | 07000000 "why" 00 |  = unknown value 7, `^
common.port.linkstatus | 00ff 0000 |  =~link down; unknow speed/duplex 0$
common.port.linkstatus | 8000 0100 |  =~link up; auto negotiation$
common.port.linkstatus | 0100 0200 |  =~link up; 10 Mb/s, half duplex$
common.port.linkstatus | 0100 0400 |  =~link up; 10 Mb/s, full duplex$
common.port.linkstatus | 0100 0800 |  =~link up; 100 Mb/s, half duplex$
common.port.linkstatus | 0100 1000 |  =~link up; 100 Mb/s, full duplex$
common.port.linkstatus | 0100 2000 |  =~link up; 1000 Mb/s, half duplex$
common.port.linkstatus | 0100 4000 |  =~link up; 1000 Mb/s, full duplex$
common.port.linkstatus | 0100 0001 |  =~link up; 2500 Mb/s, full duplex$
common.port.linkstatus | 0100 0002 |  =~link up; 20 Gb/s, full duplex$
common.port.linkstatus | 0100 0004 |  =~link up; 40 Gb/s, full duplex$
common.port.linkstatus | 0100 0008 |  =~link up; 100 Gb/s, full duplex$
common.port.linkstatus | 0100 ffff |  =~link up; unknow speed/duplex 65535$
common.overlay | 00000000 |  =$
common.port.overlay | 00000000 |  =$
common.uplinkPorts | 00000000 | :~<none>$
common.uplinkPorts | 01000000 "only"[81] | :~only$
common.host.uplinkPorts | 03000000 "1"[48] "2"[48] "3"[48] | :~1, 2, 3$
common.port.volatile.vlan | ff0f 0000 |  = VLAN 4095$
common.port.volatile.vlan | 0000 0100 0500 0300 |  = VLAN 0~ranges = 5-3$
vswitch.teaming | 09000000 5f000000 ffffffff c3ffffff 00000000 00000000 [2592] | :
    ~load balancing = ~link selection =~link behavior =~active =~standby =$
vswitch.teaming | 00000000 20000000 00000000 14000000 01000000 02000000"a"[81] "b"[81] "c"[81] | :
    ~load balancing = none (all pkts dropped)~link selection = beacon state ok;
    ~link behavior = best effort on failure; shotgun on failure;~active = a;~standby = b; c;$
vswitch.port.vlan | 0600 0700 ffff 0000 |  = PVLAN 7$
vswitch.port.vlan | 0300 0700 0000 0100 0000 fe0f |  = Guest VLAN tagging~ranges = 0-4094$
vswitch.port.vlan | 0400 0000 0000 0000 |  = No VLAN$
vswitch.pvlanMap | 0a00 0b00 00ffffff ffff 0000 0401ffff ffffffff | :~(10, 11) - unknown~(65535, 0) - unknown$
vswitch.pvlanMap |  | :$
vswitch.port.security | 02000000 |  = allow promiscuous; deny mac change; allow forged frames$
vswitch.port.extraEthFRP | 74000000 0100 ffffffffffff [190] |  =   ALLMULTI  PROMISC  USE_LADRF$
etherswitch.cdp | 00 00 |  = CDP, down$
etherswitch.cdp | 00 01 |  = CDP, listen$
etherswitch.cdp | 01 02 |  = LLDP, advertise$
etherswitch.cdp | 02 04 |  = unknown, unknown$
etherswitch.ipfix | 01000000 02000000 fe80 [13] 01 ffff ffffffff 01 01 ffffffff | :~idle timeout = 1 seconds
    ~active timeout = 2 seconds~sampling rate = 4294967295
    ~collector = [fe80:0000:0000:0000:0000:0000:0000:0001]:65535~internal flows only = true
    ~obsDomainID = 4294967295$
net.ipfix.port | [12] fc 00 0000 [168] | :~idle timeout = 0 seconds~active timeout = 0 seconds
    ~sampling rate = 0~internal flows only = false~vNIC sampling only = false~obsDomainID = 0
    ~srcIPv4 = 0.0.0.0~virtualObsID = ''~collectorCount = 0$
etherswitch.lacp | 02000000 "a"[65] "b"[16] 02000000 14000000 ffffffff [81] 03000000 15000000 00000000 | :
    ~lag name:```a~lag key:```b~mode:````passive~load balance policy:``Src portID~lag port number:``-1!
    ~lag name:```~lag key:```~mode:````none~load balance policy:``unknown~lag port number:``0!$
etherswitch.port.lacp | 02000000 01000000 | :~status = disabled
etherswitch.port.lacp | 01000000 01000000 | :~status = enabled~mode = active
etherswitch.port.lacp | 01000000 03000000 | :~status = enabled~mode = none
vswitch.port.mirrorSessions | efbecefa 02000000 02000000 02000000 00000000"s"[32] "d"[84] 05000000 00000000
    33000000 0000 ffff ffff [82] 01000000 [12]"s"[32] "d"[84] 06000000 00000000 00000000 0000 [86] 01000000
    [8] 01000000[4] 02005e100001 [42]  [4] "p"[48] | :~sid = s~dname = d~type = LOGICAL_SPAN~snapLen = 0
    ~flags = DST_NO_OUTPUT DST_NO_INPUT LEGACY DISABLED~encapVlan = 0~samplingRate = 0
    ~dstEntities = 02:00:5e:10:00:01~srcInEntities =~srcOutEntities =~sid = s~dname = d
    ~type = NOT_SUPPORTED_TYPE~snapLen = 0~flags =~encapVlan = 0~samplingRate = 0~dstEntities = p
    ~srcInEntities =~srcOutEntities =$
common.port.volatile.vlanchkresult | 0000 0100 0500 0500 [4] | :~trunked = <none>~untrunked = 5$
common.teamcheck.deploy | 00 ffffffff | :~enabled = false~interval = 4294967295 minutes$
mesh.teamcheck.param | 00 | :~ip hash expected = false$
vswitch.macLearning | 40420fff 00000000 | :~agingTime = 1000000 seconds~macLimit = 0$
vswitch.macLearning.learnStatic | "false" 00 | :~enabled = false$
vswitch.macLearning.learnStatic | "truest" 00 | :~enabled = true$
vswitch.macLearning.learnStatic | "tru" 00 | :~enabled = false$
vswitch.port.macManagement | 80 00 00 ffffffff 00000000 | :~mac change = allow~learning = disabled
    ~flooding = disabled~macLimit = 4294967295~macLimitPolicy = allow$
vswitch.mcast.user.addresses | 00 | :~count = 0$
common.serviceinstance |  | :~length = 0$
common.serviceinstance | 00 | :~length = 1~text = $
common.serviceinstance | ff [15] | :~length = 16~bytes = ff 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00$
common.port.overlay | 02000000 01000000 ff00000000000000 02000000 ff |  =0xff@1 $
common.port.overlay | 01000000 01000000 ff000000 |  =$
common.port.volatile.vlan | 0a00 0200 0100 0200 6400 |  = VLAN 10~ranges = 1-2$
common.port.volatile.vlan | 0a00 0200 6400 |  = VLAN 10~ranges =$
vswitch.port.vlan | 0100 0000 0000 0100 64 |  = Guest VLAN tagging~ranges =$
common.port.volatile.vlanchkresult | 0100 0000 64 | :~trunked =~untrunked = <none>$
common.port.volatile.mtuchkresult | 0200 0100 dc05 2823 dc | :~allowed = 1500-9000~disallowed =$
vswitch.port.extraEthFRP | 02000000 0200 01005e000001
    01005e0000 |  =   MULTICAST!``multicastAddr[0] = 01:00:5e:00:00:01$
vswitch.mcast.user.addresses | 02 01005e000001 01005e0000 | :~count = 2~address = 01:00:5e:00:00:01$
net.ipfix.port | [12] 00 02 0000 [8] 0a000001 [12] 0100 00 00 0a000002 [12] 0100 00 | :
    ~idle timeout = 0 seconds~active timeout = 0 seconds~sampling rate = 0~internal flows only = false
    ~vNIC sampling only = false~obsDomainID = 0~srcIPv4 = 0.0.0.0~virtualObsID = ''~collectorCount = 2
    ~`0th collector = 10.0.0.1:1$
common.uplinkPorts | 02000000 | :~$
common.uplinkPorts | 01000000 "upl" | :~$
common.uplinkPorts | 03000000 "uplink0"[81] "upl" | :~uplink0, upl$
common.host.uplinkPorts | 01000000 | :~$
common.host.uplinkPorts |  | :~<none>$
common.overlay | 01000000 05000000 "ov" |  =$
)table";

struct Row {
    std::string key, record, text;
};
std::vector<Row> printedRows() {
    std::vector<std::string> lines;
    for (size_t at = 1; at < kPrinted.size(); at = kPrinted.find('\n', at) + 1) {
        const std::string line(kPrinted.substr(at, kPrinted.find('\n', at) - at));
        if (line.starts_with("    ")) {
            lines.back() += line.substr(4);
        } else {
            lines.push_back(line);
        }
    }
    static const std::map<char, std::string> kShort = {{'~', "\n\t\t\t"},
                                                       {'$', "\n\t\t\tpropType = CONFIG "},
                                                       {'^', "propType = CONFIG "},
                                                       {'!', "\n"},
                                                       {'`', "\t"}};
    std::vector<Row> rows;
    for (const std::string &line : lines) {
        const size_t record = line.find(" | "), text = line.find(" | ", record + 3);
        Row row = {"com.quillon." + line.substr(0, record), line.substr(record + 3, text - record - 3), ""};
        for (const char c : line.substr(text + 3) + '!')
            row.text += kShort.contains(c) ? kShort.at(c) : std::string(1, c);
        rows.push_back(row);
    }
    return rows;
}

// The branches that the page leaves out, and records that hold less than they count, or count more than there
// can be. A number that is cut short is not printed, a text is; a row of which nothing is whole stays empty.
TEST(Printers, BranchesAndCounts) {
    auto rows = printedRows();
    ASSERT_EQ(rows.size(), 76u);
    const std::string key = "com.quillon.vswitch.port.extraEthFRP", addresses33 = "02000000 2100 [192] ffff";
    std::string printed32 = " =   MULTICAST\n";
    for (int i = 0; i < 32; ++i)
        printed32 += "\t\tmulticastAddr[" + std::to_string(i) + "] = 00:00:00:00:00:00\n";
    for (const std::string more : {"", "ffffffff [600]"})
        rows.push_back({key, addresses33 + more, printed32 + "\t\t\tpropType = CONFIG \n"});
    addSwitches();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.record);
        EXPECT_EQ(print(kNew, row.key, record(row.record), 16), "\t\t" + row.key + row.text);
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
        EXPECT_LE(dumpLoaded().size(), 1000 * good.size() * 2 + 8 * bytesGiven);
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
