// SPDX-License-Identifier: Apache-2.0
// The operations on policies, each described once: what it asks of the state library, the shell and the
// kernel, what it stores, and what absent, malformed and unreadable records give.
#include <algorithm>
#include <cstdio>
#include <regex>
#include <sstream>

#include "support/records.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr char kPort0[] = "port0";
constexpr char kUplinks[] = "";  // where mirror sessions are the uplinks' own
constexpr char kName[] = "n";
constexpr char kOld[] = "old";

// A record of any kind: no two bytes that are next to each other are equal, and the 16-bit number at 14 is 3.
uint8_t block[2700];
const uint8_t none[2700] = {};
const uint32_t kMask = 7;
const uint8_t kOn[5] = {2, 1, 0, 0, 0};
uint32_t word;
int number;

// Where a getter puts its answer, as whatever type it wants.
struct Out {
    void *at;
    template <typename T>
    operator T *() const {
        return static_cast<T *>(at);
    }
};
using Call = uint32_t (*)(const char *alias, Out out);

template <auto F, auto... more>
constexpr Call fromSwitch = [](const char *alias, Out out) { return F(alias, out, more...); };
template <auto F, const char *port = kPort0, auto... more>
constexpr Call fromPort = [](const char *alias, Out out) { return F(alias, port, out, more...); };
// Of the switch "id", whatever the alias.
template <auto F>
constexpr Call fromId = [](const char *, Out out) { return F("id", out); };
template <auto F, auto... given>
constexpr Call onSwitch = [](const char *alias, Out) { return F(alias, given...); };
template <auto F, auto... given>
constexpr Call onPort = [](const char *alias, Out) { return F(alias, kPort0, given...); };
// A mirror operation on the port, or on the uplinks.
template <auto F, const char *port>
uint32_t mirror(const char *alias, Out) {
    static const std::string list = sessions("new");
    return F(alias, port, list.data());
}

uint64_t numberAt(const std::string &record, size_t at, size_t width) {
    uint64_t value = 0;
    if (at + width <= record.size()) std::memcpy(&value, record.data() + at, width);
    return value;
}

// Which records are whole, from a second reading of each layout.
using Record = const std::string &;
using Whole = bool (*)(Record record);
template <size_t size>
constexpr Whole sized = [](Record r) { return r.size() == size; };
template <size_t size>
constexpr Whole upTo = [](Record r) { return r.size() <= size; };
template <size_t size>
constexpr Whole from = [](Record r) { return r.size() >= size; };
constexpr Whole pairs = [](Record r) { return r.size() % 8 == 0; };
constexpr Whole vlanRecord = [](Record r) { return r.size() >= 8 && r.size() == 8 + 4 * numberAt(r, 6, 2); };
constexpr Whole addresses = [](Record r) { return !r.empty() && r.size() == 1 + 6 * numberAt(r, 0, 1); };
constexpr Whole checkResult = [](Record r) {
    return r.size() >= 4 && r.size() == 4 * (numberAt(r, 0, 2) + numberAt(r, 2, 2) + 1);
};
constexpr Whole ipfixRecord = [](Record r) {
    return r.size() >= 184 && r.size() == 184 + numberAt(r, 14, 2);
};
constexpr Whole mirrorList = [](Record r) {
    return r.size() >= 20 && 20 + 232 * numberAt(r, 8, 4) + 52 * numberAt(r, 12, 4) <= r.size();
};
constexpr Whole filterMode = [](Record r) {
    return r.c_str() == std::string("snooping") || r.c_str() == std::string("legacyFiltering");
};

std::optional<std::string> stored(const std::string &key) {
    if (key[0] == 'g') return globalProp("id", keyOf(key).c_str());
    if (key[0] == 'h') return hostProp("id", keyOf(key).c_str());
    return portProp("id", kPort0, keyOf(key).c_str());
}
void clear(const std::string &key) {
    if (key[0] == 'g') DVSHYP_GlobalPropClear("id", keyOf(key).c_str());
    if (key[0] == 'h') DVSHYP_HostPropClear("id", keyOf(key).c_str());
    if (key[0] == 'p') DVSHYP_PortDataClear("id", kPort0, keyOf(key).c_str());
}

