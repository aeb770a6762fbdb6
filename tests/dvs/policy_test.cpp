// The policies of switches and ports: what each operation stores and asks for, what absent and malformed
// records give, and what is refused.
#include <gtest/gtest.h>
#include <qvs/qvs.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/host.h"
#include "support/places.h"

namespace qvs::test {
namespace {

class Policy : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 106, 0, 0, 0, 1), 0);
        ASSERT_STATUS(DVSHYP_SwitchAdd("hub", "etherswitch", 8, 105), 0);
        ASSERT_STATUS(DVSHYP_GlobalPropSet("hub", "com.quillon.common.alias", "hub", 4, 16), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
    }
};

std::string line(Where where, const char *verb, const std::string &key, const std::string &rest) {
    const char *const calls[] = {"GlobalProp", "HostProp", "PortData"};
    return "state " + std::string(calls[where]) + verb + R"( switch="id")" +
           (where == Port ? R"( port="port0")" : "") + " key=\"" + key + "\"" + rest + "\n";
}

const std::string kFilterRecord = u32(0x3) + u16(1) + hex("01005e000001") + zeros(31 * 6 + 2);
constexpr char kVlan[] = "com.quillon.vswitch.port.vlan";
constexpr char kPriority[] = "com.quillon.vswitch.port.priority";
constexpr char kSecurity[] = "com.quillon.vswitch.port.security";
constexpr char kFilter[] = "com.quillon.vswitch.port.extraEthFRP";
constexpr char kManagement[] = "com.quillon.vswitch.port.macManagement";
constexpr char kPortMcast[] = "com.quillon.vswitch.port.mcast.user.addresses.override";
constexpr char kIpfix[] = "com.quillon.net.ipfix.port";

const uint8_t *octets(const char *bytes) {
    return reinterpret_cast<const uint8_t *>(bytes);
}

// What the tool never stores, and flags that are neither 0 nor 1; its transcripts show the bytes of the rest.
TEST_F(Policy, SettersStoreTheseBytesWithOneRequest) {
    const uint8_t ranges[] = {1, 0, 5, 0};
    struct {
        std::function<uint32_t()> set;
        Where where;
        std::string key;
        int type;
        std::string bytes;
    } const rows[] = {
        {[] { return VSDVS_SetPrivateVLANMap("sw1", "\x64\0\x65\0\x02\x07\x08\x09", 1); }, Global,
         "com.quillon.vswitch.pvlanMap", 8, hex("6400650002070809")},
        {[] { return VSDVS_SetPortNestedVLANTagging("sw1", "port0", 0x80); }, Port,
         "com.quillon.vswitch.port.vlanNestedTag", 16, u32(1)},
        {[] { return VSDVS_SetTxUplinkAlways("sw1", "port0", 2); }, Port, "com.quillon.vswitch.port.txUplink",
         16, text("always")},
        {[] { return VSDVS_SetLearnStatic("sw1", 0); }, Host, "com.quillon.vswitch.macLearning.learnStatic",
         16, text("false")},
        {[] { return VSDVS_SetCaching("sw1", 0x80); }, Host, "com.quillon.vswitch.macLearning.overlay.cache",
         16, text("true")},
        {[] { return VSDVS_SetStaticMACAllow("sw1", 4); }, Host,
         "com.quillon.vswitch.macLearning.staticMACAllow", 16, text("true")},
        {[] { return HealthCheck_SetTeamCheckParam("sw1", 9); }, Global, "com.quillon.mesh.teamcheck.param",
         8, hex("09")},
        {[] { return HealthCheck_DeployVLANMTUCheck("sw1", octets("\x02\x01\0\0\0")); }, Global,
         "com.quillon.common.vlanmtucheck.deploy", 16, hex("0201000000")},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_STATUS(row.set(), 0);
        EXPECT_EQ(takeTrace(), line(row.where, "Set", row.key,
                                    " length=" + std::to_string(row.bytes.size()) +
                                        " type=" + std::to_string(row.type) + " -> 0x0"));
        EXPECT_BYTES(stored(row.where, row.key).value_or("nothing"), row.bytes);
        clearTrace();
    }
    // Setters that ask before they store, or store two keys.
    EXPECT_STATUS(VSDVS_SetPortVLANPolicy("sw1", "port0", 9, 0, 1, 0, nullptr, 0), 0);
    EXPECT_BYTES(*stored(Port, kVlan), hex("0500 0900 0000 0100 0000fe0f"));
    EXPECT_BYTES(*stored(Port, kPriority), u32(0));
    EXPECT_STATUS(VSDVS_SetPortVLANPolicy("sw1", "port0", 9, 0xffffffff, 0, 1, ranges, 1), 0);
    EXPECT_BYTES(*stored(Port, kVlan), hex("0200 0900 0000 0100 01000500"));
    EXPECT_EQ(stored(Port, kPriority), std::nullopt);
    EXPECT_STATUS(VSDVS_ClearPortVLANPolicy("sw1", "port0"), 0);
    EXPECT_BYTES(*stored(Port, kVlan), zeros(8));
    // The change of addresses is denied by the second bit alone.
    const std::string learning = hex("0100 40000000 01000000");
    for (const auto &[mask, change] : {std::pair{6u, "00"}, {5u, "01"}}) {
        ASSERT_STATUS(store(Port, kSecurity, u32(mask)), 0);
        EXPECT_STATUS(VSDVS_SetPortMACLearning("sw1", "port0", learning.data()), 0);
        EXPECT_BYTES(*stored(Port, kManagement), hex(change) + learning);
    }
}

