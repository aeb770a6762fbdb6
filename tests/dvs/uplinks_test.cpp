// SPDX-License-Identifier: Apache-2.0
// The two uplink lists: bytes, order, limits, malformed lists, and undoing what cannot be finished.
#include "support/alloc_fault.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr char kNamesKey[] = "com.quillon.common.uplinkPorts";
constexpr char kPortsKey[] = "com.quillon.common.host.uplinkPorts";
constexpr char kAliasKey[] = "com.quillon.common.port.alias";

using Names = std::vector<std::string>;

std::string list(const Names &entries, size_t entrySize) {
    std::string bytes = u32(static_cast<uint32_t>(entries.size()));
    for (const std::string &entry : entries)
        bytes += field(entry, entrySize);
    return bytes;
}
std::string names(const Names &entries) {
    return list(entries, 81);
}
std::string ports(const Names &entries) {
    return list(entries, 48);
}

// Lines of the trace: setting lists of two uplinks, clearing lists, adding and removing a port.
const std::string kDone = " -> 0x0\n";
const std::string kSetNames =
    R"(state GlobalPropSet switch="id" key="com.quillon.common.uplinkPorts" length=166 type=16)";
const std::string kSetPorts =
    R"(state HostPropSet switch="id" key="com.quillon.common.host.uplinkPorts" length=100 type=16)";
const std::string kClearNames = R"(state GlobalPropClear switch="id" key="com.quillon.common.uplinkPorts")";
const std::string kClearPorts =
    R"(state HostPropClear switch="id" key="com.quillon.common.host.uplinkPorts")";
std::string add(const std::string &port) {
    return R"(state PortAdd switch="id" port=")" + port + "\" length=*";
}
std::string remove(const std::string &port) {
    return R"(state PortRemove switch="id" port=")" + port + '"';
}

class Uplinks : public testing::Test {
  protected:
    void SetUp() override { createSwitch(16, 0, 1); }

    static void setUplinks(const Names &entries) {
        ASSERT_STATUS(VSDVS_SetSwitchUplinkPorts("sw1", names(entries).data(), ports(entries).data()), 0);
        clearTrace();
    }

    static void store(const std::optional<std::string> &nameList,
                      const std::optional<std::string> &portList) {
        ASSERT_STATUS(nameList ? setGlobalProp("id", kNamesKey, *nameList) : 0, 0);
        ASSERT_STATUS(portList ? setHostProp("id", kPortsKey, *portList) : 0, 0);
        clearTrace();
    }

    // What the getter answers: its status and the two lists ("-" for null, "?" for untouched).
    static void expectGet(uint32_t status, const std::string &nameList, const std::string &portList) {
        char untouched;
        void *gotNames = &untouched, *gotPorts = &untouched;
        EXPECT_STATUS(VSDVS_GetSwitchUplinkPorts("sw1", &gotNames, &gotPorts), status);
        const auto shown = [&](void *value, size_t size) {
            if (value == &untouched) return std::string("?");
            return value == nullptr ? std::string("-") : bytesAt(value, size);
        };
        EXPECT_BYTES(shown(gotNames, nameList.size()), nameList);
        EXPECT_BYTES(shown(gotPorts, portList.size()), portList);
        if (gotNames != &untouched) VSDVS_FreeMemory(gotNames);
        if (gotPorts != &untouched) VSDVS_FreeMemory(gotPorts);
    }

    static void expectStored(const std::optional<std::string> &nameList,
                             const std::optional<std::string> &portList) {
        EXPECT_BYTES(globalProp("id", kNamesKey).value_or("-"), nameList.value_or("-"));
        EXPECT_BYTES(hostProp("id", kPortsKey).value_or("-"), portList.value_or("-"));
    }
};