// A value that was stored: 'text', hexadecimal digits, or what is too long for them.
std::string show(const std::string &value) {
    if (value.size() > 1 && value.find('\0') == value.size() - 1 && std::isalpha(value[0]) != 0)
        return "'" + std::string(value.c_str()) + "'";
    if (value.size() <= 12) return toHex(value);
    const bool isBlock = value == bytesAt(block, value.size());
    return (isBlock ? "block " : "record ") + std::to_string(value.size());
}

// The trace in short: G get, S set with class and value, C clear, one after the other for the same key; "sh"
// is a line for the shell, "io" a request to the device.
std::string summary(const std::string &trace) {
    static const std::regex request(
        "state ([GHP])\\w*?([GSC])[les]\\w+ switch=\"id\"(?: port=\"port0\")? "
        "key=\"com.quillon.(?:vswitch\\.)?"
        "([^\"]*)\"(?: length=\\d+ type=(\\d+))?.*|(device open.*)|(shell)?.*");
    std::string calls, last;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        std::smatch found;
        std::regex_match(line, found, request);
        if (found[5].matched) continue;
        const std::string key = static_cast<char>(std::tolower(line[6])) + (" " + found[3].str());
        if (found[1].matched && key == last) {
            calls.insert(calls.size() - key.size() + 1, found[2]);
        } else {
            calls += calls.empty() ? "" : ", ";
            calls += found[1].matched   ? key[0] + found[2].str() + key.substr(1)
                     : found[6].matched ? "sh"
                                        : "io";
        }
        last = key;
        if (found[4].matched) calls += " " + found[4].str() + " " + show(stored(key).value_or("nothing"));
    }
    return calls;
}