// A getter into a buffer of the caller, which holds 0xee before.
struct GetRow {
    std::function<uint32_t(char *)> get;
    Where where;
    std::string key;
    size_t size;           // of the stored record
    uint32_t absent;       // what a key that was never set gives
    std::string fallback;  // and what is then in the buffer
};

// The buffer as getters of single bytes want it.
uint8_t *octets(char *out) {
    return reinterpret_cast<uint8_t *>(out);
}

const GetRow kGetters[] = {
    {[](char *out) { return VSDVS_GetPortNestedVLANTagging("sw1", "port0", octets(out)); }, Port,
     "com.quillon.vswitch.port.vlanNestedTag", 4, 0, hex("00 ee")},
    {[](char *out) { return VSDVS_GetPortSecurity("sw1", "port0", reinterpret_cast<uint32_t *>(out)); }, Port,
     kSecurity, 4, 0, u32(1)},
    {[](char *out) { return VSDVS_GetExtraEthFilter("sw1", "port0", out); }, Port, kFilter, 200, 0xbad0003,
     hex("eeee")},
    {[](char *out) { return VSDVS_GetTeamingPolicy("sw1", out); }, Global, "com.quillon.vswitch.teaming",
     2616, 0xbad0003, hex("eeee")},
    {[](char *out) { return VSDVS_GetTeamingPolicyFromDVSID("id", out); }, Global,
     "com.quillon.vswitch.teaming", 2616, 0xbad0003, hex("eeee")},
    {[](char *out) { return VSDVS_GetMACLearning("sw1", out); }, Host, "com.quillon.vswitch.macLearning", 8,
     0, hex("580200 ee 00000100 ee")},
    {[](char *out) { return VSDVS_GetPortMACLearning("sw1", "port0", out); }, Port, kManagement, 11, 0,
     hex("0000 00100000 00000000 ee")},
    {[](char *out) { return Discovery_GetParam("sw1", octets(out)); }, Global, "com.quillon.etherswitch.cdp",
     2, 0, hex("ee 00 ee")},
    {[](char *out) { return HealthCheck_GetTeamCheckDeploy("sw1", octets(out)); }, Global,
     "com.quillon.common.teamcheck.deploy", 5, 0, hex("0000000000 ee")},
    {[](char *out) { return HealthCheck_GetTeamCheckParam("sw1", octets(out)); }, Global,
     "com.quillon.mesh.teamcheck.param", 1, 0, hex("00 ee")},
    {[](char *out) { return HealthCheck_GetVLANMTUCheckDeploy("sw1", octets(out)); }, Global,
     "com.quillon.common.vlanmtucheck.deploy", 5, 0, hex("0000000000 ee")},
    {[](char *out) { return HealthCheck_GetVLANMTUCheckParam("sw1", octets(out)); }, Global,
     "com.quillon.mesh.vlanmtucheck.param", 512, 0, zeros(512) + hex("ee")},
};