TEST_F(Uplinks, SettingStoresBothListsAndCreatesThePorts) {
    const std::string name80(80, 'n'), port47(47, 'p');
    const std::string nameList = names({"left", name80}), portList = ports({"left", port47});
    ASSERT_STATUS(VSDVS_SetSwitchUplinkPorts("sw1", nameList.data(), portList.data()), 0);
    EXPECT_EQ(maskLengths(takeTrace(), "PortAdd"),
              add("left") + kDone + add(port47) + kDone + kSetNames + kDone + kSetPorts + kDone);
    expectStored(nameList, portList);
    EXPECT_EQ(portProp("id", "left", kAliasKey), text("left"));
    EXPECT_EQ(portProp("id", port47.c_str(), kAliasKey), text(port47));
    EXPECT_EQ(portProp("id", "left", "com.quillon.common.port.connectid"), u32(1));
    EXPECT_BYTES(*portProp("id", "left", "com.quillon.vswitch.port.vlan"),
                 hex("0100 0000 0000 0100 0100fe0f"));
}

TEST_F(Uplinks, SettingANumberMakesTheNames) {
    ASSERT_STATUS(SetNumSwitchUplinkPortsByUUID("id", 3), 0);
    expectStored(names({"uplink0", "uplink1", "uplink2"}), ports({"uplink0", "uplink1", "uplink2"}));
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw2", "id2", nullptr, 105, 0, 0, 0, 0), 0);
    ASSERT_STATUS(SetNumSwitchUplinkPortsByUUID("id2", 0), 0);
    EXPECT_EQ(globalProp("id2", kNamesKey), zeros(4));
    EXPECT_EQ(hostProp("id2", kPortsKey), zeros(4));
    EXPECT_STATUS(SetNumSwitchUplinkPortsByUUID("id9", 1), 0xbad0003);
    // Lists whose 32-bit size would wrap.
    clearTrace();
    for (const uint32_t count : {0x03291620u, 0x05555556u, 0xffffffffu}) {
        EXPECT_STATUS(SetNumSwitchUplinkPortsByUUID("id2", count), 0xbad0014);
    }
    EXPECT_EQ(takeTrace(), "");
}

TEST_F(Uplinks, GettingPutsTheNamesInPortOrder) {
    setUplinks({"a", "b", "c"});
    expectGet(0, names({"a", "b", "c"}), ports({"a", "b", "c"}));
    EXPECT_EQ(takeTrace().find("state StateGet"), std::string::npos);

    // The ports were given other names behind the lists' back: a carries c, b carries a, c carries b.
    for (const auto &[port, alias] : {std::pair{"a", "c"}, {"b", "a"}, {"c", "b"}}) {
        ASSERT_STATUS(VSDVS_SetPortProp("sw1", port, kAliasKey, alias, 2, nullptr, 1), 0);
    }
    expectGet(0, names({"c", "a", "b"}), ports({"a", "b", "c"}));
    expectStored(names({"a", "b", "c"}), ports({"a", "b", "c"}));

    // Length and bytes must agree: not a prefix, and not without the NUL.
    for (const std::string &alias : {text("cc"), text("c") + "c", std::string("c"), text("")}) {
        ASSERT_STATUS(VSDVS_SetPortProp("sw1", "a", kAliasKey, alias.data(),
                                        static_cast<uint32_t>(alias.size()), nullptr, 1),
                      0);
        expectGet(0xbad0001, "-", "-");
    }
    ASSERT_STATUS(VSDVS_ClearPortProp("sw1", "a", kAliasKey, nullptr, 1), 0);
    expectGet(0xbad0003, "-", "-");
}

