// SPDX-License-Identifier: Apache-2.0
// Documents as text: what is wrong with one and where, and what is written.
#include "config/document/document.h"

#include <algorithm>

#include "config/document/diff.h"
#include "config/document/reader.h"
#include "config/document/write.h"
#include "config/documents.h"
#include "config/draw.h"
#include "support/test.h"

namespace qvs::test {
namespace {

using config::Document;
using config::Problem;

std::string problemsOf(std::string_view text) {
    std::vector<Problem> problems;
    config::readDocument(text, "f", problems);
    return messagesOf(problems);
}

// --- reading ---

struct ProblemRow {
    const char *text;
    const char *problems;
};

const ProblemRow kProblems[] = {
    // Syntax.
    {"", "f:1:1: the document is empty; it begins with 'switches:'"},
    {"switches: [", "f:1:1: end of sequence flow not found"},
    {"a: b: c\n", "f:1:5: illegal map value"},
    {"switches: {}\n---\nswitches: {}\n", "f:3:1: the file has more than one document"},
    {"switches: &a {}\n", "f:1:11: anchors are not allowed"},
    {"switches:\n  a:\n\tmtu: 1500\n",
     "f:3:2: the line begins with a tab, and only spaces indent YAML (end of map not found)"},
    {"switches:\n  a:\n    mtu: 1500\n\tversion: 1\n",
     "f:4:1: the line begins with a tab, and only spaces indent YAML (illegal tab when looking for "
     "indentation)"},
    {"\tswitches: {}\n",
     "f:1:10: the line begins with a tab, and only spaces indent YAML (illegal map value)"},
    {"switches:\n  a:\n  \tmtu: 1500\n",
     "f:3:7: the line begins with a tab, and only spaces indent YAML (illegal map value)"},
    {"switches: {a:\n\t{mtu: 1500},\n\tb: }\n", ""},
    {"switches: {sw1: !x {}}\n", "f:1:17: the tag '!x' is not allowed"},
    {"switches: {sw1: \xff}\n", "f:1:17: the byte 0xff is not UTF-8 text; write it as \\xff"},
    {"switches: {}\n# \xc3\n", "f:2:3: the byte 0xc3 is not UTF-8 text; write it as \\xc3"},
    {"switches:\n\x04", "f:2:1: the control character 0x04 is not allowed"},
    {"switches: {\"\\q\": {}}\n", "f:1:15: unknown escape character: q"},
    {"switches: {\xef\xbf\xbd: {}}\n", "f:1:12: U+FFFD stands for bytes that were lost; write them as \\xHH"},
    {"switches: {a: {ports: {p: {filter: {flags: [\xef\xbf\xbd]}}}}}\n",
     "f:1:45: U+FFFD stands for bytes that were lost; write them as \\xHH"},
    // Mappings.
    {"swiches: {}\n",
     "f:1:1: swiches: no such member; did you mean 'switches'?\nf:1:1: 'switches' is missing"},
    {"- switches\n", "f:1:1: is a list, not a mapping"},
    {"switches: 1\n", "f:1:11: switches: is a single value, not a mapping"},
    {"switches: {a: {}, a: {}}\n", "f:1:19: switches.a: is given twice"},
    {"switches:\n  a: {mtu: 1500, mtu: 1279, host: , host: {x: 1}, properties: {k: AA==, k: '*'}}\n"
     "  a: {ports: {p: {}, p: {vlan: {id: 1, id: 5000}}, '\\x70': {x: 1}}, uplinks: [], uplinks: 1}\n",
     "f:2:18: switches.a.mtu: is given twice\n"
     "f:2:23: switches.a.mtu: 1279 is below 1280\n"
     "f:2:37: switches.a.host: is given twice\n"
     "f:2:44: switches.a.host.x: no such member\n"
     "f:2:73: switches.a.properties.k: is given twice\n"
     "f:2:76: switches.a.properties.k: is not base64\n"
     "f:3:3: switches.a: is given twice\n"
     "f:3:22: switches.a.ports.p: is given twice\n"
     "f:3:40: switches.a.ports.p.vlan.id: is given twice\n"
     "f:3:44: switches.a.ports.p.vlan.id: 5000 is beyond 4094\n"
     "f:3:52: switches.a.ports.\\x70: is given twice\n"
     "f:3:61: switches.a.ports.\\x70.x: no such member\n"
     "f:3:82: switches.a.uplinks: is given twice\n"
     "f:3:91: switches.a.uplinks: is not a list of uplinks, such as [uplink0, uplink1]"},
    {"switches: {a: {}, 'a': {}}\n", "f:1:19: switches.a: is given twice"},
    {"switches: {a: {}, '\\x61': {}}\n", "f:1:19: switches.\\x61: is given twice"},
    {"switches: {? [a] : {}}\n", "f:1:14: switches: a name is needed before the colon"},
    // Names.
    {"switches: {'': {}}\n", "f:1:12: switches.: is empty"},
    {"switches: {'a\\': {}}\n",
     "f:1:12: switches.a\\: a backslash is followed by x and two digits, n, t, or another backslash"},
    {"switches: {a: {ports: {123456789012345678901234567890123456789012345678: {}}}}\n",
     "f:1:24: switches.a.ports.123456789012345678901234567890123456789012345678: has 48 bytes, at most 47 "
     "fit"},
    // Members of identity.
    {"switches: {a: {version: x, opaque: yes, maxPorts: 0, portset: ''}}\n",
     "f:1:25: switches.a.version: 'x' is not a decimal number 0 to 4294967295\n"
     "f:1:36: switches.a.opaque: 'yes' is not on or off\n"
     "f:1:51: switches.a.maxPorts: 0 is below 1\n"
     "f:1:63: switches.a.portset: is empty"},
    {"switches: {a: {version: '1', maxPorts: 0x10, id: [1], portset: }}\n",
     "f:1:25: switches.a.version: '1' stands in quotes, where 0 to 4294967295 is needed without\n"
     "f:1:40: switches.a.maxPorts: '0x10' is not a decimal number 1 to 2147483647\n"
     "f:1:50: switches.a.id: is a list, not a single value (at most 63 bytes)\n"
     "f:1:64: switches.a.portset: has no value; at most 127 bytes is needed"},
    {"switches: {a: {uplinks: [u, u, {name: v, port: u}, {name: w}, {nam: x}]}}\n",
     "f:1:29: switches.a.uplinks[1]: uplink 'u' is given twice\n"
     "f:1:32: switches.a.uplinks[2]: port 'u' carries another uplink\n"
     "f:1:52: switches.a.uplinks[3]: 'port' is missing\n"
     "f:1:63: switches.a.uplinks[4]: 'name' is missing\n"
     "f:1:63: switches.a.uplinks[4]: 'port' is missing\n"
     "f:1:64: switches.a.uplinks[4].nam: no such member; did you mean 'name'?"},
    {"switches:\n  a:\n    maxPorts: 2\n    uplinks: [u]\n    ports: {u: {}, p: {}, q: {}}\n",
     "f:3:5: switches.a: has 3 ports, those of uplinks among them, but maxPorts has room for 2"},
    // Settings.
    {"switches: {sw1: {ports: {web: {vlan: {id: 5000, idd: 1, di: 1}}}}}\n",
     "f:1:43: switches.sw1.ports.web.vlan.id: 5000 is beyond 4094\n"
     "f:1:49: switches.sw1.ports.web.vlan.idd: no such member; did you mean 'id'?\n"
     "f:1:57: switches.sw1.ports.web.vlan.di: no such member; did you mean 'id'?"},
    {"switches: {a: {vlan: {}, host: {vlna: {}}, ports: {p: {macLearnig: {}, mtu: 1500}}}}\n",
     "f:1:16: switches.a.vlan: is a setting of a port\n"
     "f:1:33: switches.a.host.vlna: no such member\n"
     "f:1:56: switches.a.ports.p.macLearnig: no such member; did you mean 'macLearning'?\n"
     "f:1:72: switches.a.ports.p.mtu: is a setting of the switch"},
    {"switches: {a: {privateVlans: [{primary: 1, type: isolated}, 7], mtu: }}\n",
     "f:1:31: switches.a.privateVlans[0]: 'secondary' is missing\n"
     "f:1:61: switches.a.privateVlans[1]: is a single value, not a mapping\n"
     "f:1:70: switches.a.mtu: has no value; 1280 to 9000 is needed"},
    {"switches: {a: {ports: {p: {vlan: {trunk: [1-2, 0x10, 5-3]}}}}}\n",
     "f:1:48: switches.a.ports.p.vlan.trunk[1]: '0x10' is not a VLAN id or a range such as 1-100\n"
     "f:1:54: switches.a.ports.p.vlan.trunk[2]: the range '5-3' runs backwards"},
    {"switches: {a: {ports: {p: {vlan: {private: on}}}}}\n",
     "f:1:34: switches.a.ports.p.vlan: private requires id"},
    {"switches: {a: {teaming: {balance: source-prt}, ports: {p: {filter: {flags: [snik]}, txUplink: x}}}}\n",
     "f:1:35: switches.a.teaming.balance: 'source-prt' is not none, source-ip, source-mac, source-port, "
     "explicit or port-load; did you mean 'source-port'?\n"
     "f:1:77: switches.a.ports.p.filter.flags[0]: 'snik' is not unicast, multicast, allmulti, broadcast, "
     "promisc, use-ladrf or sink; did you mean 'sink'?\n"
     "f:1:95: switches.a.ports.p.txUplink: 'x' is not normal or always"},
    {R"(switches:
  a:
    teaming: {active: [a], standby: [b, a]}
    host:
      mirrorSessions: [{session: s, type: mixdst}, {session: s, type: dvport}]
      multicastAddresses: ['1']
    ports:
      p: {filter: {addresses: ['01:00:5e:00:00:01']}, ipfix: {source: 10.0.0, collectors: ['10.0.0.1:65536']}}
      q: {mirrorSessions: [{session: s, type: dvport, stack: on}]}
      r: {mirrorSessions: [{session: s, type: ermirror-src, destinations: [port0]}]}
      s: {mirrorSessions: [{session: s, type: rmirror-dst, sourcesOut: ['4095']}]}
      t: {mirrorSessions: [{session: s, type: rmirror-src, destinations: ['123456789012345678901234567890123']}]}
)",
     "f:3:14: switches.a.teaming: uplink 'a' is given twice\n"
     "f:5:23: switches.a.host.mirrorSessions: session 's' is given twice\n"
     "f:6:28: switches.a.host.multicastAddresses[0]: '1' is not a MAC address such as 02:00:00:00:00:01\n"
     "f:8:19: switches.a.ports.p.filter: addresses require the flag multicast\n"
     "f:8:71: switches.a.ports.p.ipfix.source: '10.0.0' is not an IPv4 address\n"
     "f:8:92: switches.a.ports.p.ipfix.collectors[0]: '10.0.0.1:65536' is not IPV4:PORT or [IPV6]:PORT\n"
     "f:9:27: switches.a.ports.q.mirrorSessions: session 's': stack requires the type ermirror-src\n"
     "f:10:27: switches.a.ports.r.mirrorSessions: session 's': destination 'port0' is not an IPv4 or IPv6 "
     "address\n"
     "f:11:27: switches.a.ports.s.mirrorSessions: session 's': source '4095' is not a VLAN id from 0 to "
     "4094\n"
     "f:12:27: switches.a.ports.t.mirrorSessions: session 's': destination "
     "'123456789012345678901234567890123' is "
     "not a text of at most 32 bytes"},
    // Properties.
    {"switches: {a: {properties: {k: '*', '': AA==, l: {class: 4, value: AA==}, m: {value: AA==}}}}\n",
     "f:1:32: switches.a.properties.k: is not base64\n"
     "f:1:37: switches.a.properties.: is empty\n"
     "f:1:50: switches.a.properties.l: class 4 has neither the bit 8 of a policy nor the bit 16 of "
     "configuration\n"
     "f:1:78: switches.a.properties.m: 'class' is missing"},
    {"switches: {a: {properties: {com.quillon.vswitch.mtu: AA==}, mtu: 1500}}\n",
     "f:1:29: switches.a.properties.com.quillon.vswitch.mtu: is stored with 'mtu', which is given, too; "
     "leave "
     "out one of them"},
};

TEST(Documents, ProblemsHaveTheirPlace) {
    for (const ProblemRow &row : kProblems)
        EXPECT_EQ(problemsOf(row.text), row.problems) << row.text;
}

TEST(Documents, SizeIsBounded) {
    std::string deep = "switches: ";
    deep.append(70, '[').append(70, ']');
    EXPECT_EQ(problemsOf(deep), "f:1:74: nested more than 64 deep");
    EXPECT_EQ(problemsOf(std::string(config::kMostDocumentBytes + 1, ' ')),
              "f: has 67108865 bytes, at most 67108864 are read");
    std::string addresses = "switches: {a: {host: {multicastAddresses: [";
    for (int i = 0; i < 26; i++)
        addresses += "'02:00:00:00:00:01', ";
    EXPECT_EQ(problemsOf(addresses + "]}}}"),
              "f:1:43: switches.a.host.multicastAddresses: has 26 items, at most 25 fit");
    // Not a problem a line, of a text that is no document.
    std::string text = "switches:\n";
    for (int i = 0; i < 3000; i++)
        text += "  " + std::to_string(i) + ": 1\n";
    std::vector<Problem> problems;
    config::readDocument(text, "f", problems);
    ASSERT_EQ(problems.size(), 1001u);
    EXPECT_EQ(messageOf(problems.back()), "f:1002:9: there are more problems from here on");
}

// YAML with and without brackets, and JSON, say the same.
TEST(Documents, FormsAreEqual) {
    const Document block = documentOf(R"(# Comments are allowed.
switches:
  "sw\\x09":
    opaque: true
    uplinks:
      - uplink0
      - {name: left, port: vmnic}
    ports:
      web:
        vlan:
          trunk: [100-100, "7", 1-3]
      idle:
)");
    const Document json = documentOf(
        R"({"switches":{"sw\\t":{"uplinks":["uplink0",{"port":"vmnic","name":"left"}],"opaque":true,)"
        R"("ports":{"idle":{},"web":{"vlan":{"trunk":["100",7,"1-3"],"private":false}}}}}})");
    EXPECT_EQ(block, json);
    EXPECT_EQ(writeYaml(block), R"(switches:
  'sw\t':
    opaque: on
    uplinks: [uplink0, {name: left, port: vmnic}]
    ports:
      idle: {}
      web:
        vlan: {trunk: [100, 7, 1-3]}
)");
    EXPECT_EQ(writeJson(block), R"({
  "switches": {
    "sw\\t": {
      "opaque": true,
      "uplinks": ["uplink0", {"name": "left", "port": "vmnic"}],
      "ports": {
        "idle": {},
        "web": {
          "vlan": {"trunk": ["100", "7", "1-3"]}
        }
      }
    }
  }
}
)");
}

