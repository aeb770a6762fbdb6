// SPDX-License-Identifier: Apache-2.0
// A whole record of each property that a getter reads, for the switch "id" with the port "port0".
#pragma once

#include <regex>
#include <string>

#include "support/mirror.h"
#include "support/test.h"

namespace qvs::test {

inline std::string sessions(const char *id) {
    return encode({{id}});
}

// A key is written with the letter of its scope in front, and without "com.quillon.vswitch." or, if it is
// another family's, without "com.quillon.".
struct Stored {
    const char *key;
    std::string value;
};
inline const Stored kRecords[] = {
    {"g pvlanMap", zeros(16)},
    {"g teaming", std::string(2616, '\x01')},
    {"g logicalswitch.teaming", u32(1) + zeros(8)},
    {"g multicastFilter", text("snooping")},
    {"g rcf.INSNType", text("ebpf")},
    {"g etherswitch.cdp", hex("0102")},
    {"g common.teamcheck.deploy", hex("0102030405")},
    {"g mesh.teamcheck.param", hex("07")},
    {"g common.vlanmtucheck.deploy", hex("0102030405")},
    {"g mesh.vlanmtucheck.param", std::string(512, '\x02')},
    {"h uplinkMirrorSessions", sessions("old")},
    {"h macLearning", hex("0102030405060708")},
    {"h macLearning.learnStatic", text("true")},
    {"h macLearning.overlay.cache", text("true")},
    {"h macLearning.staticMACAllow", text("true")},
    {"h mcast.user.addresses", hex("03") + zeros(18)},
    {"p port.mirrorSessions", sessions("old")},
    {"p port.vlan", hex("0100 0000 0000 0300") + zeros(12)},
    {"p port.priority", u32(0)},
    {"p port.vlanNestedTag", u32(1)},
    {"p port.security", u32(5)},
    {"p port.extraEthFRP", u32(3) + zeros(196)},
    {"p port.teaming.policy", std::string(2616, '\x01')},
    {"p port.teaming.override", text(std::string(80, 'n'))},
    {"p port.logicalswitch.teaming", std::string(136, 'n')},
    {"p port.txUplink", text("always")},
    {"p port.macManagement", hex("0102030405060708090a0b")},
    {"p port.mcast.user.addresses.override", hex("1a") + zeros(26 * 6)},  // more than can be set
    {"p common.port.volatile.vlanchkresult", u16(2) + u16(1) + zeros(12)},
    {"p common.port.volatile.mtuchkresult", u16(0) + u16(2) + zeros(8)},
    {"p net.ipfix.port", zeros(14) + u16(5) + zeros(168) + "obsID"},
};

inline std::string keyOf(const std::string &key) {
    static const std::regex others(". (common|etherswitch|mesh|net)\\..*");
    return (std::regex_match(key, others) ? "com.quillon." : "com.quillon.vswitch.") + key.substr(2);
}
inline uint32_t storeRecord(const std::string &key, const std::string &value) {
    if (key[0] == 'g') return setGlobalProp("id", keyOf(key).c_str(), value);
    if (key[0] == 'h') return setHostProp("id", keyOf(key).c_str(), value);
    return setPortProp("id", "port0", keyOf(key).c_str(), value);
}

}  // namespace qvs::test