TEST_F(Policy, AbsentKeysGiveTheDefaultAndWrongSizesFail) {
    for (const GetRow &row : kGetters) {
        SCOPED_TRACE(row.key);
        std::string out(2700, '\xee');
        EXPECT_STATUS(row.get(out.data()), row.absent);
        EXPECT_EQ(takeTrace(), line(row.where, "Get", row.key, " -> 0xbad0003"));
        EXPECT_BYTES(out.substr(0, row.fallback.size()), row.fallback);
        for (size_t size = 0; size <= row.size + 1; ++size) {
            ASSERT_STATUS(store(row.where, row.key, std::string(size, 3)), 0);
            out.assign(2700, '\xee');
            EXPECT_STATUS(row.get(out.data()), size == row.size ? 0 : 0xbad0001) << size;
            if (size != row.size) {
                EXPECT_EQ(out, std::string(2700, '\xee')) << size;
            }
        }
        ASSERT_STATUS(clear(row.where, row.key), 0);
        clearTrace();
    }
    // Any non-zero word is on, not only its low byte.
    uint8_t enabled = 0xee;
    ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.vlanNestedTag", u32(0x100)), 0);
    EXPECT_STATUS(VSDVS_GetPortNestedVLANTagging("sw1", "port0", &enabled), 0);
    EXPECT_EQ(enabled, 1);
}

// Which records are whole is hostile_test's; this is what becomes of the pointer when one is not.
TEST_F(Policy, PointersAfterMalformedRecords) {
    void *const kBefore = reinterpret_cast<void *>(0x10);
    static uint32_t n;
    struct {
        std::function<uint32_t(void **)> get;
        Where where;
        std::string key;
        void *after;
    } const rows[] = {
        {[](void **out) { return VSDVS_GetPrivateVLANMap("sw1", out, &n); }, Global,
         "com.quillon.vswitch.pvlanMap", nullptr},
        {[](void **out) { return VSDVS_GetPortVLANPolicy("sw1", "port0", out, &n); }, Port, kVlan, nullptr},
        {[](void **out) { return VSDVS_GetLSTeamingPolicyTableFromDVSID("id", out); }, Global,
         "com.quillon.vswitch.logicalswitch.teaming", nullptr},
        {[](void **out) { return VSDVS_GetMcastUserLegacyEntries("sw1", out); }, Host,
         "com.quillon.vswitch.mcast.user.addresses", nullptr},
        {[](void **out) { return VSDVS_GetPortMcastUserLegacyEntries("sw1", "port0", out); }, Port,
         kPortMcast, nullptr},
        {[](void **out) { return HealthCheck_GetVLANCheckResult("sw1", "port0", out); }, Port,
         "com.quillon.common.port.volatile.vlanchkresult", kBefore},
        {[](void **out) { return HealthCheck_GetMTUCheckResult("sw1", "port0", out); }, Port,
         "com.quillon.common.port.volatile.mtuchkresult", kBefore},
        {[](void **out) { return IPFIXDVS_GetIpfixGranular("sw1", "port0", out); }, Port, kIpfix, kBefore},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.key);
        ASSERT_STATUS(store(row.where, row.key, hex("020000")), 0);
        void *out = kBefore;
        EXPECT_STATUS(row.get(&out), 0xbad0001);
        EXPECT_EQ(out, row.after);
    }
    // More addresses than can be set are handed out all the same.
    const std::string addresses = hex("1a") + zeros(26 * 6);
    ASSERT_STATUS(store(Host, "com.quillon.vswitch.mcast.user.addresses", addresses), 0);
    void *out = nullptr;
    ASSERT_STATUS(VSDVS_GetMcastUserLegacyEntries("sw1", &out), 0);
    EXPECT_BYTES(bytesAt(out, addresses.size()), addresses);
    VSDVS_FreeMemory(out);
    // A port without sampling has no record, and that is a success.
    ASSERT_STATUS(IPFIXDVS_SetIpfixGranular("sw1", "port0", nullptr), 0);
    out = kBefore;
    EXPECT_STATUS(IPFIXDVS_GetIpfixGranular("sw1", "port0", &out), 0);
    EXPECT_EQ(out, nullptr);
    EXPECT_STATUS(IPFIXDVS_SetIpfixGranular("sw1", "port0", nullptr), 0);
}