// --- writing ---

// Names that YAML would read as something else, or not at all.
TEST(Documents, NamesAreQuoted) {
    const std::pair<const char *, const char *> rows[] = {
        {"web", "web"},
        {"web 1.a/b-c_d", "web 1.a/b-c_d"},
        {"on", "'on'"},
        {"No", "'No'"},
        {"NULL", "'NULL'"},
        {"~", "'~'"},
        {"1", "'1'"},
        {"0x1f", "'0x1f'"},
        {"1e3", "'1e3'"},
        {"12:30:45", "'12:30:45'"},
        {".inf", "'.inf'"},
        {"-", "'-'"},
        {"2001-01-01", "'2001-01-01'"},
        {"a: b", "'a: b'"},
        {"a #b", "'a #b'"},
        {" a", "' a'"},
        {"a ", "'a '"},
        {"it's", "'it''s'"},
        {"a\\b", "'a\\\\b'"},
        {"\xff\n", "'\\xff\\n'"},
        {"\xc3\xa4", "'\xc3\xa4'"},
        {"\xef\xbf\xbd", "'\\xef\\xbf\\xbd'"},
        {"\xe2\x80\xa8", "'\\xe2\\x80\\xa8'"},
        {"<<", "'<<'"},
        {"{a}", "'{a}'"},
        {"a,b", "'a,b'"},
    };
    for (const auto &[name, quoted] : rows) {
        Document document;
        document.switches.emplace_back().alias = name;
        EXPECT_EQ(writeYaml(document), "switches:\n  " + std::string(quoted) + ": {}\n");
        EXPECT_EQ(documentOf(writeYaml(document)), document) << quoted;
        EXPECT_EQ(documentOf(writeJson(document)), document) << quoted;
    }
}