enum Answer { Copy, Value, Pointer };
struct Getter {
    Call call;
    const char *asks;  // begins with the record's key
    Answer answer;
    Whole whole;
    size_t clears = 0;               // bytes of the caller's that a failure leaves as zeros
    const char *fallback = nullptr;  // what a key gives that is not stored, where that is a success
    const char *asksAbsent = nullptr;
};
const Getter kGetters[] = {
    {fromPort<VSDVS_GetDVMirrorSessions>, "pG port.mirrorSessions", Pointer, mirrorList, 8},
    {fromPort<VSDVS_GetDVMirrorSessions, kUplinks>, "hG uplinkMirrorSessions", Pointer, mirrorList, 8},
    {fromSwitch<VSDVS_GetPrivateVLANMap, &word>, "gG pvlanMap", Pointer, pairs, 8},
    {fromPort<VSDVS_GetPortVLANPolicy, kPort0, &word>, "pG port.vlan, pG port.priority", Pointer, vlanRecord,
     8, nullptr, "pG port.vlan"},
    {fromPort<VSDVS_GetPortNestedVLANTagging>, "pG port.vlanNestedTag", Value, sized<4>, 0, "00 ee"},
    {fromPort<VSDVS_GetPortSecurity>, "pG port.security", Copy, sized<4>, 0, "01000000 ee"},
    {fromPort<VSDVS_GetExtraEthFilter>, "pG port.extraEthFRP", Copy, sized<200>, 0},
    {fromPort<VSDVS_IsSinkPortEnabled>, "pG port.extraEthFRP", Value, sized<200>, 0, "00 ee"},
    {fromSwitch<VSDVS_GetTeamingPolicy>, "gG teaming", Copy, sized<2616>},
    {fromId<VSDVS_GetTeamingPolicyFromDVSID>, "gG teaming", Copy, sized<2616>},
    {fromPort<VSDVS_GetPortTeamingPolicy>, "pG port.teaming.policy", Copy, from<8>},
    {fromPort<VSDVS_GetPortTeamingOverride>, "pG port.teaming.override", Copy, upTo<81>, 81},
    {fromSwitch<VSDVS_GetLSTeamingPolicyTable>, "gG logicalswitch.teaming", Pointer, from<4>, 8},
    {fromId<VSDVS_GetLSTeamingPolicyTableFromDVSID>, "gG logicalswitch.teaming", Pointer, from<4>, 8},
    {fromPort<VSDVS_GetPortLSTeamingPolicyName>, "pG port.logicalswitch.teaming", Copy, upTo<136>, 136},
    {fromPort<VSDVS_GetTxUplinkAlways>, "pG port.txUplink", Value, from<0>},
    {fromSwitch<VSDVS_GetMACLearning>, "hG macLearning", Copy, sized<8>, 0, "580200 ee 00000100 ee"},
    {fromPort<VSDVS_GetPortMACLearning>, "pG port.macManagement", Value, sized<11>, 0,
     "0000 00100000 00000000 ee"},
    {fromSwitch<VSDVS_GetLearnStatic>, "hG macLearning.learnStatic", Value, from<0>, 0, "00 ee"},
    {fromSwitch<VSDVS_GetStaticMACAllow>, "hG macLearning.staticMACAllow", Value, from<0>, 0, "00 ee"},
    {fromSwitch<VSDVS_GetMcastFilterMode>, "gG multicastFilter", Value, filterMode, 0, "00000000 ee",
     "gG multicastFilter, io"},
    {fromSwitch<VSDVS_GetRCFType>, "gG rcf.INSNType", Value, from<0>, 4, "00000000 ee"},
    {fromSwitch<VSDVS_GetMcastUserLegacyEntries>, "hG mcast.user.addresses", Pointer, addresses, 8},
    {fromPort<VSDVS_GetPortMcastUserLegacyEntries>, "pG port.mcast.user.addresses.override", Pointer,
     addresses, 8},
    {fromSwitch<Discovery_GetParam>, "gG etherswitch.cdp", Copy, sized<2>, 0, "ee 00 ee"},
    {fromSwitch<HealthCheck_GetTeamCheckDeploy>, "gG common.teamcheck.deploy", Copy, sized<5>, 0,
     "0000000000 ee"},
    {fromSwitch<HealthCheck_GetTeamCheckParam>, "gG mesh.teamcheck.param", Copy, sized<1>, 0, "00 ee"},
    {fromSwitch<HealthCheck_GetVLANMTUCheckDeploy>, "gG common.vlanmtucheck.deploy", Copy, sized<5>, 0,
     "0000000000 ee"},
    {fromSwitch<HealthCheck_GetVLANMTUCheckParam>, "gG mesh.vlanmtucheck.param", Copy, sized<512>, 0,
     "0000000000000000"},
    {fromPort<HealthCheck_GetVLANCheckResult>, "pG common.port.volatile.vlanchkresult", Pointer, checkResult},
    {fromPort<HealthCheck_GetMTUCheckResult>, "pG common.port.volatile.mtuchkresult", Pointer, checkResult},
    {fromPort<IPFIXDVS_GetIpfixGranular>, "pG net.ipfix.port", Pointer, ipfixRecord, 0,
     "0000000000000000 ee"},
};

