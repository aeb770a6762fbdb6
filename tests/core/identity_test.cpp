// SPDX-License-Identifier: Apache-2.0
// The three names of a switch, ports and their kernel numbers.
#include "support/intercept.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr char kAliasKey[] = "com.quillon.common.alias";
constexpr char kPortsetKey[] = "com.quillon.common.host.portset";
constexpr char kStatusKey[] = "com.quillon.common.port.volatile.status";

// Stored as given: with a NUL only where the value has one.
struct StoredSwitch {
    const char *id;
    std::optional<std::string> alias;
    std::optional<std::string> portset;
    const char *className = "vswitch";
};

void store(const StoredSwitch &sw) {
    ASSERT_STATUS(DVSHYP_SwitchAdd(sw.id, sw.className, 16, 105), 0);
    EXPECT_STATUS(sw.alias ? setGlobalProp(sw.id, kAliasKey, *sw.alias) : 0, 0);
    EXPECT_STATUS(sw.portset ? setHostProp(sw.id, kPortsetKey, *sw.portset) : 0, 0);
}

// A caller's buffer between two guards, full of what must not be taken for an answer.
template <size_t Size>
struct Output {
    Output() { std::memset(bytes, 0xee, sizeof bytes); }
    bool untouched() const { return is(0, std::string(Size, '\xee')); }
    // What begins at `offset`; the byte behind the buffer is never written.
    bool is(size_t offset, const std::string &expected) const {
        return bytesAt(bytes + offset, expected.size()) == expected && bytes[Size] == '\xee';
    }
    char bytes[Size + 1];
};

TEST(Identity, SwitchIdentifierOfAnAlias) {
    const std::string id63(63, 'i');
    store({"id 1", text("sw1"), std::nullopt});
    store({"other", text("hub"), std::nullopt, "etherswitch"});
    store({"prefix", text("pre"), std::nullopt, "vswitch2"});
    store({id63.c_str(), text("long"), std::nullopt});
    store({"cut", text("longer"), std::nullopt});
    CallsReset reset;
    calls().longIds["cut"] = std::string(80, 'c');
    ASSERT_STATUS(DVSLoadConfig(), 0);

    struct {
        const char *alias;
        uint32_t status, statusOfAllTypes;
        std::string id;
    } const rows[] = {
        {"sw1", 0, 0, "id 1"},
        {"hub", 0xbad0007, 0, "other"},
        {"pre", 0xbad0007, 0, "prefix"},
        {"long", 0, 0, id63},
        {"longer", 0, 0, std::string(63, 'c')},
        {"id 1", 0xbad0003, 0xbad0003, ""},
        {"sw", 0xbad0003, 0xbad0003, ""},
        {"SW1", 0xbad0003, 0xbad0003, ""},
        {"", 0xbad0003, 0xbad0003, ""},
    };
    for (const auto &[alias, status, statusOfAllTypes, id] : rows) {
        SCOPED_TRACE(alias);
        Output<64> out, outOfAllTypes;
        EXPECT_STATUS(DVSAliasToSwitchId(alias, out.bytes), status);
        EXPECT_TRUE(status == 0 ? out.is(0, text(id)) && out.is(63, text("")) : out.untouched());
        EXPECT_STATUS(DVSAliasToSwitchIdAllTypes(alias, outOfAllTypes.bytes), statusOfAllTypes);
        EXPECT_TRUE(statusOfAllTypes == 0 ? outOfAllTypes.is(0, text(id)) && outOfAllTypes.is(63, text(""))
                                          : outOfAllTypes.untouched());
    }

    Output<64> out;
    EXPECT_STATUS(DVSAliasToSwitchId(nullptr, out.bytes), 0xbad0007);
    EXPECT_TRUE(out.untouched());
    EXPECT_STATUS(DVSAliasToSwitchId("sw1", nullptr), 0xbad0007);
    EXPECT_STATUS(DVSAliasToSwitchId("sw9", nullptr), 0xbad0003);
}

TEST(Identity, PortsetNameOfAnAlias) {
    const std::string name127(127, 'n'), name128(128, 'm'), name200(200, 'o');
    store({"id 1", text("sw1"), text("pset1")});
    store({"id 2", text("bare"), std::nullopt});
    store({"id 3", text("empty"), text("")});
    store({"id 4", text("nothing"), ""});
    store({"id 5", text("open"), "pset5"});
    store({"id 6", text("tail"), text("pset6") + "junk"});
    store({"id 7", text("n127"), text(name127)});
    store({"id 8", text("n128"), text(name128)});
    store({"id 9", text("n200"), text(name200)});
    store({"id 10", std::nullopt, std::nullopt});
    store({"id 11", text("hub"), text("hub-set"), "etherswitch"});
    CallsReset reset;
    calls().otherNames["nameless"] = "id 10";
    ASSERT_STATUS(DVSLoadConfig(), 0);

    struct {
        const char *alias;
        std::string portset;
    } const rows[] = {
        {"sw1", field("pset1", 128)},
        {"bare", field("bare", 128)},
        {"empty", zeros(128)},
        {"nothing", zeros(128)},
        {"open", field("pset5", 128)},
        {"tail", field("pset6", 128)},
        {"n127", text(name127)},
        {"n128", name128},
        {"n200", name200.substr(0, 128)},
        {"nameless", field("id 10", 128)},
        {"hub", field("hub-set", 128)},
    };
    for (const auto &[alias, portset] : rows) {
        SCOPED_TRACE(alias);
        Output<128> out;
        EXPECT_STATUS(DVSAliasToPortsetName(alias, out.bytes), 0);
        EXPECT_BYTES(bytesAt(out.bytes, 128), portset);
        EXPECT_TRUE(out.is(0, portset));
    }

    Output<128> out;
    EXPECT_STATUS(DVSAliasToPortsetName("sw9", out.bytes), 0xbad0003);
    EXPECT_TRUE(out.is(0, text("") + std::string(127, '\xee')));
}