Document drawDocument(Random &random) {
    Document document;
    for (uint64_t i = drawNumber(random, 0, 2); i > 0; i--) {
        config::SwitchEntry &entry = document.switches.emplace_back();
        entry.alias = drawText(random, 1, 70) + std::to_string(i);
        if (drawChance(random, 2)) entry.id = drawText(random, 1, 63);
        if (drawChance(random, 2)) entry.portset = drawText(random, 1, 127);
        if (drawChance(random, 2)) entry.version = static_cast<uint32_t>(drawNumber(random, 0, UINT32_MAX));
        if (drawChance(random, 2)) entry.opaque = drawChance(random, 2);
        if (drawChance(random, 2)) entry.maxPorts = static_cast<uint32_t>(drawNumber(random, 9, INT32_MAX));
        if (drawChance(random, 2))
            entry.uplinks = {{"u", "u"}, {drawText(random, 2, 80), drawText(random, 2, 47)}};
        drawPart(entry.global, Scope::Global, random);
        drawPart(entry.host, Scope::Host, random);
        for (uint64_t j = drawNumber(random, 0, 3); j > 0; j--) {
            config::PortEntry &port = entry.ports.emplace_back();
            port.id = drawText(random, 1, 40) + std::to_string(j);
            if (drawChance(random, 2))
                port.connectId = static_cast<uint32_t>(drawNumber(random, 0, UINT32_MAX));
            if (drawChance(random, 2)) port.externalId = drawText(random, 0, 200);
            if (drawChance(random, 2)) port.blocked = drawChance(random, 2);
            drawPart(port.part, Scope::Port, random);
        }
        std::ranges::sort(entry.ports, {}, &config::PortEntry::id);
    }
    std::ranges::sort(document.switches, {}, &config::SwitchEntry::alias);
    return document;
}

TEST(Documents, AnyDocumentSurvives) {
    Random random(20240301);
    for (int i = 0; i < 60; i++) {
        const Document document = drawDocument(random);
        for (const std::string &text : {writeYaml(document), writeJson(document)}) {
            ASSERT_EQ(documentOf(text), document) << text;
            EXPECT_TRUE(compare(document, documentOf(text), true).empty());
        }
    }
}

}  // namespace
}  // namespace qvs::test