struct Change {
    Call call;
    const char *asks;                  // with its records stored
    const char *asksAbsent = nullptr;  // without them, where that is something else, "= 3" for the status
};
const Change kChanges[] = {
    {onSwitch<VSDVS_GetMTU, &number>, "sh"},
    {onSwitch<VSDVS_SetMTU, 1500>, "sh, sh, sh, gS mtu 16 dc050000, gS etherswitch.mtu 16 dc050000"},
    {mirror<VSDVS_SetDVMirrorSessions, kPort0>, "pS port.mirrorSessions 8 record 252"},
    {onPort<VSDVS_ClearDVMirrorSessions>, "pC port.mirrorSessions"},
    {mirror<VSDVS_AppendDVMirrorSessions, kPort0>, "pGS port.mirrorSessions 8 record 484",
     "pGS port.mirrorSessions 8 record 252"},
    {onPort<VSDVS_RemoveDVMirrorSession, kOld>, "pGC port.mirrorSessions", "pG port.mirrorSessions = 3"},
    {mirror<VSDVS_SetDVMirrorSessions, kUplinks>, "hS uplinkMirrorSessions 8 record 252"},
    {onSwitch<VSDVS_ClearDVMirrorSessions, kUplinks>, "hC uplinkMirrorSessions"},
    {mirror<VSDVS_AppendDVMirrorSessions, kUplinks>, "hGS uplinkMirrorSessions 8 record 484",
     "hGS uplinkMirrorSessions 8 record 252"},
    {onSwitch<VSDVS_RemoveDVMirrorSession, kUplinks, kOld>, "hGC uplinkMirrorSessions",
     "hG uplinkMirrorSessions = 3"},
    {onSwitch<VSDVS_SetPrivateVLANMap, block, 1>, "gS pvlanMap 8 0102030405060708"},
    {onSwitch<VSDVS_SetPrivateVLANMap, nullptr, 0>, "gC pvlanMap", "gC pvlanMap = 3"},
    {onPort<VSDVS_SetPortVLANPolicy, 1, VSDVS_NO_PRIORITY, 0, 0, nullptr, 0>,
     "pS port.vlan 8 0000010000000000, pGC port.priority",
     "pS port.vlan 8 0000010000000000, pG port.priority"},
    {onPort<VSDVS_SetPortVLANPolicy, 9, 0, 1, 0, nullptr, 0>,
     "pS port.vlan 8 05000900000001000000fe0f, pS port.priority 8 00000000"},
    {onPort<VSDVS_SetPortVLANPolicy, 9, 2, 0, 1, block, 1>,
     "pS port.vlan 8 060009000000010001020304, pS port.priority 8 02000000"},
    {onPort<VSDVS_ClearPortVLANPolicy>, "pS port.vlan 8 0000000000000000, pGC port.priority",
     "pS port.vlan 8 0000000000000000, pG port.priority"},
    {onPort<VSDVS_SetPortNestedVLANTagging, 0x80>, "pS port.vlanNestedTag 16 01000000"},
    {onPort<VSDVS_SetPortSecurity, &kMask>, "pS port.security 16 07000000"},
    {onPort<VSDVS_SetExtraEthFilter, block>, "pS port.extraEthFRP 16 block 200"},
    {onPort<VSDVS_ClearExtraEthFilter>, "pC port.extraEthFRP"},
    {onPort<VSDVS_ConfigureSinkPort, 1>, "pGS port.extraEthFRP 16 record 200"},
    {onPort<VSDVS_ConfigureSinkPort, 0>, "pG port.extraEthFRP", "pGS port.extraEthFRP 16 record 200"},
    {onSwitch<VSDVS_SetTeamingPolicy, block>, "gS teaming 16 block 2616"},
    {onSwitch<VSDVS_ClearTeamingPolicy>, "gC teaming"},
    {onPort<VSDVS_SetPortTeamingPolicy, block>, "pS port.teaming.policy 16 block 2616"},
    {onPort<VSDVS_ClearPortTeamingPolicy>, "pC port.teaming.policy"},
    {onPort<VSDVS_SetPortTeamingOverride, kName>, "pS port.teaming.override 16 'n'"},
    {onPort<VSDVS_ClearPortTeamingOverride>, "pC port.teaming.override"},
    {onSwitch<VSDVS_SetLSTeamingPolicy, none>, "gS logicalswitch.teaming 16 00000000"},
    {onSwitch<VSDVS_ClearLSTeamingPolicy>, "gC logicalswitch.teaming"},
    {onPort<VSDVS_SetPortLSTeamingPolicy, kName>, "pS port.logicalswitch.teaming 16 'n'"},
    {onPort<VSDVS_ClearPortLSTeamingPolicy>, "pC port.logicalswitch.teaming"},
    {onPort<VSDVS_SetTxUplinkAlways, 2>, "pS port.txUplink 16 'always'"},
    {onPort<VSDVS_SetTxUplinkAlways, 0>, "pS port.txUplink 16 'normal'"},
    {onSwitch<VSDVS_SetMACLearning, block>, "hS macLearning 16 0102030405060708"},
    {onSwitch<VSDVS_ClearMACLearning>, "hGC macLearning", "hG macLearning"},
    // The change of addresses is denied by the second bit of the security alone.
    {onPort<VSDVS_SetPortMACLearning, block>,
     "pG port.security, pS port.macManagement 16 010102030405060708090a",
     "pG port.security, pS port.macManagement 16 000102030405060708090a"},
    {onSwitch<VSDVS_SetLearnStatic, 0>, "hS macLearning.learnStatic 16 'false'"},
    {onSwitch<VSDVS_ClearLearnStatic>, "hC macLearning.learnStatic", "hC macLearning.learnStatic = 3"},
    {onSwitch<VSDVS_SetCaching, 0x80>, "hS macLearning.overlay.cache 16 'true'"},
    {onSwitch<VSDVS_ClearCaching>, "hGC macLearning.overlay.cache", "hG macLearning.overlay.cache"},
    {onSwitch<VSDVS_SetStaticMACAllow, 4>, "hS macLearning.staticMACAllow 16 'true'"},
    {onSwitch<VSDVS_ClearStaticMACAllow>, "hC macLearning.staticMACAllow",
     "hC macLearning.staticMACAllow = 3"},
    {onSwitch<VSDVS_SetMcastFilterMode, 0>, "gG common.version, gS multicastFilter 16 'legacyFiltering'"},
    {onSwitch<VSDVS_SetRCFType, 0>, "gS rcf.INSNType 16 'cbpf'"},
    {onSwitch<VSDVS_SetMcastUserLegacyEntries, 1, block>, "hS mcast.user.addresses 16 01010203040506"},
    {onSwitch<VSDVS_ClearMcastUserLegacyEntries>, "hC mcast.user.addresses", "hC mcast.user.addresses = 3"},
    {onPort<VSDVS_SetPortMcastUserLegacyEntries, 1, block>,
     "pS port.mcast.user.addresses.override 16 01010203040506"},
    {onPort<VSDVS_ClearPortMcastUserLegacyEntries>, "pC port.mcast.user.addresses.override",
     "pC port.mcast.user.addresses.override = 3"},
    {onSwitch<Discovery_SetParam, kOn>, "gS etherswitch.cdp 16 0201"},
    {onSwitch<Discovery_SetParam, none>, "gC etherswitch.cdp", "gC etherswitch.cdp = 3"},
    {onSwitch<HealthCheck_DeployTeamCheck, kOn>, "gS common.teamcheck.deploy 16 0201000000"},
    {onSwitch<HealthCheck_DeployTeamCheck, none>, "gC common.teamcheck.deploy",
     "gC common.teamcheck.deploy = 3"},
    {onSwitch<HealthCheck_SetTeamCheckParam, 9>, "gS mesh.teamcheck.param 8 09"},
    {onSwitch<HealthCheck_ClearTeamCheck>, "gC common.teamcheck.deploy, gC mesh.teamcheck.param"},
    {onSwitch<HealthCheck_DeployVLANMTUCheck, kOn>, "gS common.vlanmtucheck.deploy 16 0201000000"},
    {onSwitch<HealthCheck_DeployVLANMTUCheck, none>, "gC common.vlanmtucheck.deploy",
     "gC common.vlanmtucheck.deploy = 3"},
    {onSwitch<HealthCheck_SetVLANMTUCheckParam, block>, "gS mesh.vlanmtucheck.param 8 block 512"},
    {onSwitch<HealthCheck_ClearVLANMTUCheck>, "gC common.vlanmtucheck.deploy, gC mesh.vlanmtucheck.param"},
    {onPort<IPFIXDVS_SetIpfixGranular, block>, "pS net.ipfix.port 8 block 187"},
    {onPort<IPFIXDVS_SetIpfixGranular, nullptr>, "pGC net.ipfix.port", "pG net.ipfix.port"},
};

