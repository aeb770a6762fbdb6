// SPDX-License-Identifier: Apache-2.0
// The policies of ports, each with frames that arrive, frames that do not, and the counters that change.
#include "datapath/rules.h"

#include <algorithm>
#include <cctype>

#include "datapath/network.h"

namespace qvs::test {

std::string jsonOf(const Case &value) {
    std::string text = "{number: 7, slot: 100, " + value.policies + " ports: [";
    for (const std::string &port : value.ports) {
        const std::string digit = port.substr(0, 1);
        const bool isUplink = digit >= "8";
        text += "{number: " + digit + ", slot: " + digit + ", ";
        if (!port.substr(1).starts_with("link: ")) text += "link: true, ";
        if (isUplink)
            text += "uplink: true, vlan: {trunk: true, ranges: [{first: 1, last: 4094}]}, ";
        else if (port.find("anonymous") == std::string::npos)
            text += "mac: \"02:00:00:00:00:0" + digit + "\", ";
        text += port.substr(1) + "}, ";
    }
    return text + "]}";
}

std::string nameOf(const testing::TestParamInfo<Case> &info) {
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char letter) { return !std::isalnum(letter); }, '_');
    return name;
}

namespace {

TEST_P(Rules, hold) {
    Network network;
    network.configure(policyOf(jsonOf(GetParam())));
    EXPECT_EQ(network.run(GetParam().script), "");
}

const std::string kPrivate =
    "private_vlans: [{primary: 10, secondary: 10}, {primary: 10, secondary: 11, type: Isolated}, "
    "{primary: 10, secondary: 12, type: Community}],";

std::string inMap(int port, int vlan) {
    return std::to_string(port) + "vlan: {in_private_map: true, id: " + std::to_string(vlan) + "}";
}

INSTANTIATE_TEST_SUITE_P(
    vlan, Rules,
    testing::Values(
        Case{"access",
             "",
             {"1" + kVlan10, "2" + kVlan10, "3vlan: {id: 11}", "8"},
             "1: 1>2 -> 2 \n 1: 1>* -> 2 8[10] \n 1: 1>m -> 2 8[10] \n 1: 1>3 -> 8[10] \n 1: 1>e -> 8[10] \n"
             "8: e>1[10] -> 1 \n 8: e>1[11] -> \n 8: e>1 -> \n 8: e>*[10] -> 1 2 \n 8: e>*[3.10] -> 1 2 \n"
             "1: 1>2[0] -> 2 \n 1: 1>e[5.0] -> 8[5.10] \n count 1 vlan 0 \n"
             "1: 1>2[10] -> \n 1: 1>*[11] -> \n count 1 vlan 2 in-dropped 2 in 5 in-all 1 in-group 1\n"
             "1: 1>1 -> \n 8: e>*[4095] -> \n count 8 vlan 1"},
        Case{"trunk",
             "",
             {"1" + kTrunk, "2vlan: {id: 15}", "3" + kTrunk, "4", "8"},
             "1: 1>2[15] -> 2 \n 1: 1>3[6.15] -> 3[6.15] \n 1: 1>*[20] -> 3[20] 8[20] \n 2: 2>* -> 1[15] "
             "3[15] 8[15] \n"
             "1: 1>*[21] -> \n 1: 1>* -> \n 1: 1>*[0] -> \n count 1 vlan 3 \n"
             "8: e>1[10] -> 1[10] \n 8: e>1[9] -> \n 8: e>* -> 4 \n 4: 4>* -> 8"},
        Case{"trunk of the untagged network",
             "",
             {"1vlan: {trunk: true, ranges: [{first: 0, last: 5}]}", "2", "8"},
             "1: 1>2 -> 2 \n 2: 2>1 -> 1 \n 1: 1>*[0] -> 2 8 \n 8: e>1 -> 1 \n 1: 1>e[4.0] -> 8[4.0] \n"
             "2: 2>1[4.0] -> 1"},
        Case{"priority",
             "",
             {"1vlan: {id: 10, priority: 5}", "2vlan: {priority: 3}", "3" + kTrunk, "8"},
             "1: 1>e -> 8[5.10] \n 1: 1>e[1.0] -> 8[5.10] \n 1: 1>3 -> 3[5.10] \n 2: 2>e -> 8[3.0] \n 2: 2>1 "
             "-> 8[3.0]"},
        Case{"nested",
             "",
             {"1vlan: {id: 10, nested: true}", "2vlan: {id: 10, nested: true}", "3" + kVlan10, "8"},
             "1: 1>2[7] -> 2[7] \n 1: 1>e[2.7] -> 8[2.10][2.7] \n 8: e>1[10][2.7] -> 1[2.7] \n 8: e>3[10][7] "
             "-> \n"
             "count 3 vlan 1 out-dropped 1 \n 1: 1>e -> 8[10] \n 1: 1>*[7] -> 2[7] 8[10][7] \n"
             "8: e>*[10][7](1500) -> 1[7] 2[7] \n 1: 1>e[7](1501) -> \n count 1 long 1"},
        Case{"private",
             kPrivate,
             {inMap(1, 10), inMap(2, 11), inMap(3, 11), inMap(4, 12), inMap(5, 12), "8"},
             "1: 1>2 -> 2 \n 1: 1>* -> 2 3 4 5 8[10] \n 1: 1>m -> 2 3 4 5 8[10] \n"
             "2: 2>1 -> 1 \n 2: 2>3 -> \n count 3 private 1 out-dropped 1 \n 2: 2>* -> 1 8[11] \n 2: 2>e -> "
             "8[11] \n"
             "4: 4>5 -> 5 \n 4: 4>2 -> \n 4: 4>m -> 1 5 8[12] \n count 2 private 1 \n"
             "8: e>2[10] -> 2 \n 8: e>2[11] -> \n 8: e>1[11] -> 1 \n 8: e>*[12] -> 1 4 5 \n 8: e>*[11] -> 1"},
        Case{"private without an entry",
             kPrivate,
             {inMap(1, 30), inMap(2, 10), "8"},
             "1: 1>2 -> \n 1: 1>* -> \n count 1 private 2 \n 2: 2>* -> 8[10]"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    security, Rules,
    testing::Values(
        Case{"forged",
             "",
             {"1security: {forged_transmits: false}", "2", "8"},
             "1: 1>2 -> 2 \n 1: a>2 -> \n 1: a>* -> \n 1: a>m -> \n count 1 forged 3 in-dropped 3 \n 2: a>* "
             "-> 1 8"},
        Case{"forged from a static address",
             "static_allowed: true, "
             "static_macs: [{address: \"02:00:00:00:00:61\", port: 1}],",
             {"1security: {forged_transmits: false}", "2security: {forged_transmits: false}", "8"},
             "1: a>2 -> 2 \n 1: b>2 -> \n 2: a>1 -> \n count 1 forged 1 \n count 2 forged 1"},
        Case{"address change",
             "",
             {"1security: {mac_change: false}", "2", "8"},
             "mac 1 a -> \n 1: a>2 -> \n 1: a>* -> \n 1: a>m -> \n 1: 1>2 -> \n 2: 2>a -> \n 2: 2>* -> 8 \n "
             "8: e>a -> \n 8: e>m -> 2 \n"
             "count 1 changed 8 in-dropped 4 out-dropped 4 \n mac 1 - -> \n 1: 1>2 -> 2 \n 2: 2>1 -> 1"},
        Case{"permitted address change",
             "",
             {"1security: {forged_transmits: false}", "2", "8"},
             "mac 1 a -> \n 1: a>2 -> 2 \n 1: 1>2 -> \n 2: 2>a -> 1 \n 2: 2>1 -> 8"},
        Case{"promiscuous",
             "",
             {"1security: {promiscuous: true}, filter: {promiscuous: true}", "2",
              "3filter: {promiscuous: true}", "4security: {promiscuous: true}", "5" + kVlan10, "8"},
             "2: 2>3 -> 1 3 \n 2: 2>e -> 1 8 \n 8: e>2 -> 1 2 \n 8: e>f -> 1 \n 5: 5>e -> 8[10] \n 2: 2>1 -> "
             "1 \n"
             "asks 4 -> \n asks 3 -> \n 2: 2>3 -> 1 3 4 \n 1: 1>e -> 4 8"},
        Case{"sink",
             "",
             {"1filter: {sink: true}", "2", "3", "8"},
             "2: 2>e -> 1 8 \n 8: e>f -> 1 \n 2: 2>3 -> 3 \n 8: e>3 -> 3"},
        Case{"blocked",
             "",
             {"1blocked: true", "2", "3link: false", "8"},
             "1: 1>2 -> \n 2: 2>1 -> \n 2: 2>* -> 8 \n 3: 3>2 -> \n count 1 blocked 3 \n count 3 blocked 2 \n"
             "down 2 -> \n 8: e>2 -> \n 8: e>* -> \n up 2 -> \n 8: e>2 -> 2"},
        Case{"first address",
             "",
             {"1security: {forged_transmits: false}, client: \"anonymous\"", "2", "8"},
             "2: 2>a -> 8 \n 1: a>2 -> 2 \n 2: 2>a -> 1 \n 1: b>2 -> \n count 1 forged 1"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    form, Rules,
    testing::Values(
        Case{"malformed",
             "",
             {"1", "2", "8"},
             "1: hex 0200000000020200000000 -> \n 1: hex 0200000000020200000000018100000a08 -> \n"
             "1: hex 02000000000201000000000108000000 -> \n count 1 malformed 3 \n"
             "1: hex 02000000000202000000000188b5 -> 2 \n 8: hex 020000000001020000000065810000008100 -> \n"
             "count 8 malformed 1"},
        Case{"mtu",
             "",
             {"1", "2", "8", "9"},
             "1: 1>2(1500) -> 2 \n 1: 1>2[0](1500) -> 2 \n 1: 1>2(1501) -> \n 1: 1>*(1501) -> \n 8: "
             "e>1(1501) -> \n"
             "count 1 long 2 \n count 8 long 1"},
        Case{"mtu of an uplink",
             "mtu: 9000,",
             {"1", "2", "8mtu: 1500"},
             "1: 1>2(9000) -> 2 \n 1: 1>*(1501) -> 2 \n 1: 1>e(1500) -> 8 \n 1: 1>e(1501) -> \n count 8 long "
             "2 out-all 0"},
        Case{"control frames",
             "",
             {"1", "2", "8"},
             "1: 1>s -> \n 8: e>s -> \n count 1 exception 1 in-group 1"},
        Case{"busy receiver",
             "",
             {"1", "2", "3", "8"},
             "busy 2 -> \n 1: 1>2 -> \n 1: 1>* -> 3 8 \n count 2 busy 2 out-dropped 2"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    learning, Rules,
    testing::Values(
        Case{"learns and expires",
             "aging: 10,",
             {"1" + kLearning, "2", "3", "8"},
             "2: 2>a -> 8 \n 1: a>2 -> 2 \n events +a@1/0 \n 2: 2>a -> 1 \n 8: e>a -> 1 \n 3: a>2 -> 2 \n"
             "at 9999 -> \n 1: a>2 -> 2 \n at 19998 -> \n 2: 2>a -> 1 \n at 19999 -> \n events -a@1/0 \n"
             "2: 2>a -> 8 \n count 1 learnt 1 expired 1 \n count 3 learnt 0"},
        Case{
            "moves",
            "",
            {"1" + kLearning, "2", "3" + kLearning, "8"},
            "1: a>2 -> 2 \n 3: a>2 -> 2 \n 2: 2>a -> 3 \n events +a@1/0 +a@3/0 \n count 3 moved 1 learnt 0 \n"
            "8: a>* -> \n count 8 reflected 1 \n at 3000 -> \n 8: a>* -> 1 2 3 \n events -a@3/0 \n 2: 2>a -> "
            "8"},
        Case{"limit of a port",
             "",
             {"1" + kLearning, "2", "8"},
             "1: a>2 -> 2 \n 1: b>2 -> 2 \n 1: c>2 -> 2 \n 2: 2>c -> 8 \n count 1 learnt 2 limit 0"},
        Case{"limit that drops",
             "mac_limit: 1,",
             {"1learning: {enabled: true, drop_at_limit: true}", "2", "8"},
             "1: a>2 -> 2 \n 1: b>2 -> \n 1: b>* -> \n 1: 1>2 -> 2 \n count 1 limit 2 learnt 1"},
        Case{"flooding",
             "",
             {"1learning: {enabled: true, flooding: true}", "2", "3learning: {flooding: true}", "8"},
             "2: 2>e -> 1 8 \n 8: e>f -> 1 \n 2: 2>3 -> 3 \n count 1 flooded 2 \n count 100 lookups 2 misses "
             "2"},
        Case{
            "static",
            "static_macs: [{address: \"02:00:00:00:00:61\", vlan: 10, port: 1}],",
            {"1" + kVlan10, "2" + kVlan10, "3" + kVlan10 + ", " + kLearning, "8"},
            "2: 2>a -> 1 \n 8: e>a[10] -> 1 \n 3: a>2 -> 2 \n 2: 2>a -> 1 \n 8: a>2[10] -> \n 8: e>a[11] ->"},
        Case{"an address that is removed",
             "static_macs: [{address: \"02:00:00:00:00:62\", port: 1}],",
             {"1" + kLearning, "2", "8"},
             "1: a>2 -> 2 \n forget 2 a -> \n forget 1 b -> \n forget 1 c -> \n 2: 2>a -> 1 \n 2: 2>b -> 1 \n"
             "events +a@1/0 \n forget 1 a -> \n events -a@1/0 \n 2: 2>a -> 8 \n 1: a>2 -> 2 \n 2: 2>a -> 1"},
        Case{"learnt addresses that stay",
             "aging: 1, learn_static: true,",
             {"1" + kLearning, "2", "8"},
             "1: a>2 -> 2 \n at 5000 -> \n 2: 2>a -> 1"}),
    nameOf);

const std::string kPair = "teaming: {active: [8, 9], ";

INSTANTIATE_TEST_SUITE_P(
    teaming, Rules,
    testing::Values(
        Case{"port number",
             "",
             {"1", "2", "8", "9"},
             "1: 1>e -> 9 \n 2: 2>e -> 8 \n count 1 uplink 9 \n 8: e>* -> 2 \n 9: e>* -> 1 \n 8: e>1 -> 1 \n "
             "9: e>1 -> 1 \n"
             "8: e>9 -> \n 1: 1>* -> 2 9 \n 8: 1>* -> \n count 8 reflected 1 \n 8: 1>2 ->"},
        Case{"failover and failback",
             kPair + "balance: Explicit, notify: true},",
             {"1" + kVlan10, "8", "9"},
             "1: 1>e -> 8[10] \n 9: e>*[10] -> \n at 1000 -> \n down 8 -> 9[10] \n 1: 1>e -> 9[10] \n 9: "
             "e>*[10] -> 1 \n"
             "count 100 failovers 1 arp-sent 1 \n at 1099 -> \n at 1100 -> 9[10] \n at 1999 -> \n at 2000 -> "
             "9[10] \n"
             "at 9000 -> \n up 8 -> 8[10] \n 1: 1>e -> 8[10] \n count 100 failbacks 1 arp-sent 4 \n"
             "count 1 moves 2 uplink 8 \n down 8 -> 9[10] \n down 9 -> \n 1: 1>e -> \n 1: 1>* -> \n"
             "count 1 no-uplink 2 uplink 0 \n at 9100 -> \n count 100 arp-failed 2"},
        Case{"rolling",
             kPair + "balance: Explicit, rolling: true},",
             {"1", "8", "9"},
             "1: 1>e -> 8 \n down 8 -> \n 1: 1>e -> 9 \n up 8 -> \n 1: 1>e -> 9 \n down 9 -> \n 1: 1>e -> 8"},
        Case{"standby",
             "teaming: {active: [8], standby: [9], balance: SourceMac},",
             {"1", "8", "9"},
             "1: 1>e -> 8 \n 9: e>1 -> \n down 8 -> \n 1: 1>e -> 9 \n 9: e>1 -> 1 \n up 8 -> \n 1: 1>e -> 8"},
        Case{"source address",
             kPair + "balance: SourceMac},",
             {"1", "8", "9"},
             "1: 1>e -> 9 \n 1: b>e -> 8 \n 1: 1>* -> 9"},
        Case{"source and destination address",
             kPair + "balance: SourceIp},",
             {"1", "8", "9"},
             // 10.0.0.1 with 239.1.1.1 and with 224.0.0.9; the other frame has no packet.
             "1: 1>m -> 9 \n 1: 1>n -> 8 \n 1: 1>e -> 9 \n down 9 -> \n 1: 1>m -> 8"},
        Case{"drop",
             "teaming: {active: [8], balance: Drop},",
             {"1", "2", "8"},
             "1: 1>e -> \n 1: 1>2 -> 2 \n 1: 1>* -> 2 \n 8: e>1 -> \n 8: e>* -> \n count 1 no-uplink 1 "
             "uplink 0"},
        Case{"policy of a port",
             kPair + "balance: Explicit},",
             {"1", "2teaming: {active: [9], balance: Explicit}", "8", "9"},
             "1: 1>e -> 8 \n 2: 2>e -> 9 \n 8: e>* -> 1 \n 9: e>* -> 2 \n down 9 -> \n 2: 2>e -> \n count 2 "
             "no-uplink 1"},
        Case{"link that is not checked",
             "teaming: {active: [8, 9], balance: Explicit, check_link: false},",
             {"1", "8", "9"},
             "down 8 -> \n 1: 1>e -> \n count 8 blocked 1"},
        Case{"always by the uplink",
             "",
             {"1always_uplink: true", "2", "3", "8"},
             "1: 1>2 -> 8 \n 1: 1>* -> 8 \n 8: 1>2 -> 2 \n 8: 1>* -> 2 3 \n 2: 2>1 -> 1 \n 8: 2>* -> \n"
             "count 8 reflected 1"},
        Case{"addresses behind a port are announced",
             kPair + "balance: Explicit, notify: true},",
             {"1" + kTrunk + ", " + kLearning, "8", "9"},
             "1: a>e[15] -> 8[15] \n down 8 -> 9[10] 9[15]"}),
    nameOf);

// Frames of the switch itself, behind the source address: a mark, and the uplink that sent it.
#define QVS_BEACON(source, uplink) "hex ffffffffffff" source "88b6717673620000000" uplink " -> \n"
#define QVS_BEACON_OF(uplink) QVS_BEACON("021000000007", uplink)

const std::string kBeacons = kPair + "balance: Explicit, check_beacon: true, ";

INSTANTIATE_TEST_SUITE_P(
    beacon, Rules,
    testing::Values(
        Case{
            "a silent uplink",
            kBeacons + "},",
            {"1", "8", "9"},
            "at 1 -> 8 9 \n 8: " QVS_BEACON_OF("9") "at 1000 -> \n at 1001 -> 8 9 \n 9: " QVS_BEACON_OF(
                "8") "1: 1>e -> 8 \n 8: e>* -> 1 \n at 3001 -> 8 9 \n 1: 1>e -> 9 \n 1: 1>* -> 9 \n 8: e>* "
                     "-> \n"
                     "9: e>* -> 1 \n count 100 failovers 1 \n 8: " QVS_BEACON_OF("8") "8: " QVS_BEACON(
                         "021000000008",
                         "9") "1: 1>e -> 9 \n 8: " QVS_BEACON_OF("9") "1: 1>e -> 8 \n count 100 failbacks 1"},
        Case{"no uplink hears another one",
             kBeacons + "},",
             {"1", "2", "8", "9"},
             "at 1 -> 8 9 \n 1: 1>e -> 8 \n at 3000 -> 8 9 \n 1: 1>e -> \n 1: 1>* -> 2 \n count 1 no-uplink "
             "1 \n"
             "8: " QVS_BEACON_OF("9") "1: 1>e -> 8"},
        Case{"best effort",
             kBeacons + "best_effort: true},",
             {"1", "8", "9"},
             "at 1 -> 8 9 \n at 3000 -> 8 9 \n 1: 1>e -> 8 \n 9: " QVS_BEACON_OF("8") "1: 1>e -> 9"},
        Case{"shotgun",
             kBeacons + "shotgun: true},",
             {"1" + kVlan10, "8", "9"},
             "at 1 -> 8 9 \n at 3000 -> 8 9 \n 1: 1>e -> 8[10] 9[10] \n 1: 1>* -> 8[10] 9[10] \n"
             "9: " QVS_BEACON_OF("8") "1: 1>e -> 9[10]"},
        Case{"a link that comes back",
             kBeacons + "},",
             {"1", "8", "9"},
             "down 8 -> \n at 1 -> 9 \n 1: 1>e -> 9 \n at 2500 -> 9 \n up 8 -> \n 1: 1>e -> 8 \n at 3500 -> "
             "8 9 \n"
             "1: 1>e -> 8"},
        Case{"one uplink",
             "teaming: {active: [8], check_beacon: true},",
             {"1", "8", "9"},
             "at 5000 -> \n 1: 1>e -> 8"}),
    nameOf);

}  // namespace
}  // namespace qvs::test
