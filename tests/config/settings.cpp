// SPDX-License-Identifier: Apache-2.0
// The table of settings: what each value is stored as, what comes back, and which records no value expresses.
#include "config/settings/setting.h"

#include <algorithm>

#include "config/documents.h"
#include "support/test.h"

namespace qvs::test {
namespace {

using config::Setting;
using config::Value;
using Records = std::array<std::optional<std::string>, config::kMostKeys>;

// --- values and records ---

// The value that a document has for a setting, with all its members.
Value valueOf(const Setting &setting, const std::string &text) {
    const char *place = setting.scope == Scope::Global ? ""
                        : setting.scope == Scope::Host ? "host: {"
                                                       : "ports: {p: {";
    const std::string ends(1 + static_cast<size_t>(std::ranges::count(std::string_view(place), '{')), '}');
    const config::Document document =
        documentOf(std::string("switches: {sw1: {") + place + setting.name + ": " + text + "}" + ends);
    const config::SwitchEntry &entry = document.switches.at(0);
    const config::Part &part = setting.scope == Scope::Global ? entry.global
                               : setting.scope == Scope::Host ? entry.host
                                                              : entry.ports.at(0).part;
    return completed(setting, *part.find(setting));
}

config::Target targetOf(const Setting &setting) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias("sw1");
    if (setting.scope != Scope::Port) return {"sw1", "", {setting.scope, sw}};
    return {"sw1", "port0", placeOf(lookUpPort(sw, "port0"))};
}

const Setting &settingOf(const std::string &name) {
    const size_t slash = name.find('/');
    const Scope scope = name.starts_with("port/")   ? Scope::Port
                        : name.starts_with("host/") ? Scope::Host
                                                    : Scope::Global;
    const Setting *setting = config::settingNamed(scope, name.substr(slash + 1));
    EXPECT_NE(setting, nullptr) << name;
    return *setting;
}

// What the kernel has stored under the keys of a setting.
Records storedBy(const Setting &setting) {
    Records records;
    for (size_t i = 0; i < records.size(); i++) {
        const char *key = setting.keys[i];
        if (key == nullptr) continue;
        records[i] = setting.scope == Scope::Global ? globalProp("id", key)
                     : setting.scope == Scope::Host ? hostProp("id", key)
                                                    : portProp("id", "port0", key);
    }
    return records;
}

void put(const Setting &setting, const Records &records) {
    for (size_t i = 0; i < records.size(); i++) {
        if (!records[i]) continue;
        const char *key = setting.keys[i];
        const uint32_t status = setting.scope == Scope::Global ? setGlobalProp("id", key, *records[i])
                                : setting.scope == Scope::Host ? setHostProp("id", key, *records[i])
                                                               : setPortProp("id", "port0", key, *records[i]);
        ASSERT_STATUS(status, 0);
    }
    ASSERT_STATUS(loadSnapshot(), 0);
}

void remove(const Setting &setting) {
    for (const char *key : setting.keys) {
        if (key == nullptr) continue;
        if (setting.scope == Scope::Global) VSDVS_ClearGlobProp("sw1", key, nullptr, 1);
        if (setting.scope == Scope::Host) VSDVS_ClearHostProp("sw1", key, nullptr, 1);
        if (setting.scope == Scope::Port) VSDVS_ClearPortProp("sw1", "port0", key, nullptr, 1);
    }
    ASSERT_STATUS(loadSnapshot(), 0);
}

std::string hexOf(const Records &records) {
    std::string text;
    for (const auto &record : records)
        text += (text.empty() ? "" : " | ") + (record ? toHex(*record) : "nothing");
    return text;
}

Records asRecords(const config::Stored &stored) {
    Records records;
    for (size_t i = 0; i < records.size(); i++)
        if (stored[i]) records[i] = std::string(stored[i]->begin(), stored[i]->end());
    return records;
}

class Settings : public testing::Test {
  protected:
    void SetUp() override { createSwitch(0, 1, 1); }
};

// --- what is stored ---

// A mirror session of a list, and one of its entities.
std::string session(std::string_view id, std::string_view name, const std::string &numbers,
                    const std::string &counts) {
    return field(id, 32) + field(name, 84) + numbers + zeros(67) + counts;
}
std::string entity(const std::string &value, uint32_t word = 0) {
    return u32(word) + value + zeros(48 - value.size());
}
std::string mirrorHead(uint32_t sessions, uint32_t entities) {
    return u32(0xfacebeef) + u32(2) + u32(sessions) + u32(entities) + u32(0);
}

std::string teaming(uint32_t balance, uint32_t selection, uint32_t behaviour, uint32_t word = 0) {
    return u32(balance) + u32(selection) + u32(word) + u32(behaviour) + u32(1) + u32(2) +
           field("uplink0", 81) + field("a", 81) + field(std::string(80, 'b'), 81) + zeros(29 * 81);
}

struct StoredRow {
    const char *setting;
    const char *value;
    Records records;
    Records cleared = {};
};

const StoredRow kStored[] = {
    {"mtu", "9000", {hex("28230000"), hex("28230000")}},
    {"mtu", "1280", {hex("00050000"), hex("00050000")}},
    {"privateVlans",
     R"([{"primary":100,"secondary":101,"type":"isolated"},{"primary":4094,"secondary":0,"type":"promiscuous"}])",
     {hex("6400 6500 02 000000 fe0f 0000 01 000000")}},
    {"privateVlans", "[]", {}},
    {"teaming",
     R"({"active":["uplink0"],"standby":["a","bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb"],
         "linkState":true,"notify":true,"shotgun":true})",
     {teaming(3, 0x80, 0x30)}},
    {"teaming", "{}", {hex("03") + zeros(2615)}},
    {"lsTeaming", "[]", {zeros(4)}},
    {"multicastMode", "legacy", {text("legacyFiltering")}},
    {"multicastMode", "snooping", {text("snooping")}},
    {"rcf", "ebpf", {text("ebpf")}},
    {"teamCheck", R"({"interval":5})", {hex("01 05000000")}},
    {"teamCheck", R"({"expected":"ip-hash"})", {std::nullopt, hex("01")}},
    {"teamCheck", R"({"interval":4294967295,"expected":"other"})", {hex("01 ffffffff"), hex("00")}},
    {"teamCheck", "{}", {}},
    {"vlanMtuCheck", R"({"interval":0})", {hex("01 00000000")}},
    {"discovery", R"({"protocol":"lldp","operation":"both"})", {hex("0103")}},
    {"discovery", R"({"operation":"listen"})", {hex("0001")}},
    {"discovery", R"({"protocol":"lldp","operation":"down"})", {}},
    {"host/macLearning", R"({"aging":1000000})", {hex("40420f 00 00000100")}},
    {"host/learnStatic", "true", {text("true")}},
    {"host/overlayCache", "off", {text("false")}},
    {"host/staticMacAllow", "on", {text("true")}},
    {"host/multicastAddresses",
     R"(["01:00:5E:00:00:fb","33:33:00:00:00:fb"])",
     {hex("02 01005e0000fb 3333000000fb")}},
    {"host/multicastAddresses", "[]", {hex("00")}},
    {"host/mirrorSessions", "[]", {mirrorHead(0, 0)}},
    {"host/mirrorSessions",
     R"([{"session":"er","name":"n","type":"ermirror-src","snapLength":96,"flags":["disabled","encap"],
          "encapVlan":4094,"samplingRate":10,"stack":true,
          "destinations":["192.0.2.7","2001:DB8:0::1"],"sourcesIn":["port0"]},
         {"session":"12345678901234567890123456789012","type":"rmirror-dst","sourcesIn":["0100"],
          "sourcesOut":["0"]}])",
     {mirrorHead(2, 5) +
      session("er", "n",
              u32(4) + u32(96) + u32(0x28) + u16(4094) + zeros(4) + zeros(2) + u32(10) + zeros(8) + hex("01"),
              u32(2) + u32(1) + u32(0) + u32(0)) +
      session("12345678901234567890123456789012", "",
              u32(3) + u32(0xffffffff) + u32(0) + zeros(8) + u32(0) + zeros(9),
              u32(0) + u32(1) + u32(1) + u32(3)) +
      entity(hex("00 000000 c0000207")) + entity(hex("01 000000 20010db8") + zeros(11) + hex("01")) +
      entity("port0") + entity(hex("6400")) + entity("")}},
    {"port/mirrorSessions",
     R"([{"session":"s","type":"logical-span","destinations":["02:00:00:00:00:AA"]}])",
     {mirrorHead(1, 1) +
      session("s", "", u32(5) + u32(0xffffffff) + u32(0) + zeros(8) + u32(0) + zeros(9),
              u32(1) + u32(0) + u32(0) + u32(0)) +
      entity(hex("0200000000aa"))}},
    {"port/vlan", R"({"id":10})", {hex("0000 0a00 0000 0000")}, {zeros(8)}},
    {"port/vlan",
     R"({"id":7,"private":true,"trunk":["1-100","200"],"priority":7})",
     {hex("0700 0700 0000 0200 0100 6400 c800 c800"), hex("07000000")},
     {zeros(8)}},
    {"port/vlan", R"({"trunk":[]})", {hex("0100 0000 0000 0100 0000 fe0f")}, {zeros(8)}},
    {"port/nestedVlan", "true", {hex("01000000")}},
    {"port/security", R"({"promiscuous":"allow","forged":"deny"})", {hex("04000000")}},
    {"port/security", "{}", {hex("01000000")}},
    {"port/filter",
     R"({"flags":["sink","multicast","sink"],"addresses":["01:00:5e:00:00:01"]})",
     {hex("02000100 0100 01005e000001") + zeros(188)}},
    {"port/filter", "{}", {zeros(200)}},
    {"port/teaming",
     R"({"balance":"explicit","active":["uplink0"],"standby":["a","bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb"],
         "beacon":true,"rolling":true,"bestEffort":true})",
     {teaming(4, 0x20, 0x0c)}},
    {"port/teamingOverride", "storage", {text("storage")}},
    {"port/lsTeaming", R"("gold \\\\ b")", {text("gold \\ b")}},
    {"port/txUplink", "always", {text("always")}},
    {"port/txUplink", "normal", {text("normal")}},
    {"port/macLearning",
     R"({"learning":true,"limit":4294967295,"limitPolicy":"deny"})",
     {hex("00 01 00 ffffffff 01000000")}},
    {"port/multicastAddresses", R"(["01:00:5e:00:00:01"])", {hex("01 01005e000001")}},
    {"port/ipfix",
     R"({"idle":1,"active":60,"rate":100,"internalOnly":true,"vnicOnly":true,"obsDomain":7,"source":"192.0.2.1",
         "obsId":"obs","collectors":["192.0.2.9:4739","[2001:DB8:0::1]:1"]})",
     {hex("01000000 3c000000 64000000 03 02 0300 07000000 c0000201 c0000209") + zeros(12) +
      hex("8312 00 00") + hex("20010db8") + zeros(11) + hex("01 0100 01 00") + zeros(120) + "obs"}},
    {"port/ipfix", "{}", {zeros(184)}},
};