// All prefixes, one byte more, and extreme numbers at every place of the first 20 bytes.
std::vector<std::string> variants(const std::string &record) {
    std::vector<std::string> all = {record + "x"};
    for (size_t size = 0; size <= record.size(); ++size)
        all.push_back(record.substr(0, size));
    for (size_t at = 0; at < std::min<size_t>(record.size(), 20); ++at) {
        for (const std::string &extreme :
             {u32(0xffffffff), u32(0x80000000), u32(0x7fffffff), u16(1), u16(0)}) {
            std::string changed = record;
            changed.replace(at, extreme.size(), extreme);
            changed.resize(record.size());
            all.push_back(changed);
        }
    }
    return all;
}

class Operation : public testing::Test {
  protected:
    void SetUp() override {
        for (size_t i = 0; i < std::size(block); ++i)
            block[i] = static_cast<uint8_t>(i + 1);
        block[14] = 3, block[15] = 0;
        createSwitch(0, 0, 1);
    }

    // The records that an operation asks for are stored, or are not there.
    static void prepare(const std::string &asks, bool present) {
        for (const auto &[key, value] : kRecords) {
            if (asks.find(key + 2) == std::string::npos) continue;
            if (present) {
                ASSERT_STATUS(storeRecord(key, value), 0) << key;
            } else {
                clear(key);
            }
        }
        clearTrace();
    }