TEST_F(Policy, TextsAreComparedAsTheyAreStored) {
    uint8_t flag = 0xee;
    uint32_t number = 0xee;
    char name[136];
    constexpr char kTx[] = "com.quillon.vswitch.port.txUplink";
    EXPECT_STATUS(VSDVS_GetTxUplinkAlways("sw1", "port0", &flag), 0xbad0003);
    EXPECT_EQ(flag, 0xee);
    for (const auto &[value, always] : {std::pair{text("always"), 1},
                                        {std::string("always"), 0},
                                        {text("alwaysx"), 0},
                                        {text("normal"), 0}}) {
        ASSERT_STATUS(store(Port, kTx, value), 0);
        EXPECT_STATUS(VSDVS_GetTxUplinkAlways("sw1", "port0", &flag), 0);
        EXPECT_EQ(flag, always) << value;
    }
    for (const auto &[value, on] : {std::pair{text("truely"), 1},
                                    {std::string("true"), 1},
                                    {std::string("tru"), 0},
                                    {text("false"), 0}}) {
        ASSERT_STATUS(store(Host, "com.quillon.vswitch.macLearning.learnStatic", value), 0);
        EXPECT_STATUS(VSDVS_GetLearnStatic("sw1", &flag), 0);
        EXPECT_EQ(flag, on) << value;
    }
    EXPECT_STATUS(VSDVS_GetStaticMACAllow("sw1", &flag), 0);
    EXPECT_EQ(flag, 0);
    for (const auto &[value, type] : {std::pair{text("ebpf"), 1u}, {text("ebpfx"), 0u}, {text("cbpf"), 0u}}) {
        ASSERT_STATUS(store(Global, "com.quillon.vswitch.rcf.INSNType", value), 0);
        EXPECT_STATUS(VSDVS_GetRCFType("sw1", &number), 0);
        EXPECT_EQ(number, type) << value;
    }
    for (const auto &[value, status, mode] : {std::tuple{text("legacyFiltering"), 0u, 0u},
                                              {text("snooping"), 0u, 1u},
                                              {text("snoop"), 0xbad0001u, 1u}}) {
        ASSERT_STATUS(store(Global, "com.quillon.vswitch.multicastFilter", value), 0);
        EXPECT_STATUS(VSDVS_GetMcastFilterMode("sw1", &number), status);
        EXPECT_EQ(number, mode) << value;
    }
    // Names: the longest that fits, and one byte more.
    ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.teaming.override", text(std::string(80, 'n'))), 0);
    EXPECT_STATUS(VSDVS_GetPortTeamingOverride("sw1", "port0", name), 0);
    EXPECT_STREQ(name, std::string(80, 'n').c_str());
    ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.teaming.override", std::string(82, 'n')), 0);
    EXPECT_STATUS(VSDVS_GetPortTeamingOverride("sw1", "port0", name), 0xbad0001);
    EXPECT_BYTES(bytesAt(name, 81), zeros(81));
    ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.logicalswitch.teaming", std::string(136, 'n')), 0);
    EXPECT_STATUS(VSDVS_GetPortLSTeamingPolicyName("sw1", "port0", name), 0);
    EXPECT_EQ(bytesAt(name, 136), std::string(136, 'n'));
    ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.logicalswitch.teaming", std::string(137, 'n')), 0);
    EXPECT_STATUS(VSDVS_GetPortLSTeamingPolicyName("sw1", "port0", name), 0xbad0001);
    EXPECT_BYTES(bytesAt(name, 136), zeros(136));
    // A port's teaming record is read as far as it goes.
    std::string policy(2700, '\xee');
    for (const auto &[size, status, copied] : {std::tuple{7, 0xbad0001u, 0}, {8, 0u, 8}, {2700, 0u, 2616}}) {
        ASSERT_STATUS(store(Port, "com.quillon.vswitch.port.teaming.policy",
                            std::string(static_cast<size_t>(size), '\x01')),
                      0);
        policy.assign(2700, '\xee');
        EXPECT_STATUS(VSDVS_GetPortTeamingPolicy("sw1", "port0", policy.data()), status);
        EXPECT_EQ(policy.find('\xee'), static_cast<size_t>(copied));
    }
}