TEST_F(Settings, ValuesAreStoredReadAndCleared) {
    for (const StoredRow &row : kStored) {
        SCOPED_TRACE(std::string(row.setting) + " " + row.value);
        const Setting &setting = settingOf(row.setting);
        const Value value = valueOf(setting, row.value);
        ASSERT_STATUS(setting.store(targetOf(setting), setting.encode(value, {}, targetOf(setting))), 0);
        ASSERT_STATUS(loadSnapshot(), 0);
        const config::Target target = targetOf(setting);
        const Records records = storedBy(setting);
        EXPECT_EQ(hexOf(records), hexOf(row.records));
        if (records != Records{}) {
            EXPECT_EQ(expressed(setting, storedOf(setting, target.place), target), value);
            EXPECT_EQ(setting.read(target), value);
        }
        if (setting.clear != nullptr && records != Records{}) {
            EXPECT_STATUS(setting.clear(target), 0);
        }
        ASSERT_STATUS(loadSnapshot(), 0);
        EXPECT_EQ(hexOf(storedBy(setting)), hexOf(row.cleared));
        // What libqvs answers then is what the members say of themselves, unless the kernel is asked.
        if (row.cleared == Records{} && setting.running == nullptr) {
            const std::optional<Value> now = setting.read(targetOf(setting));
            EXPECT_EQ(now.value_or(fallbackOf(setting)), fallbackOf(setting));
        }
    }
}