    // The caller's buffer, full of 0xee before.
    uint32_t run(Call call, const char *alias = "sw1") {
        buffer_.assign(2700, '\xee');
        return call(alias, Out{buffer_.data()});
    }
    // What a failure leaves of it, or a success that says nothing.
    void expectLeft(size_t zeroed, const std::string &begin = "") const {
        std::string expected = zeros(zeroed) + std::string(2700 - zeroed, '\xee');
        expected.replace(0, begin.size(), begin);
        EXPECT_EQ(buffer_, expected) << toHex(buffer_.substr(0, 16));
    }
    void *pointer() const {
        void *answer = nullptr;
        std::memcpy(&answer, buffer_.data(), sizeof answer);
        return answer;
    }

    std::string buffer_;
};

TEST_F(Operation, GettersAskOnceAndHaveDefaults) {
    for (const Getter &getter : kGetters) {
        SCOPED_TRACE(getter.asks);
        prepare(getter.asks, true);
        EXPECT_STATUS(run(getter.call), 0);
        if (getter.answer == Pointer) VSDVS_FreeMemory(pointer());
        EXPECT_EQ(summary(takeTrace()), getter.asks);

        prepare(getter.asks, false);
        EXPECT_STATUS(run(getter.call), getter.fallback != nullptr ? 0 : 0xbad0003);
        EXPECT_EQ(summary(takeTrace()), getter.asksAbsent != nullptr ? getter.asksAbsent : getter.asks);
        const bool isBlock = getter.call == fromSwitch<HealthCheck_GetVLANMTUCheckParam>;
        expectLeft(isBlock ? 512 : getter.clears, hex(getter.fallback != nullptr ? getter.fallback : ""));
    }
}

