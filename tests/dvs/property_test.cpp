// Properties by key: naming the switch, sizes, classes, and what the state library answers.
#include <gtest/gtest.h>
#include <qvs/dvs.h>
#include <qvs/mesh_public.h>
#include <qvs/vsdvs.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>

#include "support/bytes.h"
#include "support/host.h"

namespace qvs::test {
namespace {

constexpr char kKey[] = "com.example.key";

// Where a property is asked for: by alias, by identifier, or by both.
struct Place {
    const char *alias;
    const char *switchId;
    uint8_t useAlias;
};
constexpr Place kByAlias = {"sw1", nullptr, 1};
constexpr Place kById = {nullptr, "id", 0};

struct ScopeRow {
    const char *name;
    std::function<uint32_t(const Place &, VSDVS_PropBuffer *)> get;
    std::function<uint32_t(const Place &, const void *, uint32_t)> set;
    std::function<uint32_t(const Place &)> clear;
    std::function<std::optional<std::string>()> stored;
    const char *getLine, *setLine, *clearLine;
};

const ScopeRow kScopes[] = {
    {"port",
     [](const Place &p, auto *b) {
         return VSDVS_GetPortProp(p.alias, "port0", kKey, b, p.switchId, p.useAlias);
     },
     [](const Place &p, auto *v, auto n) {
         return VSDVS_SetPortProp(p.alias, "port0", kKey, v, n, p.switchId, p.useAlias);
     },
     [](const Place &p) { return VSDVS_ClearPortProp(p.alias, "port0", kKey, p.switchId, p.useAlias); },
     [] { return portProp("id", "port0", kKey); },
     R"(state PortDataGet switch="id" port="port0" key="com.example.key")",
     R"(state PortDataSet switch="id" port="port0" key="com.example.key" length=3 type=16)",
     R"(state PortDataClear switch="id" port="port0" key="com.example.key")"},
    {"host",
     [](const Place &p, auto *b) { return VSDVS_GetHostProp(p.alias, kKey, b, p.switchId, p.useAlias); },
     [](const Place &p, auto *v, auto n) {
         return VSDVS_SetHostProp(p.alias, kKey, v, n, p.switchId, p.useAlias);
     },
     [](const Place &p) { return VSDVS_ClearHostProp(p.alias, kKey, p.switchId, p.useAlias); },
     [] { return hostProp("id", kKey); }, R"(state HostPropGet switch="id" key="com.example.key")",
     R"(state HostPropSet switch="id" key="com.example.key" length=3 type=16)",
     R"(state HostPropClear switch="id" key="com.example.key")"},
    {"runtime host",
     [](const Place &p, auto *b) { return VSDVS_GetHostProp(p.alias, kKey, b, p.switchId, p.useAlias); },
     [](const Place &p, auto *v, auto n) {
         return VSDVS_SetRuntimeHostProp(p.alias, kKey, v, n, p.switchId, p.useAlias);
     },
     [](const Place &p) { return VSDVS_ClearHostProp(p.alias, kKey, p.switchId, p.useAlias); },
     [] { return hostProp("id", kKey); }, R"(state HostPropGet switch="id" key="com.example.key")",
     R"(state HostPropSet switch="id" key="com.example.key" length=3 type=32)",
     R"(state HostPropClear switch="id" key="com.example.key")"},
    {"global",
     [](const Place &p, auto *b) { return VSDVS_GetGlobProp(p.alias, kKey, b, p.switchId, p.useAlias); },
     [](const Place &p, auto *v, auto n) {
         return VSDVS_SetGlobProp(p.alias, kKey, v, n, p.switchId, p.useAlias);
     },
     [](const Place &p) { return VSDVS_ClearGlobProp(p.alias, kKey, p.switchId, p.useAlias); },
     [] { return globalProp("id", kKey); }, R"(state GlobalPropGet switch="id" key="com.example.key")",
     R"(state GlobalPropSet switch="id" key="com.example.key" length=3 type=16)",
     R"(state GlobalPropClear switch="id" key="com.example.key")"},
};

class Property : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 105, 0, 0, 0, 1), 0);
        ASSERT_STATUS(DVSHYP_SwitchAdd("hub", "etherswitch", 8, 105), 0);
        ASSERT_STATUS(DVSHYP_GlobalPropSet("hub", "com.quillon.common.alias", "hub", 4, 16), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
    }
};

// Without padding: the address follows the length at offset 4.
static_assert(sizeof(VSDVS_PropBuffer) == 12);
static_assert(offsetof(VSDVS_PropBuffer, length) == 0);
static_assert(offsetof(VSDVS_PropBuffer, data) == 4);