// What a stored record keeps from a value before it that has other records.
TEST_F(Settings, AbsentMembersClearTheirKeys) {
    const Setting &check = settingOf("teamCheck");
    const Setting &vlan = settingOf("port/vlan");
    for (const char *text :
         {R"({"interval":1,"expected":"other"})", R"({"expected":"other"})", R"({"interval":1})"}) {
        ASSERT_STATUS(check.store(targetOf(check), check.encode(valueOf(check, text), {}, targetOf(check))),
                      0);
    }
    EXPECT_EQ(hexOf(storedBy(check)), "0101000000 | nothing");
    for (const char *text : {R"({"id":1,"priority":3})", R"({"id":1})"}) {
        ASSERT_STATUS(vlan.store(targetOf(vlan), vlan.encode(valueOf(vlan, text), {}, targetOf(vlan))), 0);
    }
    EXPECT_EQ(hexOf(storedBy(vlan)), "0000010000000000 | nothing");
}

// --- what no value expresses ---

// Kept: the value is there, and encoding it keeps the bytes that it does not express. Refused: there is none.
// Compared: there is one, and the comparison of bytes alone shows that it is not all.
enum class Fate { Kept, Refused, Compared };
struct AlienRow {
    const char *setting;
    Records records;
    Fate fate;
};