TEST_F(Operation, ChangesAskAndStoreExactlyThis) {
    for (const Change &change : kChanges) {
        SCOPED_TRACE(change.asks);
        prepare(change.asks, true);
        EXPECT_STATUS(run(change.call), 0);
        EXPECT_EQ(summary(takeTrace()), change.asks);
        prepare(change.asks, false);
        const uint32_t status = run(change.call);
        EXPECT_EQ(summary(takeTrace()) + (status == 0xbad0003 ? " = 3" : ""),
                  change.asksAbsent != nullptr ? change.asksAbsent : change.asks);
        EXPECT_TRUE(status == 0 || status == 0xbad0003);
    }
}

// Stored records that are not what they say: every length, and every number in their beginning.
TEST_F(Operation, HandsOutWholeRecordsOnly) {
    for (const Getter &getter : kGetters) {
        std::string key(getter.asks, std::strcspn(getter.asks, ","));
        key.erase(1, 1);
        const auto *found = std::find_if(std::begin(kRecords), std::end(kRecords),
                                         [&](const Stored &record) { return record.key == key; });
        ASSERT_NE(found, std::end(kRecords)) << key;
        ASSERT_TRUE(getter.whole(found->value)) << key;
        for (const std::string &record : variants(found->value)) {
            SCOPED_TRACE(key + ": " + toHex(record));
            ASSERT_STATUS(storeRecord(key, record), 0);
            const bool whole = getter.whole(record);
            EXPECT_STATUS(run(getter.call), whole ? 0 : 0xbad0001);
            if (!whole) {
                expectLeft(getter.clears);
            } else if (getter.answer == Pointer) {
                EXPECT_BYTES(bytesAt(pointer(), record.size()), record);
                VSDVS_FreeMemory(pointer());
            } else if (getter.answer == Copy) {
                expectLeft(getter.clears, record.substr(0, 2616));
            }
            if (HasFailure()) return;
        }
    }
}

TEST_F(Operation, ValuesAreComparedAsTheyAreStored) {
    const struct {
        Call get;
        const char *key;
        std::string value;
        const char *answer;
    } rows[] = {
        {fromPort<VSDVS_GetPortNestedVLANTagging>, "p port.vlanNestedTag", u32(0x100), "01 ee"},
        {fromPort<VSDVS_GetTxUplinkAlways>, "p port.txUplink", text("always"), "01 ee"},
        {fromPort<VSDVS_GetTxUplinkAlways>, "p port.txUplink", "always", "00 ee"},
        {fromPort<VSDVS_GetTxUplinkAlways>, "p port.txUplink", text("alwaysx"), "00 ee"},
        {fromPort<VSDVS_GetTxUplinkAlways>, "p port.txUplink", text("normal"), "00 ee"},
        {fromSwitch<VSDVS_GetLearnStatic>, "h macLearning.learnStatic", text("truely"), "01 ee"},
        {fromSwitch<VSDVS_GetLearnStatic>, "h macLearning.learnStatic", "true", "01 ee"},
        {fromSwitch<VSDVS_GetLearnStatic>, "h macLearning.learnStatic", "tru", "00 ee"},
        {fromSwitch<VSDVS_GetStaticMACAllow>, "h macLearning.staticMACAllow", text("false"), "00 ee"},
        {fromSwitch<VSDVS_GetStaticMACAllow>, "h macLearning.staticMACAllow", text("true"), "01 ee"},
        {fromSwitch<VSDVS_GetRCFType>, "g rcf.INSNType", text("ebpf"), "01000000 ee"},
        {fromSwitch<VSDVS_GetRCFType>, "g rcf.INSNType", text("ebpfx"), "00000000 ee"},
        {fromSwitch<VSDVS_GetRCFType>, "g rcf.INSNType", text("cbpf"), "00000000 ee"},
        {fromSwitch<VSDVS_GetMcastFilterMode>, "g multicastFilter", text("legacyFiltering"), "00000000 ee"},
        {fromSwitch<VSDVS_GetMcastFilterMode>, "g multicastFilter", text("snooping"), "01000000 ee"},
        {fromPort<VSDVS_GetPortMACLearning>, "p port.macManagement", hex("0102030405060708090a0b"),
         "02030405060708090a0b ee"},
        {fromPort<VSDVS_IsSinkPortEnabled>, "p port.extraEthFRP", u32(0x10000) + zeros(196), "01 ee"},
    };
    for (const auto &[get, key, value, answer] : rows) {
        ASSERT_STATUS(storeRecord(key, value), 0);
        EXPECT_STATUS(run(get), 0);
        const std::string expected = hex(answer);
        EXPECT_BYTES(buffer_.substr(0, expected.size()), expected) << key << " " << value;
    }
}