TEST_F(Policy, ClearsForgiveExactlyWhatTheyMay) {
    constexpr uint32_t kForgiven = 0;
    constexpr uint32_t kAsIs = 0xbad0003;
    struct {
        const char *name;
        std::function<uint32_t(const char *)> clear;
        uint32_t absent;
    } const rows[] = {
        {"mirror", [](auto a) { return VSDVS_ClearDVMirrorSessions(a, "port0"); }, kForgiven},
        {"pvlan", [](auto a) { return VSDVS_SetPrivateVLANMap(a, nullptr, 0); }, kAsIs},
        {"filter", [](auto a) { return VSDVS_ClearExtraEthFilter(a, "port0"); }, kForgiven},
        {"teaming", [](auto a) { return VSDVS_ClearTeamingPolicy(a); }, kForgiven},
        {"port teaming", [](auto a) { return VSDVS_ClearPortTeamingPolicy(a, "port0"); }, kForgiven},
        {"override", [](auto a) { return VSDVS_ClearPortTeamingOverride(a, "port0"); }, kForgiven},
        {"ls table", [](auto a) { return VSDVS_ClearLSTeamingPolicy(a); }, kForgiven},
        {"ls choice", [](auto a) { return VSDVS_ClearPortLSTeamingPolicy(a, "port0"); }, kForgiven},
        {"learning", [](auto a) { return VSDVS_ClearMACLearning(a); }, kForgiven},
        {"caching", [](auto a) { return VSDVS_ClearCaching(a); }, kForgiven},
        {"learnStatic", [](auto a) { return VSDVS_ClearLearnStatic(a); }, kAsIs},
        {"staticMACAllow", [](auto a) { return VSDVS_ClearStaticMACAllow(a); }, kAsIs},
        {"mcast", [](auto a) { return VSDVS_ClearMcastUserLegacyEntries(a); }, kAsIs},
        {"port mcast", [](auto a) { return VSDVS_ClearPortMcastUserLegacyEntries(a, "port0"); }, kAsIs},
        {"discovery", [](auto a) { return Discovery_SetParam(a, octets("\1\0")); }, kAsIs},
        {"team deploy", [](auto a) { return HealthCheck_DeployTeamCheck(a, octets("\0\1\0\0\0")); }, kAsIs},
        {"team check", [](auto a) { return HealthCheck_ClearTeamCheck(a); }, kForgiven},
        {"vlan check", [](auto a) { return HealthCheck_ClearVLANMTUCheck(a); }, kForgiven},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_STATUS(row.clear("sw1"), row.absent);
        // An alias that nobody has is never forgiven.
        const bool lists = std::string(row.name).find("mcast") != std::string::npos;
        EXPECT_STATUS(row.clear("sw9"), lists ? 0xbad0007 : 0xbad0003);
        EXPECT_STATUS(row.clear("hub"), 0xbad0007);
    }
}