std::string changed(std::string record, size_t at, char byte) {
    record[at] = byte;
    return record;
}

const std::string kList = mirrorHead(1, 1) +
                          session("s", "", u32(1) + u32(0xffffffff) + u32(0) + zeros(8) + u32(0) + zeros(9),
                                  u32(1) + u32(0) + u32(0) + u32(0)) +
                          entity("port1");
const std::string kTwoLists = mirrorHead(2, 1) + kList.substr(20, 232) + kList.substr(20);
const std::string kIpfix = hex("00000000 00000000 00000000 00 01") + zeros(10) + hex("c0000209") + zeros(12) +
                           hex("8312 00 00") + zeros(140);

const AlienRow kAliens[] = {
    {"mtu", {hex("28230000"), std::nullopt}, Fate::Refused},
    {"mtu", {hex("28230000"), hex("dc050000")}, Fate::Refused},
    {"mtu", {hex("ff040000"), hex("ff040000")}, Fate::Refused},
    {"privateVlans", {hex("6400 6500 04 000000")}, Fate::Refused},
    {"privateVlans", {hex("6400 6500 02 0000")}, Fate::Refused},
    {"teaming", {teaming(3, 0x80, 0x30, 7)}, Fate::Kept},
    {"teaming", {teaming(6, 0, 0)}, Fate::Refused},
    {"teaming", {teaming(3, 0x40, 0)}, Fate::Refused},
    {"teaming", {teaming(3, 0, 0x40)}, Fate::Refused},
    {"teaming", {teaming(3, 0, 0).substr(1)}, Fate::Refused},
    {"teaming", {changed(teaming(3, 0, 0), 20, 32)}, Fate::Refused},         // 33 uplinks
    {"teaming", {changed(teaming(3, 0, 0), 24 + 81, 0)}, Fate::Refused},     // an empty name
    {"teaming", {changed(teaming(3, 0, 0), 24 + 242, 'b')}, Fate::Refused},  // no NUL
    {"port/teaming", {teaming(3, 0x80, 0).substr(0, 24)}, Fate::Refused},
    {"lsTeaming", {u32(1)}, Fate::Refused},
    {"lsTeaming", {u32(0) + "x"}, Fate::Refused},
    {"multicastMode", {text("legacy")}, Fate::Refused},
    {"multicastMode", {std::string("snooping")}, Fate::Refused},
    {"rcf", {text("other")}, Fate::Refused},
    {"teamCheck", {hex("00 05000000")}, Fate::Refused},
    {"teamCheck", {hex("02 05000000")}, Fate::Refused},
    {"teamCheck", {std::nullopt, hex("02")}, Fate::Refused},
    {"vlanMtuCheck", {std::nullopt, zeros(511)}, Fate::Refused},
    {"discovery", {hex("0100")}, Fate::Refused},
    {"discovery", {hex("0204")}, Fate::Refused},
    {"host/macLearning", {hex("2c0100 09 00040000")}, Fate::Kept},
    {"host/macLearning", {hex("41420f 00 00040000")}, Fate::Refused},
    {"host/learnStatic", {text("truely")}, Fate::Refused},
    {"host/multicastAddresses", {hex("02 01005e0000fb")}, Fate::Refused},
    {"host/multicastAddresses", {hex("1a") + zeros(26 * 6)}, Fate::Refused},
    {"host/mirrorSessions", {changed(kList, 16, 1)}, Fate::Kept},              // reserved
    {"host/mirrorSessions", {changed(kList, 20 + 134, 1)}, Fate::Kept},        // reserved1
    {"host/mirrorSessions", {changed(kList, 20 + 149, 1)}, Fate::Kept},        // reserved3
    {"host/mirrorSessions", {changed(kList, 252, 0x77)}, Fate::Kept},          // the word of an entity
    {"host/mirrorSessions", {changed(kList, 299, 1)}, Fate::Kept},             // behind its text
    {"host/mirrorSessions", {changed(kList, 4, 1)}, Fate::Refused},            // the older form
    {"host/mirrorSessions", {changed(kList, 20 + 116, 6)}, Fate::Refused},     // type
    {"host/mirrorSessions", {changed(kList, 20 + 124, 0x40)}, Fate::Refused},  // flags
    {"host/mirrorSessions", {changed(kList, 20 + 129, 0x10)}, Fate::Refused},  // VLAN 4096
    {"host/mirrorSessions", {changed(kList, 20 + 148, 1)}, Fate::Refused},     // stack, of another type
    {"host/mirrorSessions", {changed(kList, 20 + 228, 1)}, Fate::Refused},     // outside the list
    {"host/mirrorSessions", {changed(kList, 12, 2)}, Fate::Refused},           // shorter than it counts
    {"host/mirrorSessions", {changed(kList, 256, 0)}, Fate::Refused},          // an empty name
    {"host/mirrorSessions", {kTwoLists}, Fate::Refused},                       // an entity of two, one name
    {"port/mirrorSessions", {hex("efbece")}, Fate::Refused},
    {"port/vlan", {hex("0000 ff0f 0000 0000")}, Fate::Refused},
    {"port/vlan", {hex("0100 0000 0000 0100 0500 0400")}, Fate::Refused},
    {"port/vlan", {hex("0200 0000 0000 0000")}, Fate::Refused},
    {"port/vlan", {hex("0100 0000 0000 0000")}, Fate::Refused},
    {"port/nestedVlan", {hex("02000000")}, Fate::Refused},
    {"port/security", {hex("08000000")}, Fate::Refused},
    {"port/filter", {hex("02000000 0000") + zeros(192) + hex("0102")}, Fate::Kept},
    {"port/filter", {hex("40000000 0000") + zeros(194)}, Fate::Refused},
    {"port/filter", {hex("01000000 0100") + zeros(194)}, Fate::Refused},
    {"port/filter", {hex("02000000 2100") + zeros(194)}, Fate::Refused},
    {"port/teamingOverride", {text("")}, Fate::Refused},
    {"port/teamingOverride", {text(std::string(81, 'x'))}, Fate::Refused},
    {"port/lsTeaming", {std::string("abc")}, Fate::Refused},
    {"port/txUplink", {text("sometimes")}, Fate::Refused},
    {"port/macLearning", {hex("00 01 00 ffffffff 0100000000")}, Fate::Refused},
    {"port/multicastAddresses", {std::string()}, Fate::Refused},
    {"port/ipfix", {changed(kIpfix, 24 + 19, 5)}, Fate::Kept},
    {"port/ipfix", {changed(kIpfix, 12, 4)}, Fate::Refused},
    {"port/ipfix", {changed(kIpfix, 13, 9)}, Fate::Refused},
    {"port/ipfix", {changed(kIpfix, 14, 1)}, Fate::Refused},
    {"port/ipfix", {changed(kIpfix, 14, 1) + zeros(1)}, Fate::Refused},
    // Bytes that libqvs or a reader passes over.
    {"privateVlans", {hex("6400 6500 02 000001")}, Fate::Compared},
    {"privateVlans", {std::string()}, Fate::Compared},  // an empty list is stored as nothing
    {"port/vlan", {hex("0800 0a00 0000 0000")}, Fate::Compared},
    {"port/vlan", {hex("0400 0a00 0000 0000")}, Fate::Compared},
    {"port/vlan", {hex("0000 0a00 0000 0000"), hex("03000000")}, Fate::Compared},
    {"port/macLearning", {hex("01 01 00 00100000 00000000")}, Fate::Compared},
    {"port/filter", {hex("02000000 0000") + zeros(191) + hex("010000")}, Fate::Compared},
    {"host/mirrorSessions", {kList + "x"}, Fate::Compared},
    {"host/mirrorSessions", {changed(kList, 0, 1)}, Fate::Compared},
    {"port/ipfix", {changed(kIpfix, 24 + 18, 2)}, Fate::Compared},
    {"port/ipfix", {changed(kIpfix, 183, 1)}, Fate::Compared},
};