TEST_F(Uplinks, MalformedListsAreAFailure) {
    const std::string goodNames = names({"a", "b"}), goodPorts = ports({"a", "b"});
    struct {
        const char *name;
        std::optional<std::string> nameList, portList;
        uint32_t status;
    } const rows[] = {
        {"no lists", std::nullopt, std::nullopt, 0xbad0003},
        {"no ports", goodNames, std::nullopt, 0xbad0003},
        {"no names", std::nullopt, goodPorts, 0xbad0003},
        {"empty names", "", goodPorts, 0xbad0001},
        {"three bytes of names", zeros(3), goodPorts, 0xbad0001},
        {"names one byte short", goodNames.substr(0, 165), goodPorts, 0xbad0001},
        {"names one byte long", goodNames + '\0', goodPorts, 0xbad0001},
        {"three bytes of ports", goodNames, zeros(3), 0xbad0001},
        {"ports one byte short", goodNames, goodPorts.substr(0, 99), 0xbad0001},
        {"ports one byte long", goodNames, goodPorts + '\0', 0xbad0001},
        {"other counts", goodNames, ports({"a"}), 0xbad0001},
        {"count whose size wraps to the stored one", u32(0x781948b1) + zeros(1), goodPorts, 0xbad0001},
        {"largest count", u32(0xffffffff), u32(0xffffffff), 0xbad0001},
    };
    for (const auto &[name, nameList, portList, status] : rows) {
        SCOPED_TRACE(name);
        resetHost();
        SetUp();
        store(nameList, portList);
        expectGet(status, "-", "-");
        const std::string before = hostState();
        if (status == 0xbad0001) {
            EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "new"), 0xbad0001);
        }
        EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "a"), status);
        EXPECT_EQ(hostState(), before);
    }
}

TEST_F(Uplinks, EmptyListsAreLists) {
    store(zeros(4), zeros(4));
    expectGet(0, zeros(4), zeros(4));
    EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "a"), 0xbad0003);  // the port has no alias to read
    EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "a"), 0);
    expectStored(names({"a"}), ports({"a"}));
}

// The kernel is asked for the identifier; the snapshot is not.
TEST_F(Uplinks, GettingResolvesThroughTheKernel) {
    setUplinks({"a"});
    addFault("device ioctl", R"("errno":"EBUSY")");
    expectGet(0xbad0004, "?", "?");
    void *one = this;
    EXPECT_STATUS(VSDVS_GetSwitchUplinkPorts("sw1", &one, nullptr), 0xbad0007);
    EXPECT_EQ(one, nullptr);
    clearTrace();
    expectGet(0, names({"a"}), ports({"a"}));
    EXPECT_EQ(
        takeTrace(),
        "device open \"/dev/vswitch\" -> 0\n"
        "device ioctl \"/dev/vswitch\" 0x1027 DVSAliasToSwitchId in=268 out=64 input=[0:737731] -> 0\n"
        "state GlobalPropGet switch=\"id\" key=\"com.quillon.common.uplinkPorts\" -> 0x0 length=85\n"
        "state HostPropGet switch=\"id\" key=\"com.quillon.common.host.uplinkPorts\" -> 0x0 length=52\n"
        "state PortDataGet switch=\"id\" port=\"a\" key=\"com.quillon.common.port.alias\" -> 0x0 length=2\n");
}

TEST_F(Uplinks, GettingWithoutMemoryIsAnEmptySuccess) {
    SKIP_WITHOUT_ALLOC_FAULT();
    setUplinks({"a", "b"});
    {
        AllocFault fault(1);
        expectGet(0, "-", "-");
        EXPECT_EQ(fault.seen(), 1);
    }
    const std::string before = hostState();
    {
        AllocFault fault(1);
        EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "a"), 0xbad0014);
    }
    EXPECT_EQ(hostState(), before);
}

TEST_F(Uplinks, AddingAppendsToBothLists) {
    ASSERT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "a"), 0);
    expectStored(names({"a"}), ports({"a"}));
    clearTrace();
    ASSERT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "b"), 0);
    const std::string trace = maskLengths(takeTrace(), "PortAdd");
    EXPECT_EQ(trace.substr(trace.find("state PortAdd")),
              add("b") + kDone + kSetNames + kDone + kSetPorts + kDone);
    const std::string name47(47, 'n');
    ASSERT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", name47.c_str()), 0);
    expectStored(names({"a", "b", name47}), ports({"a", "b", name47}));
    expectGet(0, names({"a", "b", name47}), ports({"a", "b", name47}));
    EXPECT_BYTES(*portProp("id", "b", "com.quillon.vswitch.port.vlan"), hex("0100 0000 0000 0100 0100fe0f"));

    const std::string before = hostState();
    for (const std::string &taken : {std::string("a"), std::string("b"), name47}) {
        EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", taken.c_str()), 0xbad0005);
    }
    EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "port0"), 0xbad0005);  // taken by a port that is no uplink
    EXPECT_EQ(hostState(), before);

    // Only a list that is not there is an empty one: not an alias that is gone, not a switch the kernel does
    // not know.
    ASSERT_STATUS(VSDVS_ClearPortProp("sw1", "a", kAliasKey, nullptr, 1), 0);
    EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "x"), 0xbad0003);
    addFault("device ioctl", R"("errno":"ENOENT")");
    EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", "x"), 0xbad0003);
    expectStored(names({"a", "b", name47}), ports({"a", "b", name47}));
}