TEST(Identity, AliasOfAPortset) {
    const std::string a128(128, 'a'), p127(127, 'p'), p200(200, 'p');
    struct {
        const char *name;
        StoredSwitch sw;
        std::string searched;
        std::string alias;
    } const rows[] = {
        {"exact", {"id", text("sw1"), text("pset1")}, "pset1", field("sw1", 128)},
        {"stored is a prefix", {"id", text("sw1"), text("pset1")}, "pset12", field("sw1", 128)},
        {"searched is a prefix", {"id", text("sw1"), text("pset1")}, "pset", zeros(128)},
        {"another", {"id", text("sw1"), text("pset1")}, "qset1", zeros(128)},
        {"stored is empty", {"id", text("sw1"), text("")}, "pset1", field("sw1", 128)},
        {"stored has no NUL", {"id", text("sw1"), "pset1"}, "pset1", field("sw1", 128)},
        {"no portset", {"id", text("sw1"), std::nullopt}, "sw1", zeros(128)},
        {"no alias", {"id", std::nullopt, text("pset1")}, "pset12", field("pset12", 128)},
        {"no alias, long name", {"id", std::nullopt, text("p")}, p200, text(p127)},
        {"empty alias", {"id", text(""), text("pset1")}, "pset1", zeros(128)},
        {"alias has no NUL", {"id", "sw1", text("pset1")}, "pset1", field("sw1", 128)},
        {"alias of 128 characters", {"id", text(a128), text("p")}, "p", a128},
        {"other class", {"id", text("hub"), text("pset1"), "etherswitch"}, "pset1", field("hub", 128)},
    };
    for (const auto &[name, sw, searched, alias] : rows) {
        SCOPED_TRACE(name);
        resetHost();
        store(sw);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        for (const auto find : {DVSPortsetNameToAlias, VSDVS_GetAliasFromPortset}) {
            Output<128> out;
            EXPECT_STATUS(find(searched.c_str(), out.bytes), 0);
            EXPECT_BYTES(bytesAt(out.bytes, 128), alias);
            EXPECT_TRUE(out.is(0, alias));
        }
    }

    for (const char *portset : {static_cast<const char *>(nullptr), ""}) {
        Output<128> out;
        EXPECT_STATUS(DVSPortsetNameToAlias(portset, out.bytes), 0xbad0007);
        EXPECT_TRUE(out.is(0, text("") + std::string(127, '\xee')));
    }
}

TEST(Identity, FirstSwitchWhosePortsetMatchesWins) {
    store({"id 1", text("short"), text("p")});
    store({"id 2", text("exact"), text("pset1")});
    ASSERT_STATUS(DVSLoadConfig(), 0);
    // The walk's own order decides, so ask it.
    std::string first;
    DVSState_SwitchForEach(
        [](DVSSwitch *sw, void *context) {
            *static_cast<std::string *>(context) = DVS_SwitchId(sw);
            return 1;
        },
        &first);
    SwitchAliasName alias;
    EXPECT_STATUS(DVSPortsetNameToAlias("pset1", alias), 0);
    EXPECT_STREQ(alias, first == "id 1" ? "short" : "exact");
}

TEST(Identity, PortsAndTheirNumbers) {
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 105, 0, 0, 0, 2), 0);
    EXPECT_EQ(DVPortExist("id", "port0"), 0);
    uint32_t number = 0xeeeeeeee;
    EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw1", "port0", &number), 0xbad0003);
    // By identifier the snapshot is not asked.
    EXPECT_STATUS(VSDVS_DvPortIDToPortIDFromDVSID("id", "port0", &number), 0);
    EXPECT_EQ(number, 0x4000001u);

    ASSERT_STATUS(DVSLoadConfig(), 0);
    EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw1", "port1", &number), 0);
    EXPECT_EQ(number, 0x4000002u);

    constexpr struct {
        const char *id, *port;
        uint8_t exists;
    } kExistence[] = {{"id", "port0", 1},  {"id", "port1", 1}, {"id", "port", 0},     {"id", "port2", 0},
                      {"sw1", "port0", 0}, {"id", "", 0},      {nullptr, "port0", 0}, {"id", nullptr, 0}};
    for (const auto &[id, port, exists] : kExistence)
        EXPECT_EQ(DVPortExist(id, port), exists);

    struct {
        const char *value;
        uint32_t status, number;
    } const kRecords[] = {
        {"0000000000000000 0000000000000000 04030201", 0, 0x01020304},
        {"0000000000000000 0000000000000000 ffffffff 0000", 0, 0xffffffff},
        {"0000000000000000 0000000000000000 040302", 0xbad0001, 0xeeeeeeee},
        {"", 0xbad0001, 0xeeeeeeee},
    };
    for (const auto &row : kRecords) {
        SCOPED_TRACE(row.value);
        ASSERT_STATUS(setPortProp("id", "port0", kStatusKey, hex(row.value), 4), 0);
        number = 0xeeeeeeee;
        EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw1", "port0", &number), row.status);
        EXPECT_EQ(number, row.number);
    }

    number = 0xeeeeeeee;
    EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw9", "port0", &number), 0xbad0003);
    EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw1", "port9", &number), 0xbad0003);
    addFault("PortDataGet", R"("status":"0xbad00d7")");
    EXPECT_STATUS(VSDVS_DvPortIDToPortID("sw1", "port0", &number), 0xbad00d7);
    EXPECT_EQ(number, 0xeeeeeeeeu);
}

}  // namespace
}  // namespace qvs::test