TEST_F(Property, OneRequestEachWithTheClassOfTheScope) {
    for (const auto &scope : kScopes) {
        for (const Place &place : {kByAlias, kById, Place{"sw1", "sw9", 0x80}, Place{"sw9", "id", 0}}) {
            SCOPED_TRACE(scope.name);
            EXPECT_STATUS(scope.set(place, "a\0b", 3), 0);
            EXPECT_EQ(takeTrace(), std::string(scope.setLine) + " -> 0x0\n");
            VSDVS_PropBuffer buffer = {0, nullptr};
            EXPECT_STATUS(scope.get(place, &buffer), 0);
            EXPECT_EQ(takeTrace(), std::string(scope.getLine) + " -> 0x0 length=3\n");
            EXPECT_STATUS(scope.clear(place), 0);
            EXPECT_EQ(takeTrace(), std::string(scope.clearLine) + " -> 0x0\n");
            // Nothing is forgiven here.
            EXPECT_STATUS(scope.clear(place), 0xbad0003);
            EXPECT_STATUS(scope.get(place, &buffer), 0xbad0003);
            clearTrace();
        }
    }
}

TEST_F(Property, CapacityDecidesWhatAGetterDoes) {
    struct {
        int32_t capacity;
        uint32_t status;
        int32_t lengthAfter;
        const char *data;
    } const rows[] = {
        {0, 0, 3, "eeeeeeeeeeee"},            // asks for the size
        {3, 0, 3, "610062eeeeee"},            // exact
        {5, 0, 5, "6100620000ee"},            // zeros behind the value, nothing behind the capacity
        {2, 0xbad0014, 2, "eeeeeeeeeeee"},    // one byte too small
        {-1, 0xbad0014, -1, "eeeeeeeeeeee"},  // too small as well: the comparison is signed
        {INT32_MIN, 0xbad0014, INT32_MIN, "eeeeeeeeeeee"},
    };
    for (const auto &scope : kScopes) {
        ASSERT_STATUS(scope.set(kById, "a\0b", 3), 0);
        for (const auto &row : rows) {
            SCOPED_TRACE(std::string(scope.name) + " " + std::to_string(row.capacity));
            char data[6];
            std::memset(data, 0xee, sizeof data);
            VSDVS_PropBuffer buffer = {row.capacity, row.capacity == 0 ? nullptr : data};
            EXPECT_STATUS(scope.get(kById, &buffer), row.status);
            EXPECT_EQ(buffer.length, row.lengthAfter);
            EXPECT_BYTES(bytesAt(data, sizeof data), hex(row.data));
        }
    }
}

TEST_F(Property, EmptyValueIsStored) {
    for (const auto &scope : kScopes) {
        SCOPED_TRACE(scope.name);
        ASSERT_STATUS(scope.set(kById, "old", 3), 0);
        EXPECT_STATUS(scope.set(kById, nullptr, 0), 0);
        EXPECT_EQ(scope.stored(), "");
        char data[2] = {'x', 'x'};
        VSDVS_PropBuffer buffer = {1, data};
        EXPECT_STATUS(scope.get(kById, &buffer), 0);
        EXPECT_BYTES(bytesAt(data, 2), hex("00 78"));
        buffer.length = 0;
        EXPECT_STATUS(scope.get(kById, &buffer), 0);
        EXPECT_EQ(buffer.length, 0);
    }
}

TEST_F(Property, SwitchThatCannotBeNamedIsRefusedWithoutARequest) {
    const std::string id63(63, 'x'), id64(64, 'x');
    struct {
        const char *name;
        Place place;
        uint32_t status;
    } const rows[] = {
        {"null alias", {nullptr, "id", 1}, 0xbad0007},
        {"null identifier", {"sw1", nullptr, 0}, 0xbad0007},
        {"64 characters", {"sw1", id64.c_str(), 0}, 0xbad0007},
        {"unknown alias", {"sw9", "id", 1}, 0xbad0003},
        {"other class", {"hub", "id", 1}, 0xbad0007},
    };
    char data[4];
    for (const auto &scope : kScopes) {
        for (const auto &[name, place, status] : rows) {
            SCOPED_TRACE(std::string(scope.name) + ", " + name);
            VSDVS_PropBuffer buffer = {4, data};
            EXPECT_STATUS(scope.get(place, &buffer), status);
            EXPECT_STATUS(scope.set(place, "abc", 3), status);
            EXPECT_STATUS(scope.clear(place), status);
            EXPECT_EQ(takeTrace(), "");
        }
        // 63 characters are passed on, whether any switch has them or not.
        EXPECT_STATUS(scope.set({nullptr, id63.c_str(), 0}, "abc", 3), 0xbad0003);
        EXPECT_NE(takeTrace().find(id63), std::string::npos);
    }
}

TEST_F(Property, StatusOfTheStateLibraryIsReturnedAsItIs) {
    for (const auto &scope : kScopes) {
        SCOPED_TRACE(scope.name);
        char data[4] = {'x', 'x', 'x', 'x'};
        VSDVS_PropBuffer buffer = {4, data};
        ASSERT_STATUS(scope.set(kById, "abc", 3), 0);
        for (const char *line : {scope.getLine, scope.setLine, scope.clearLine}) {
            addFault(line, R"("status":"0xbad00d7")");
        }
        EXPECT_STATUS(scope.get(kById, &buffer), 0xbad00d7);
        EXPECT_BYTES(bytesAt(data, 4), "xxxx");
        EXPECT_STATUS(scope.set(kById, "new", 3), 0xbad00d7);
        EXPECT_STATUS(scope.clear(kById), 0xbad00d7);
        EXPECT_EQ(scope.stored(), "abc");
    }
}

}  // namespace
}  // namespace qvs::test