TEST_F(Settings, OtherRecordsAreNotExpressed) {
    const Setting *former = nullptr;
    for (const AlienRow &row : kAliens) {
        SCOPED_TRACE(std::string(row.setting) + " " + hexOf(row.records).substr(0, 120));
        const Setting &setting = settingOf(row.setting);
        if (former) remove(*former);
        former = &setting;
        put(setting, row.records);
        const config::Target target = targetOf(setting);
        const config::StoredView stored = storedOf(setting, target.place);
        EXPECT_EQ(expressed(setting, stored, target), std::nullopt);
        if (row.fate == Fate::Compared) continue;
        const std::optional<Value> value = setting.decode(stored);
        EXPECT_EQ(value.has_value(), row.fate == Fate::Kept);
        if (!value) continue;
        EXPECT_EQ(hexOf(asRecords(setting.encode(*value, stored, target))), hexOf(row.records));
    }
}

// --- other ways to read ---

TEST_F(Settings, TeamingIsReadByIdentifier) {
    put(settingOf("teaming"), {teaming(3, 0x80, 0x30)});
    put(settingOf("lsTeaming"), {u32(1) + std::string(2748, 'x')});
    for (const char *name : {"teaming", "lsTeaming"}) {
        const Setting &setting = settingOf(name);
        config::Target target = targetOf(setting);
        const std::optional<Value> value = setting.read(target);
        target.alias = "id";
        target.byId = true;
        EXPECT_TRUE(setting.readsById);
        EXPECT_EQ(setting.read(target), value);
        target.alias = "other";
        target.place = {Scope::Global, nullptr};
        EXPECT_EQ(setting.read(target), std::nullopt);
    }
}

