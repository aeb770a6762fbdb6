// SPDX-License-Identifier: Apache-2.0
// Properties by key: naming the switch, sizes, classes, and what the state library answers.
#include <cstddef>

#include "support/test.h"

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

constexpr char kPort[] = "port0";
template <auto F, auto... port>
uint32_t get(const Place &place, VSDVS_PropBuffer *buffer) {
    return F(place.alias, port..., kKey, buffer, place.switchId, place.useAlias);
}
template <auto F, auto... port>
uint32_t set(const Place &place, const void *value, uint32_t length) {
    return F(place.alias, port..., kKey, value, length, place.switchId, place.useAlias);
}
template <auto F, auto... port>
uint32_t clear(const Place &place) {
    return F(place.alias, port..., kKey, place.switchId, place.useAlias);
}

struct ScopeRow {
    const char *name;
    uint32_t (*get)(const Place &, VSDVS_PropBuffer *);
    uint32_t (*set)(const Place &, const void *, uint32_t);
    uint32_t (*clear)(const Place &);
    std::optional<std::string> (*stored)();
    std::string request, where;
    const char *propType = "16";

    std::string getLine() const { return "state " + request + "Get " + where; }
    std::string setLine() const { return "state " + request + "Set " + where + " length=3 type=" + propType; }
    std::string clearLine() const { return "state " + request + "Clear " + where; }
};
constexpr char kSwitchKey[] = R"(switch="id" key="com.example.key")";
constexpr char kPortKey[] = R"(switch="id" port="port0" key="com.example.key")";
const ScopeRow kScopes[] = {
    {"port", get<VSDVS_GetPortProp, kPort>, set<VSDVS_SetPortProp, kPort>, clear<VSDVS_ClearPortProp, kPort>,
     [] { return portProp("id", kPort, kKey); }, "PortData", kPortKey},
    {"host", get<VSDVS_GetHostProp>, set<VSDVS_SetHostProp>, clear<VSDVS_ClearHostProp>,
     [] { return hostProp("id", kKey); }, "HostProp", kSwitchKey},
    {"runtime host", get<VSDVS_GetHostProp>, set<VSDVS_SetRuntimeHostProp>, clear<VSDVS_ClearHostProp>,
     [] { return hostProp("id", kKey); }, "HostProp", kSwitchKey, "32"},
    {"global", get<VSDVS_GetGlobProp>, set<VSDVS_SetGlobProp>, clear<VSDVS_ClearGlobProp>,
     [] { return globalProp("id", kKey); }, "GlobalProp", kSwitchKey},
};

class Property : public testing::Test {
  protected:
    void SetUp() override {
        createSwitch(0, 0, 1);
        createHub();
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
            EXPECT_EQ(takeTrace(), scope.setLine() + " -> 0x0\n");
            VSDVS_PropBuffer buffer = {0, nullptr};
            EXPECT_STATUS(scope.get(place, &buffer), 0);
            EXPECT_EQ(takeTrace(), scope.getLine() + " -> 0x0 length=3\n");
            EXPECT_STATUS(scope.clear(place), 0);
            EXPECT_EQ(takeTrace(), scope.clearLine() + " -> 0x0\n");
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

}  // namespace
}  // namespace qvs::test
