// SPDX-License-Identifier: Apache-2.0
// What a host's document is, what differs between two, and what a document refers to.
#include <algorithm>

#include "config/document/diff.h"
#include "config/document/export.h"
#include "config/document/references.h"
#include "config/document/write.h"
#include "config/documents.h"
#include "support/test.h"

namespace qvs::test {
namespace {

using config::Change;
using config::Document;

// --- a host's document ---

Document exported(std::string &warnings, bool withDefaults = false) {
    std::vector<std::string> list;
    Document document = config::exportDocument({}, {.withDefaults = withDefaults}, list);
    warnings.clear();
    for (const std::string &warning : list)
        warnings += warning + '\n';
    return document;
}

class Hosts : public testing::Test {
  protected:
    void SetUp() override {
        createSwitch(8, 1, 1);
        ASSERT_STATUS(VSDVS_AddOpaqueDVPort("sw1", "\xff\\", "outside"), 0);
        ASSERT_STATUS(setGlobalProp("id", QVS_KEY_MTU, u32(9000)), 0);
        ASSERT_STATUS(setGlobalProp("id", QVS_KEY_ETHERSWITCH_MTU, u32(9000)), 0);
        ASSERT_STATUS(setHostProp("id", QVS_KEY_LEARN_STATIC, std::string("true") + '\0'), 0);
        ASSERT_STATUS(setHostProp("id", "runtime", "x", DVS_PROP_RUNTIME), 0);
        ASSERT_STATUS(setPortProp("id", "port0", "com.example.k", "abc"), 0);
        // Not what a setting expresses: another class, other bytes.
        ASSERT_STATUS(setPortProp("id", "port0", QVS_KEY_PORT_NESTED_TAG, u32(1), DVS_PROP_POLICY), 0);
        ASSERT_STATUS(setPortProp("id", "port0", QVS_KEY_PORT_SECURITY, u32(0x100)), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
    }
    void TearDown() override { resetHost(); }
};

TEST_F(Hosts, AreExported) {
    std::string warnings;
    const Document document = exported(warnings);
    EXPECT_EQ(writeYaml(document), R"(switches:
  sw1:
    id: id
    portset: sw1
    version: 106
    opaque: off
    maxPorts: 8
    uplinks: [uplink0]
    mtu: 9000
    host:
      learnStatic: on
    ports:
      port0:
        connectId: 1
        blocked: off
        vlan: {}
        properties:
          com.example.k: YWJj
          com.quillon.vswitch.port.security: AAEAAA==
          com.quillon.vswitch.port.vlanNestedTag: {class: 8, value: AQAAAA==}
      uplink0:
        vlan: {trunk: [1-4094]}
      '\xff\\':
        connectId: 1
        externalId: outside
        blocked: off
        vlan: {}
)");
    EXPECT_EQ(warnings,
              "switch 'sw1': port 'port0': the members of security cannot express the bytes of "
              "'com.quillon.vswitch.port.security', which stay a property\n"
              "switch 'sw1': port 'port0': the members of nestedVlan cannot express the bytes of "
              "'com.quillon.vswitch.port.vlanNestedTag', which stay a property\n");
    EXPECT_EQ(documentOf(writeYaml(document)), document);
}

TEST_F(Hosts, DefaultsAreWritten) {
    std::string warnings;
    const std::string text = writeYaml(exported(warnings, true));
    EXPECT_NE(text.find("      macLearning: {aging: 600, limit: 65536}\n"), std::string::npos) << text;
    // What is stored in another form is not hidden by a default.
    EXPECT_EQ(text.find("nestedVlan: off\n", text.find("port0:")),
              text.find("nestedVlan: off\n", text.find("uplink0:")));
    EXPECT_EQ(documentOf(text), exported(warnings, true));
}

TEST_F(Hosts, UplinkListsThatDisagreeStayProperties) {
    ASSERT_STATUS(setPortProp("id", "uplink0", QVS_KEY_PORT_ALIAS, std::string("other") + '\0'), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    std::string warnings;
    const Document document = exported(warnings);
    const config::SwitchEntry &entry = document.switches.at(0);
    EXPECT_EQ(entry.uplinks, std::nullopt);
    ASSERT_NE(entry.global.findProperty(QVS_KEY_UPLINK_NAMES), nullptr);
    ASSERT_NE(entry.host.findProperty(QVS_KEY_UPLINK_PORTS), nullptr);
    EXPECT_NE(entry.findPort("uplink0")->part.findProperty(QVS_KEY_PORT_ALIAS), nullptr);
    EXPECT_NE(warnings.find("the lists of uplinks do not agree with the ports"), std::string::npos);
}

TEST_F(Hosts, UnknownSwitchesAreNotFound) {
    std::vector<std::string> warnings;
    const std::vector<std::string> aliases = {"sw9"};
    try {
        config::exportDocument(aliases, {}, warnings);
        FAIL() << "exported";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.exit, Exit::NotFound);
        EXPECT_EQ(failure.message, "switch 'sw9': Not found (0xbad0003)");
    }
}

// --- differences ---

std::string changesOf(std::string_view now, std::string_view wanted, bool prune) {
    std::string all;
    for (const Change &change : compare(documentOf(now), documentOf(wanted), prune)) {
        all += change.kind == Change::Kind::Added ? '+' : change.kind == Change::Kind::Removed ? '-' : '~';
        if (change.conflict) all += '!';
        all += change.path().substr(std::string("switches.").size());
        if (!change.beforeText.empty()) all += ' ' + change.beforeText;
        if (!change.afterText.empty()) all += " > " + change.afterText;
        all += '\n';
    }
    return all;
}

TEST(Documents, AreCompared) {
    constexpr const char *kNow = R"(switches:
  a:
    version: 105
    maxPorts: 8
    uplinks: [u, v]
    mtu: 1500
    properties: {k: AA==}
    host: {learnStatic: on}
    ports:
      p: {connectId: 1, vlan: {id: 10}, properties: {com.quillon.vswitch.port.security: AAEAAA==}}
      q: {vlan: {id: 5}}
      u: {vlan: {trunk: [1-4094], priority: 3}}
      v: {vlan: {trunk: [1-4094]}, nestedVlan: off}
  d:
    ports: {p: {vlan: {}}}
  b: {}
)";
    const struct {
        const char *wanted;
        bool prune;
        const char *changes;
    } rows[] = {
        {"switches:", false, ""},
        {"switches: {a: {}}", false, ""},
        {"switches: {b: , c: {uplinks: [], mtu: 1500, ports: {p: {vlan: {}}}}}", false,
         "+c\n+c.mtu > 1500\n+c.ports.p\n+c.ports.p.vlan > {}\n"},
        {"switches: {a: {version: 106, uplinks: [u], mtu: 9000, properties: {k: AQ==}, host: {learnStatic: "
         "off}}}",
         false,
         "~!a.version 105 > 106\n~a.uplinks [u, v] > [u]\n~a.mtu 1500 > 9000\n"
         "~a.properties.k {class: 16, value: AA==} > {class: 16, value: AQ==}\n~a.host.learnStatic on > "
         "off\n"},
        // An empty map is what is not stored.
        {"switches: {a: {privateVlans: []}}", false, ""},
        // A setting in the place of a property and the other way round.
        {"switches: {a: {ports: {p: {security: {promiscuous: allow}}, q: {properties: "
         "{com.quillon.vswitch.port.vlan: "
         "AA==}}}}}",
         false,
         "~a.ports.p.security {class: 16, value: AAEAAA==} > {promiscuous: allow, macChange: allow, forged: "
         "allow}\n"
         "~a.ports.q.properties.com.quillon.vswitch.port.vlan {id: 5} > {class: 8, value: AA==}\n"},
        {"switches: {a: {ports: {p: {connectId: 2, externalId: x}}}}", true,
         "-a.mtu 1500\n-a.properties.k {class: 16, value: AA==}\n-a.host.learnStatic on\n"
         "~a.ports.p.connectId 1 > 2\n+a.ports.p.externalId > x\n-a.ports.p.vlan {id: 10}\n"
         "-a.ports.p.properties.com.quillon.vswitch.port.security {class: 16, value: AAEAAA==}\n"
         "-a.ports.q\n-a.ports.u.vlan {trunk: [1-4094], priority: 3}\n-a.ports.v.nestedVlan off\n-b\n-d\n"},
        // Each port has a VLAN policy.
        {"switches: {d: {ports: {p: }}}", true, "-a\n-b\n"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(changesOf(kNow, row.wanted, row.prune), row.changes) << row.wanted;
    EXPECT_EQ(changesOf(kNow, kNow, true), "");
}

// What a document refers to may be in the document or on the host.
TEST(Documents, ReferencesAreChecked) {
    const Document now = documentOf(
        "switches: {a: {uplinks: [u, v], ports: {p: }, privateVlans: [{primary: 1, secondary: 2, type: "
        "isolated}]}}");
    const Document wanted = documentOf(R"(switches:
  a:
    uplinks: [u, w]
    teaming: {active: [u, v], standby: [w]}
    host:
      mirrorSessions: [{session: s, type: dvport, destinations: [p, q], sourcesIn: [z]}]
    ports:
      q: {vlan: {id: 2, private: on}}
      r: {vlan: {id: 3, private: on}}
)");
    EXPECT_EQ(messagesOf(danglingReferences(now, wanted, false, "f")),
              "f:4:14: switches.a.teaming: uplink 'v' does not exist\n"
              "f:6:23: switches.a.host.mirrorSessions: port or uplink 'z' does not exist\n"
              "f:9:17: switches.a.ports.r.vlan: private VLAN 3 does not exist");
    EXPECT_EQ(messagesOf(danglingReferences(now, wanted, true, "f")),
              "f:4:14: switches.a.teaming: uplink 'v' does not exist\n"
              "f:6:23: switches.a.host.mirrorSessions: port or uplink 'p' does not exist\n"
              "f:6:23: switches.a.host.mirrorSessions: port or uplink 'z' does not exist\n"
              "f:8:17: switches.a.ports.q.vlan: private VLAN 2 does not exist\n"
              "f:9:17: switches.a.ports.r.vlan: private VLAN 3 does not exist");
}

// What stays on the host may name what the document removes.
TEST(Documents, ReferencesOfTheHostAreChecked) {
    const Document now = documentOf(R"(switches:
  a:
    uplinks: [u, v]
    privateVlans: [{primary: 1, secondary: 2, type: isolated}]
    teaming: {active: [u, gone]}
    host:
      mirrorSessions: [{session: s, type: dvport, sourcesIn: [u, p]}]
    ports:
      p: {vlan: {id: 2, private: on}}
      u: {teaming: {active: [u]}}
)");
    const struct {
        const char *wanted;
        bool prune;
        const char *problems;
    } rows[] = {
        {"switches: {a: {uplinks: [v], privateVlans: []}}", false,
         "f:1:15: switches.a.teaming: is stored and names uplink 'u', which the document removes\n"
         "f:1:15: switches.a.host.mirrorSessions: is stored and names port or uplink 'u', which the document "
         "removes\n"
         "f:1:15: switches.a.ports.p.vlan: is stored and names private VLAN 2, which the document removes"},
        {"switches: {a: {uplinks: [v], privateVlans: []}}", true, ""},
        // What the document says itself counts instead.
        {"switches: {a: {uplinks: [v], privateVlans: [], teaming: {active: [v]}, host: {properties: "
         "{com.quillon.vswitch.uplinkMirrorSessions: AA==}}, ports: {p: {vlan: {id: 2}}}}}",
         false, ""},
        {"switches: {a: {uplinks: [v, u], ports: {q: }}, b: }", false, ""},
    };
    for (const auto &row : rows)
        EXPECT_EQ(messagesOf(danglingReferences(now, documentOf(row.wanted), row.prune, "f")), row.problems)
            << row.wanted;
}

// What other problems of a document may have caused is not said.
TEST(Documents, ReferencesOfFaultyDocumentsAreChecked) {
    const Document now = documentOf("switches: {a: {uplinks: [u, v], teaming: {active: [u]}}}");
    const struct {
        const char *wanted;
        const char *references;
    } rows[] = {
        {"switches: {a: {uplinks: [v], mtu: 1, host: {x: 1}}}", ""},
        {"switches: {a: {uplinks: [v], teaming: {actve: [v]}}}", ""},
        {"switches: {a: {uplinks: [v], mtu: 1, host: {learnStatic: x}}}",
         "f:1:15: switches.a.teaming: is stored and names uplink 'u', which the document removes"},
        {"switches: {a: {mtu: 1, teaming: {active: [w]}, ports: {p: 7}}}",
         "f:1:33: switches.a.teaming: uplink 'w' does not exist"},
        {"switches: {a: {uplinks: [w, 5, 5], teaming: {active: [w, x]}}}", ""},
        {"switches: {a: {uplinsk: [w], teaming: {active: [w]}}}", ""},
        {"switches: {a: {privateVlans: [7], ports: {p: {vlan: {id: 7, private: on}}}}}", ""},
        {"switches: {a: {ports: [p], host: {mirrorSessions: [{session: s, type: dvport, sourcesIn: [p]}]}}}",
         ""},
        {"switches: {a: {ports: {'\\': }, host: {mirrorSessions: [{session: s, type: dvport, sourcesIn: "
         "[p]}]}}}",
         ""},
    };
    for (const auto &row : rows) {
        std::vector<config::Problem> problems;
        const Document wanted = config::readDocument(row.wanted, "f", problems);
        EXPECT_FALSE(problems.empty()) << row.wanted;
        EXPECT_EQ(messagesOf(danglingReferences(now, wanted, false, "f")), row.references) << row.wanted;
    }
}

TEST(Documents, RoomIsChecked) {
    const Document now = documentOf(
        "switches: {a: {maxPorts: 4, uplinks: [u], ports: {p: , q: , u: {vlan: {id: 1}}}}, b: {ports: {p: "
        "}}}");
    std::string many = "switches: {new: {uplinks: [u], ports: {";
    for (int i = 0; i < 127; i++)
        many += std::to_string(i) + ": , ";
    const struct {
        std::string wanted;
        bool prune;
        const char *problems;
    } rows[] = {
        {"switches: {a: {ports: {r: }}}", false, ""},
        {"switches: {a: {ports: {r: , s: }}}", false,
         "f:1:15: switches.a: has 5 ports, those of uplinks and those that stay on the host among them, but "
         "there is room for 4"},
        {"switches: {a: {uplinks: [], ports: {q: , r: , s: , t: , w: }}}", true,
         "f:1:15: switches.a: has 5 ports, those of uplinks among them, but there is room for 4"},
        {"switches: {a: {uplinks: [v], ports: {r: }}}", false,
         "f:1:15: switches.a: needs 5 ports until others are removed, but there is room for 4; remove ports "
         "first"},
        {"switches: {a: {ports: {r: , s: }}}", true,
         "f:1:15: switches.a: needs 5 ports until others are removed, but there is room for 4; remove ports "
         "first"},
        // The comparison says that an existing switch cannot have another number.
        {"switches: {a: {maxPorts: 5, ports: {r: , s: }}}", false, ""},
        {many + "}}}", false, ""},
        {many + "127: }}}", false,
         "f:1:17: switches.new: has 129 ports, those of uplinks among them, but there is room for 128"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(messagesOf(lackOfRoom(now, documentOf(row.wanted), row.prune, "f")), row.problems)
            << row.wanted;
}

}  // namespace
}  // namespace qvs::test