TEST_F(Settings, TheRunningSwitchIsAsked) {
    const Setting &mode = settingOf("multicastMode");
    EXPECT_EQ(mode.running(targetOf(mode)), Value("legacy"));
    EXPECT_EQ(mode.read(targetOf(mode)), Value("legacy"));
    put(mode, {text("snooping")});
    EXPECT_EQ(mode.running(targetOf(mode)), Value("snooping"));
    const Setting &table = settingOf("lsTeaming");
    put(table, {u32(1) + std::string(2748, 'x')});
    EXPECT_EQ(table.running(targetOf(table)), Value(config::List{config::Blob(2748, 'x')}));
    ASSERT_STATUS(setGlobalProp("id", QVS_KEY_VERSION, u32(107)), 0);
    try {
        mode.store(targetOf(mode), mode.encode(Value("legacy"), {}, targetOf(mode)));
        FAIL() << "stored";
    } catch (const Failure &failure) {
        EXPECT_EQ(
            failure.message,
            "switch 'sw1': multicast filter mode: Not supported (0xbad0020); switches of version 107 and "
            "later have it elsewhere");
    }
}

TEST_F(Settings, EachKeyBelongsToOneSetting) {
    for (const Setting *setting : config::settings())
        for (const char *key : setting->keys) {
            if (key == nullptr) continue;
            EXPECT_EQ(config::settingOfKey(setting->scope, key), setting) << key;
            EXPECT_NE(config::classOfKey(setting->scope, key).value_or(0), 0u) << key;
        }
}

}  // namespace
}  // namespace qvs::test