TEST_F(Policy, WhatIsRefusedAsksNobody) {
    static char area[200];
    static void *out = nullptr;
    const uint32_t mask = 8;
    const std::string addresses = zeros(26 * 6);
    struct {
        const char *name;
        std::function<uint32_t()> call;
        uint32_t status;
    } const rows[] = {
        // Limits, before the alias is looked at.
        {"security", [&] { return VSDVS_SetPortSecurity("sw9", "port0", &mask); }, 0xbad0007},
        {"aging", [] { return VSDVS_SetMACLearning("sw9", "\x41\x42\x0f\0\0\0\0\0"); }, 0xbad0007},
        {"mode", [] { return VSDVS_SetMcastFilterMode("sw9", 2); }, 0xbad0007},
        {"type", [] { return VSDVS_SetRCFType("sw9", 2); }, 0xbad0007},
        {"26 addresses", [&] { return VSDVS_SetMcastUserLegacyEntries("sw9", 26, addresses.data()); },
         0xbad0006},
        {"2^32-1", [] { return VSDVS_SetPortMcastUserLegacyEntries("sw9", "p", 0xffffffff, nullptr); },
         0xbad0006},
        {"mtu", [] { return VSDVS_SetMTU("sw9", 1279); }, 0xbad0007},
        {"mtu", [] { return VSDVS_SetMTU("sw9", 9001); }, 0xbad0007},
        {"mirror",
         [] {
             return VSDVS_SetDVMirrorSessions("sw9", nullptr,
                                              (u32(0xfacebeef) + u32(2) + u32(0) + u32(1) + u32(0)).data());
         },
         0xbad0007},
        // Statuses that are not the resolver's.
        {"filter", [] { return VSDVS_GetExtraEthFilter("sw9", "port0", area); }, 0xbad0001},
        {"mirror list", [] { return VSDVS_GetDVMirrorSessions("hub", "", &out); }, 0xbad0001},
        {"addresses", [] { return VSDVS_GetMcastUserLegacyEntries("sw9", &out); }, 0xbad0007},
        {"no port", [] { return VSDVS_GetPortMcastUserLegacyEntries("sw1", "p9", &out); }, 0xbad0007},
        {"learning", [] { return VSDVS_GetPortMACLearning("sw1", "p9", area); }, 0xbad0003},
        {"class", [] { return IPFIXDVS_GetIpfixGranular("hub", "port0", &out); }, 0xbad0020},
        {"class", [] { return IPFIXDVS_SetIpfixGranular("hub", "port0", nullptr); }, 0xbad0020},
        {"ipfix port", [] { return IPFIXDVS_GetIpfixGranular("sw1", "p9", &out); }, 0xbad0003},
        // Sizes that wrap, and nulls.
        {"pvlan", [] { return VSDVS_SetPrivateVLANMap("sw1", "", 0x20000000); }, 0xbad0007},
        {"table", [] { return VSDVS_SetLSTeamingPolicy("sw1", u32(0x180000).data()); }, 0xbad0007},
        {"sessions",
         [] {
             return VSDVS_SetDVMirrorSessions(
                 "sw1", "port0", (u32(0xfacebeef) + u32(2) + u32(0x20000000) + u32(0) + u32(0)).data());
         },
         0xbad0007},
        {"null record", [] { return VSDVS_SetTeamingPolicy("sw1", nullptr); }, 0xbad0007},
        {"null name", [] { return VSDVS_SetPortTeamingOverride("sw1", "port0", nullptr); }, 0xbad0007},
        {"null port", [] { return VSDVS_SetPortNestedVLANTagging("sw1", nullptr, 1); }, 0xbad0007},
        {"null alias", [] { return VSDVS_ClearTeamingPolicy(nullptr); }, 0xbad0007},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_STATUS(row.call(), row.status);
        EXPECT_EQ(takeTrace(), "");
    }
    // Newer switches keep their filter mode elsewhere.
    ASSERT_STATUS(store(Global, "com.quillon.common.version", u32(107)), 0);
    EXPECT_STATUS(VSDVS_SetMcastFilterMode("sw1", 1), 0xbad0020);
    EXPECT_EQ(stored(Global, "com.quillon.vswitch.multicastFilter"), std::nullopt);
}

TEST_F(Policy, SinkPortsLiveInTheFilter) {
    uint8_t sink = 0xee;
    EXPECT_STATUS(VSDVS_IsSinkPortEnabled("sw1", "port0", &sink), 0);
    EXPECT_EQ(sink, 0);
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 0), 0);
    EXPECT_BYTES(*stored(Port, kFilter), zeros(200));
    clearTrace();
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 0), 0);
    EXPECT_EQ(takeTrace(), line(Port, "Get", kFilter, " -> 0x0 length=200"));
    ASSERT_STATUS(store(Port, kFilter, kFilterRecord), 0);
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 8), 0);
    EXPECT_BYTES(*stored(Port, kFilter), u32(0x10003) + kFilterRecord.substr(4));
    EXPECT_STATUS(VSDVS_IsSinkPortEnabled("sw1", "port0", &sink), 0);
    EXPECT_EQ(sink, 1);
    EXPECT_STATUS(VSDVS_ConfigureSinkPort("sw1", "port0", 0), 0);
    EXPECT_BYTES(*stored(Port, kFilter), kFilterRecord);
}

}  // namespace
}  // namespace qvs::test