TEST_F(Operation, WhatIsRefusedAsksNobody) {
    char area[200];
    void *out = nullptr;
    const uint32_t mask = 8;
    const std::string noEntities = hex("efbecefa 02000000 00000000 01000000 00000000");
    const std::string wraps = hex("efbecefa 02000000 00000020 00000000 00000000");
    const struct {
        const char *name;
        uint32_t actual, expected = 0xbad0007;
    } rows[] = {
        // Limits, before the alias is looked at.
        {"security", VSDVS_SetPortSecurity("sw9", kPort0, &mask)},
        {"aging", VSDVS_SetMACLearning("sw9", "\x41\x42\x0f\0\0\0\0\0")},
        {"mode", VSDVS_SetMcastFilterMode("sw9", 2)},
        {"type", VSDVS_SetRCFType("sw9", 2)},
        {"26 addresses", VSDVS_SetMcastUserLegacyEntries("sw9", 26, none), 0xbad0006},
        {"2^32-1", VSDVS_SetPortMcastUserLegacyEntries("sw9", "p", UINT32_MAX, nullptr), 0xbad0006},
        {"least mtu", VSDVS_SetMTU("sw9", 1279)},
        {"largest mtu", VSDVS_SetMTU("sw9", 9001)},
        {"mirror", VSDVS_SetDVMirrorSessions("sw9", nullptr, noEntities.data())},
        // Ports that are not there.
        {"addresses", VSDVS_GetPortMcastUserLegacyEntries("sw1", "p9", &out)},
        {"learning", VSDVS_GetPortMACLearning("sw1", "p9", area), 0xbad0003},
        {"ipfix", IPFIXDVS_GetIpfixGranular("sw1", "p9", &out), 0xbad0003},
        // Sizes that wrap.
        {"pvlan", VSDVS_SetPrivateVLANMap("sw1", "", 0x20000000)},
        {"table", VSDVS_SetLSTeamingPolicy("sw1", u32(0x180000).data())},
        {"sessions", VSDVS_SetDVMirrorSessions("sw1", kPort0, wraps.data())},
    };
    for (const auto &[name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(actual, expected);
    }
    EXPECT_EQ(takeTrace(), "");
    // Newer switches keep their filter mode elsewhere.
    ASSERT_STATUS(storeRecord("g common.version", u32(107)), 0);
    EXPECT_STATUS(VSDVS_SetMcastFilterMode("sw1", 1), 0xbad0020);
    EXPECT_EQ(stored("g multicastFilter"), std::nullopt);
}

TEST_F(Operation, SinkPortsLiveInTheFilter) {
    constexpr char kFilter[] = "p port.extraEthFRP";
    const std::string record = u32(3) + u16(1) + hex("01005e000001") + zeros(31 * 6 + 2);
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 0), 0);
    EXPECT_BYTES(*stored(kFilter), zeros(200));
    ASSERT_STATUS(storeRecord(kFilter, record), 0);
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 8), 0);
    EXPECT_BYTES(*stored(kFilter), u32(0x10003) + record.substr(4));
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 0), 0);
    EXPECT_BYTES(*stored(kFilter), record);
}

}  // namespace
}  // namespace qvs::test