// The lists would cut a long name; the kernel is given all of it, and takes none longer than a port's.
TEST_F(Uplinks, LongNameIsTheKernelsToJudge) {
    const std::string name(48, 'n'), before = hostState();
    clearTrace();
    EXPECT_STATUS(VSDVS_AddSwitchUplinkPort("sw1", name.c_str()), 0xbad0007);
    const std::string trace = maskLengths(takeTrace(), "PortAdd");
    EXPECT_EQ(trace.substr(trace.find("state PortAdd")), add(name) + " -> 0xbad0007\n");
    EXPECT_EQ(hostState(), before);
}

TEST_F(Uplinks, RemovingMovesTheOthersUp) {
    setUplinks({"a", "b", "c"});
    ASSERT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "b"), 0);
    const std::string trace = takeTrace();
    EXPECT_EQ(trace.substr(trace.find("state PortRemove")),
              remove("b") + kDone + kSetNames + kDone + kSetPorts + kDone);
    expectStored(names({"a", "c"}), ports({"a", "c"}));
    ASSERT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "a"), 0);
    expectStored(names({"c"}), ports({"c"}));

    // A port that is no uplink: a success that changes nothing.
    const std::string before = hostState();
    EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "port0"), 0);
    // One whose alias is an uplink's name, but which is not in the host list.
    ASSERT_STATUS(VSDVS_SetPortProp("sw1", "port0", kAliasKey, "c", 2, nullptr, 1), 0);
    EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "port0"), 0);
    ASSERT_STATUS(VSDVS_SetPortProp("sw1", "port0", kAliasKey, "port0", 6, nullptr, 1), 0);
    EXPECT_EQ(hostState(), before);
    EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "b"), 0xbad0003);  // no such port, so no alias

    clearTrace();
    ASSERT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "c"), 0);
    EXPECT_NE(takeTrace().find(remove("c") + kDone + kClearNames + kDone + kClearPorts + kDone),
              std::string::npos);
    expectStored(std::nullopt, std::nullopt);
    expectGet(0xbad0003, "-", "-");
    EXPECT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "c"), 0xbad0003);
}

// The name is found by the port's alias, the port by its identifier.
TEST_F(Uplinks, RemovingARenamedUplink) {
    setUplinks({"a", "b", "c"});
    for (const auto &[port, alias] : {std::pair{"a", "c"}, {"b", "a"}, {"c", "b"}}) {
        ASSERT_STATUS(VSDVS_SetPortProp("sw1", port, kAliasKey, alias, 2, nullptr, 1), 0);
    }
    ASSERT_STATUS(VSDVS_RemoveSwitchUplinkPort("sw1", "b"), 0);
    expectStored(names({"c", "b"}), ports({"a", "c"}));
}

TEST_F(Uplinks, ClearingLeavesThePortsAndForgivesEverything) {
    setUplinks({"a"});
    ASSERT_STATUS(VSDVS_ClearSwitchUplinkPorts("sw1"), 0);
    EXPECT_EQ(takeTrace(), kClearPorts + kDone + kClearNames + kDone);
    EXPECT_EQ(portProp("id", "a", kAliasKey), text("a"));
    EXPECT_STATUS(VSDVS_ClearSwitchUplinkPorts("sw1"), 0);
    addFault("PropClear", R"("status":"0xbad00d7")", 1, kFromThenOn);
    EXPECT_STATUS(VSDVS_ClearSwitchUplinkPorts("sw1"), 0);
}

}  // namespace
}  // namespace qvs::test
