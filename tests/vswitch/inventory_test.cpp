// Inventory and link requests: what goes to the kernel byte for byte, what comes back, and what a failure
// leaves.
#include <gtest/gtest.h>
#include <qvs/dvs.h>
#include <qvs/vsdvs.h>
#include <qvs/vshyp.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/alloc_fault.h"
#include "support/bytes.h"
#include "support/host.h"
#include "support/intercept.h"

namespace qvs::test {
namespace {

// The trace of one device request.
std::string request(const std::string &line, const std::string &answer = "0") {
    return "device open \"/dev/vswitch\" -> 0\ndevice ioctl \"/dev/vswitch\" " + line + " -> " + answer +
           "\n";
}

// Hexadecimal digits of a character repeated.
std::string repeated(const char *digits, size_t count) {
    std::string all;
    while (count-- > 0)
        all += digits;
    return all;
}

// A switch called sw1 whose portset is ps1: ports uplink0, uplink1, port0 have the numbers 0x4000001 to 3 and
// the uplinks are bound to pnic0 and pnic1. A second one, bare, has nothing.
class Inventory : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", "ps1", 105, 0, 16, 2, 1), 0);
        ASSERT_STATUS(VSDVS_CreateVSwitch("bare", nullptr, nullptr, 105, 0, 16, 0, 0), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
    }

    CallsReset reset_;
};

// A buffer of the caller, full of what the library must clear.
struct Area {
    Area() { std::memset(bytes, 0xee, sizeof bytes); }
    bool cleared(size_t size) const { return bytesAt(bytes, size + 1) == zeros(size) + '\xee'; }
    char bytes[256];
};

TEST_F(Inventory, SingleRequestsByteForByte) {
    const std::string long200(200, 'n'), uplink40(40, 'u'), alias90(90, 'a');
    Area area;
    uint32_t up = 0;
    void *block = nullptr;
    struct {
        std::function<uint32_t()> call;
        std::string line;
        const char *answer = "0";
        uint32_t status = 0;
    } const rows[] = {
        {[&] { return VSHYP_GetUplinkLinkState("ps1", "pnic0", &up); },
         "0x100c GetUplinkLinkState in=268 out=4 input=[0:707331 176:706e696330]"},
        {[&] { return VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", &up); },
         "0x100d GetUplinkLACPLinkState in=268 out=4 input=[0:707331 176:706e696330]"},
        {[&] { return VSHYP_GetVSInfo("ps1", area.bytes); },
         "0x1010 GetSwitchInfo in=268 out=220 input=[0:707331]"},
        {[&] { return VSHYP_PortGetTeamUplinkHint(0x4000003, area.bytes); },
         "0x1022 PortGetTeamUplinkHint in=268 out=32 input=[128:03 131:04]"},
        {[&] { return VSHYP_GetUplinkDVPortID("pnic1", area.bytes); },
         "0x1023 GetUplinkDVPortID in=268 out=48 input=[176:706e696331]"},
        {[&] { return VSHYP_DVSAliasToSwitchId("sw1", area.bytes); },
         "0x1027 DVSAliasToSwitchId in=268 out=64 input=[0:737731]"},
        {[&] { return VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 5); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331 208:01]"},
        {[&] { return VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", INT32_MIN); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331 208:01]"},
        {[&] { return VSHYP_SetUplinkAdminLinkState("ps1", "pnic1", 0); },
         "0x2002 SetUplinkAdminLinkState in=268 out=0 input=[0:707331 176:706e696331]"},
        {[&] { return VSHYP_RefreshDevNUMAInfo("ps1"); },
         "0x2006 RefreshDevNUMAInfo in=268 out=0 input=[0:707331]"},
        // Names are cut, never refused.
        {[&] { return VSHYP_GetVSInfo(long200.c_str(), area.bytes); },
         "0x1010 GetSwitchInfo in=268 out=220 input=[0:" + repeated("6e", 127) + "]", "ENOENT", 0xbad0003},
        {[&] { return VSHYP_GetUplinkLinkState(long200.c_str(), uplink40.c_str(), &up); },
         "0x100c GetUplinkLinkState in=268 out=4 input=[0:" + repeated("6e", 127) +
             " 176:" + repeated("75", 31) + "]",
         "ENOENT", 0xbad0003},
        {[&] { return VSHYP_DVSAliasToSwitchId(alias90.c_str(), area.bytes); },
         "0x1027 DVSAliasToSwitchId in=268 out=64 input=[0:" + repeated("61", 80) + "]", "ENOENT", 0xbad0003},
        {[&] { return VSHYP_GetLAGTable("ps1", &block); },
         "0x100e GetLAGTable in=268 out=35588 input=[0:707331]"},
    };
    for (const auto &[call, line, answer, status] : rows) {
        SCOPED_TRACE(line);
        clearTrace();
        EXPECT_STATUS(call(), status);
        EXPECT_EQ(takeTrace(), request(line, answer));
    }
    EXPECT_BYTES(bytesAt(block, 35588), zeros(35588));
    VSHYP_FreeMemory(block);
}

// Aliases go through the snapshot, ports through their status record; then only that is in the request.
TEST_F(Inventory, RequestsByAlias) {
    void *info = nullptr, *portInfo = nullptr;
    ASSERT_STATUS(VSHYP_GetSwitchInfo("sw1", &info), 0);
    EXPECT_EQ(takeTrace(), request("0x1010 GetSwitchInfo in=268 out=220 input=[0:707331]"));
    char direct[220];
    ASSERT_STATUS(VSHYP_GetVSInfo("ps1", direct), 0);
    EXPECT_BYTES(bytesAt(info, 220), bytesAt(direct, 220));
    EXPECT_BYTES(bytesAt(static_cast<char *>(info) + 4, 4), u32(16));  // the port capacity
    VSHYP_FreeMemory(info);

    clearTrace();
    ASSERT_STATUS(VSHYP_GetPortInfo("sw1", "port0", &portInfo), 0);
    const std::string trace = takeTrace();
    EXPECT_EQ(trace.substr(0, trace.find(" -> ")),
              "state PortDataGet switch=\"id\" port=\"port0\" "
              "key=\"com.quillon.common.port.volatile.status\"");
    EXPECT_EQ(trace.substr(trace.find("device")),
              request("0x1014 GetPortInfo in=268 out=1458 input=[128:03 131:04]"));
    EXPECT_BYTES(bytesAt(portInfo, 4), u32(0x4000003));
    VSHYP_FreeMemory(portInfo);

    // A portset name of more than 127 characters has no NUL in its own buffer.
    const std::string name(180, 'n');
    ASSERT_STATUS(VSDVS_SetHostProp("sw1", "com.quillon.common.host.portset", name.c_str(), 181, nullptr, 1),
                  0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    clearTrace();
    EXPECT_STATUS(VSHYP_GetSwitchInfo("sw1", &info), 0xbad0003);
    EXPECT_EQ(takeTrace(),
              request("0x1010 GetSwitchInfo in=268 out=220 input=[0:" + repeated("6e", 127) + "]", "ENOENT"));
}

TEST_F(Inventory, AnswersIntoTheCallersBuffer) {
    Area switchId, identity, hint;
    ASSERT_STATUS(VSHYP_DVSAliasToSwitchId("sw1", switchId.bytes), 0);
    EXPECT_BYTES(bytesAt(switchId.bytes, 65), field("id", 64) + '\xee');
    ASSERT_STATUS(VSHYP_GetUplinkDVPortID("pnic1", identity.bytes), 0);
    EXPECT_BYTES(bytesAt(identity.bytes, 49), field("uplink1", 48) + '\xee');
    ASSERT_STATUS(VSHYP_PortGetTeamUplinkHint(0x4000003, hint.bytes), 0);
    EXPECT_EQ(std::string(hint.bytes, 4), "pnic");
    EXPECT_EQ(hint.bytes[32], '\xee');

    // The kernel's word is reduced to 0 or 1.
    constexpr struct {
        const char *word;
        uint32_t up;
    } kWords[] = {{"00000000", 0}, {"01000000", 1}, {"02000000", 1}, {"00000080", 1}};
    for (const auto get : {VSHYP_GetUplinkLinkState, VSHYP_GetUplinkLACPLinkState}) {
        for (const auto &[word, expected] : kWords) {
            addFault("device ioctl", R"("output":[{"offset":0,"hex":")" + std::string(word) + R"("}])");
            uint32_t up = 0xeeeeeeee;
            EXPECT_STATUS(get("ps1", "pnic0", &up), 0);
            EXPECT_EQ(up, expected) << word;
        }
    }
}

TEST_F(Inventory, FailuresOfSingleRequests) {
    struct {
        const char *name;
        size_t clears;  // bytes of the caller's buffer
        std::function<uint32_t(Area &)> call;
    } const rows[] = {
        {"GetVSInfo", 220, [](Area &a) { return VSHYP_GetVSInfo("ps1", a.bytes); }},
        {"PortGetTeamUplinkHint", 32,
         [](Area &a) { return VSHYP_PortGetTeamUplinkHint(0x4000003, a.bytes); }},
        {"GetUplinkDVPortID", 48, [](Area &a) { return VSHYP_GetUplinkDVPortID("pnic0", a.bytes); }},
        {"DVSAliasToSwitchId", 64, [](Area &a) { return VSHYP_DVSAliasToSwitchId("sw1", a.bytes); }},
        {"SetUplinkAdminLinkState", 0,
         [](Area &) { return VSHYP_SetUplinkAdminLinkState("ps1", "pnic0", 0); }},
        {"RefreshDevNUMAInfo", 0, [](Area &) { return VSHYP_RefreshDevNUMAInfo("ps1"); }},
    };
    for (const auto &[name, clears, call] : rows) {
        SCOPED_TRACE(name);
        for (const char *step : {"device open", "device ioctl"}) {
            Area area;
            addFault(step, R"("errno":"EBUSY")");
            EXPECT_STATUS(call(area), 0xbad0004);
            EXPECT_TRUE(area.cleared(clears));
        }
    }

    char untouched;
    struct {
        const char *name;
        std::function<uint32_t(void **)> call;
    } const pointers[] = {
        {"GetLAGTable", [](void **p) { return VSHYP_GetLAGTable("ps1", p); }},
        {"GetSwitchInfo", [](void **p) { return VSHYP_GetSwitchInfo("sw1", p); }},
        {"GetPortInfo", [](void **p) { return VSHYP_GetPortInfo("sw1", "port0", p); }},
    };
    for (const auto &[name, call] : pointers) {
        SCOPED_TRACE(name);
        void *result = &untouched;
        addFault("device ioctl", R"("errno":"EBUSY")");
        EXPECT_STATUS(call(&result), 0xbad0004);
        EXPECT_EQ(result, &untouched);
#ifndef QVS_TEST_SANITIZED
        AllocFault fault(1);
        EXPECT_STATUS(call(&result), 0xbad0014);
        EXPECT_EQ(result, std::strcmp(name, "GetLAGTable") == 0 ? &untouched : nullptr);
#endif
    }

    uint32_t up = 0xeeeeeeee;
    addFault("device ioctl", R"("errno":"EBUSY")", 1, 2);
    EXPECT_STATUS(VSHYP_GetUplinkLinkState("ps1", "pnic0", &up), 0xbad0004);
    EXPECT_STATUS(VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", &up), 0xbad0004);
    EXPECT_EQ(up, 0xeeeeeeeeu);
}

TEST_F(Inventory, ArgumentsThatReachNoDevice) {
    Area area;
    uint32_t up = 0;
    char untouched;
    void *list = &untouched;
    struct {
        const char *name;
        uint32_t actual, expected;
    } const rows[] = {
        {"GetUplinks name", VSHYP_GetUplinks(nullptr, &list), 0xbad0007},
        {"GetUplinks result", VSHYP_GetUplinks("ps1", nullptr), 0xbad0007},
        {"GetLAGTable name", VSHYP_GetLAGTable(nullptr, &list), 0xbad0007},
        {"GetLAGTable result", VSHYP_GetLAGTable("ps1", nullptr), 0xbad0007},
        {"GetSwitchInfo name", VSHYP_GetSwitchInfo(nullptr, &list), 0xbad0007},
        {"GetSwitchInfo result", VSHYP_GetSwitchInfo("sw9", nullptr), 0xbad0007},
        {"GetSwitchInfo alias", VSHYP_GetSwitchInfo("ps1", &list), 0xbad0003},
        {"GetSwitchPortInfo name", VSHYP_GetSwitchPortInfo(nullptr, &list), 0xbad0007},
        {"GetSwitchPortInfo result", VSHYP_GetSwitchPortInfo("sw9", nullptr), 0xbad0007},
        {"GetSwitchPortInfo alias", VSHYP_GetSwitchPortInfo("ps1", &list), 0xbad0003},
        {"GetPortInfo alias", VSHYP_GetPortInfo("sw9", "port0", &list), 0xbad0003},
        {"GetPortInfo port", VSHYP_GetPortInfo("sw1", "port9", &list), 0xbad0003},
        {"DVSAliasToSwitchId name", VSHYP_DVSAliasToSwitchId(nullptr, area.bytes), 0xbad0007},
        {"DVSAliasToSwitchId result", VSHYP_DVSAliasToSwitchId("sw1", nullptr), 0xbad0007},
        {"GetUplinkLinkState name", VSHYP_GetUplinkLinkState(nullptr, "pnic0", &up), 0xbad0007},
        {"GetUplinkLinkState result", VSHYP_GetUplinkLinkState("ps1", "pnic0", nullptr), 0xbad0007},
        {"GetUplinkLACPLinkState name", VSHYP_GetUplinkLACPLinkState(nullptr, "pnic0", &up), 0xbad0007},
        {"GetUplinkLACPLinkState result", VSHYP_GetUplinkLACPLinkState("ps1", "pnic0", nullptr), 0xbad0007},
        {"SetUplinkAdminLinkState name", VSHYP_SetUplinkAdminLinkState(nullptr, "pnic0", 1), 0xbad0007},
        {"SetUplinkAdminLinkState uplink", VSHYP_SetUplinkAdminLinkState("ps1", nullptr, 1), 0xbad0007},
        {"GetVSInfo result", VSHYP_GetVSInfo("ps1", nullptr), 0xbad0007},
        {"PortGetTeamUplinkHint result", VSHYP_PortGetTeamUplinkHint(1, nullptr), 0xbad0007},
        {"GetUplinkDVPortID result", VSHYP_GetUplinkDVPortID("pnic0", nullptr), 0xbad0007},
        {"RefreshDevNUMAInfo name", VSHYP_RefreshDevNUMAInfo(nullptr), 0xbad0007},
        // Not named, but better a status than a crash.
        {"GetUplinkLinkState uplink", VSHYP_GetUplinkLinkState("ps1", nullptr, &up), 0xbad0007},
        {"GetVSInfo name", VSHYP_GetVSInfo(nullptr, area.bytes), 0xbad0007},
        {"GetUplinkDVPortID name", VSHYP_GetUplinkDVPortID(nullptr, area.bytes), 0xbad0007},
        {"GetPortInfo null alias", VSHYP_GetPortInfo(nullptr, "port0", &list), 0xbad0007},
        {"GetPortInfo null port", VSHYP_GetPortInfo("sw1", nullptr, &list), 0xbad0007},
        {"GetSwitches result", VSHYP_GetSwitches(0, nullptr), 0xbad0007},
    };
    for (const auto &[name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_STATUS(actual, expected);
    }
    EXPECT_EQ(list, &untouched);
    EXPECT_EQ(takeTrace().find("device"), std::string::npos);
    VSHYP_FreeMemory(nullptr);
}

// The counted lists, each with two entries.
struct ListRow {
    const char *name;
    std::function<uint32_t(void **)> get;
    const char *line;  // of the request, up to the length of the output area
    const char *input;
    uint32_t entrySize;
    const char *wrapping;  // the first count whose size does not fit 32 bits
    bool switches;         // VSHYP_GetSwitches has its own ways
};

const ListRow kLists[] = {
    {"GetUplinks", [](void **p) { return VSHYP_GetUplinks("ps1", p); }, "0x100b GetUplinks in=268",
     "[0:707331]", 36, "c7711c07", false},
    {"GetSwitchPortInfo", [](void **p) { return VSHYP_GetSwitchPortInfo("two", p); },
     "0x1013 GetSwitchPortInfo in=268", "[0:74776f]", 1458, "02f32c00", false},
    {"GetSwitches 0", [](void **p) { return VSHYP_GetSwitches(0, p); }, "0x1026 GetSwitches in=4", "[]", 81,
     "20162903", true},
    {"GetSwitches 1", [](void **p) { return VSHYP_GetSwitches(1, p); }, "0x1026 GetSwitches in=4", "[0:01]",
     128, "00000002", true},
    {"GetSwitches 2", [](void **p) { return VSHYP_GetSwitches(2, p); }, "0x1026 GetSwitches in=4", "[0:02]",
     81, "20162903", true},
};

class InventoryList : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", "ps1", 105, 0, 16, 2, 1), 0);
        ASSERT_STATUS(VSDVS_CreateVSwitch("two", nullptr, nullptr, 105, 0, 16, 0, 2), 0);
        ASSERT_STATUS(DVSLoadConfig(), 0);
        clearTrace();
    }

    static std::string line(const ListRow &row, uint32_t outLength, const char *answer = "0") {
        return request(std::string(row.line) + " out=" + std::to_string(outLength) + " input=" + row.input,
                       answer);
    }
    static uint32_t sizeOf(const ListRow &row, uint32_t count) { return count * row.entrySize + 8; }
    static void patch(const char *bytes, int nth) {
        addFault("device ioctl", R"("output":[{"offset":0,"hex":")" + std::string(bytes) + R"("}])", nth);
    }

    char untouched_;
    void *list_ = &untouched_;
    CallsReset reset_;
};

TEST_F(InventoryList, CountsThenFetches) {
    for (const auto &row : kLists) {
        SCOPED_TRACE(row.name);
        clearTrace();
        ASSERT_STATUS(row.get(&list_), 0);
        EXPECT_EQ(takeTrace(), line(row, 8) + line(row, sizeOf(row, 2)));
        EXPECT_BYTES(bytesAt(list_, 4), u32(2));
        VSHYP_FreeMemory(list_);
    }
    ASSERT_STATUS(VSHYP_GetUplinks("ps1", &list_), 0);
    EXPECT_BYTES(bytesAt(list_, 80),
                 u32(2) + u32(0) + field("pnic0", 32) + u32(0x4000001) + field("pnic1", 32) + u32(0x4000002));
    VSHYP_FreeMemory(list_);
    ASSERT_STATUS(VSHYP_GetSwitches(1, &list_), 0);
    EXPECT_BYTES(bytesAt(static_cast<char *>(list_) + 8, 256), field("ps1", 128) + field("two", 128));
    VSHYP_FreeMemory(list_);
    ASSERT_STATUS(VSHYP_GetSwitches(0, &list_), 0);
    EXPECT_BYTES(bytesAt(static_cast<char *>(list_) + 8, 162), field("sw1", 81) + field("two", 81));
    VSHYP_FreeMemory(list_);
}

// What the kernel writes is what the caller gets, whether the list grew, shrank, or the count is a lie.
TEST_F(InventoryList, FetchIsPassedOnAsItIs) {
    for (const auto &row : kLists) {
        SCOPED_TRACE(row.name);
        clearTrace();
        patch("05000000", 1);
        ASSERT_STATUS(row.get(&list_), 0);
        EXPECT_EQ(takeTrace(), line(row, 8) + line(row, sizeOf(row, 5)));
        EXPECT_BYTES(bytesAt(list_, 4), u32(2));
        EXPECT_BYTES(bytesAt(static_cast<char *>(list_) + sizeOf(row, 2), 3 * row.entrySize),
                     zeros(3 * row.entrySize));
        VSHYP_FreeMemory(list_);

        patch("01000000", 1);
        ASSERT_STATUS(row.get(&list_), 0);
        EXPECT_EQ(takeTrace(), line(row, 8) + line(row, sizeOf(row, 1)));
        EXPECT_BYTES(bytesAt(list_, 4), u32(1));
        VSHYP_FreeMemory(list_);

        patch("ffffffff78563412a5", 2);
        ASSERT_STATUS(row.get(&list_), 0);
        EXPECT_BYTES(bytesAt(list_, 9), hex("ffffffff 78563412 a5"));
        VSHYP_FreeMemory(list_);
    }
}

TEST_F(InventoryList, NoEntriesIsAHeaderAndNoSecondRequest) {
    for (const auto &row : kLists) {
        SCOPED_TRACE(row.name);
        clearTrace();
        patch("0000000078563412", 1);
        ASSERT_STATUS(row.get(&list_), 0);
        EXPECT_EQ(takeTrace(), line(row, 8));
        // The header is the kernel's; only the list of switches makes its own, with the selector.
        const std::string selector = std::string(row.input) == "[0:01]"   ? u32(1)
                                     : std::string(row.input) == "[0:02]" ? u32(2)
                                                                          : u32(0);
        EXPECT_BYTES(bytesAt(list_, 8), row.switches ? u32(0) + selector : hex("00000000 78563412"));
        VSHYP_FreeMemory(list_);
    }
    ASSERT_STATUS(VSHYP_GetUplinks("two", &list_), 0);
    EXPECT_BYTES(bytesAt(list_, 8), zeros(8));
    VSHYP_FreeMemory(list_);
}

TEST_F(InventoryList, FailingRequests) {
    for (const auto &row : kLists) {
        SCOPED_TRACE(row.name);
        for (const char *step : {"device open", "device ioctl"}) {
            clearTrace();
            list_ = &untouched_;
            addFault(step, R"("errno":"EBUSY")");
            EXPECT_STATUS(row.get(&list_), row.switches ? 0xbad0001 : 0xbad0004);
            EXPECT_EQ(list_, row.switches ? nullptr : &untouched_);

            list_ = &untouched_;
            addFault(step, R"("errno":"EBUSY")", 2);
            EXPECT_STATUS(row.get(&list_), 0xbad0004);
            EXPECT_EQ(list_, nullptr);
        }
    }
    // The switches' first status is ignored as long as there is a count.
    calls().ioctlResults = {-1};
    ASSERT_STATUS(VSHYP_GetSwitches(1, &list_), 0);
    EXPECT_BYTES(bytesAt(list_, 4), u32(2));
    VSHYP_FreeMemory(list_);
    // And success without a count is no answer.
    patch("ffffffff", 1);
    EXPECT_STATUS(VSHYP_GetSwitches(1, &list_), 0xbad0001);
    EXPECT_EQ(list_, nullptr);
}

TEST_F(InventoryList, CountsThatNoMemoryHolds) {
    for (const auto &row : kLists) {
        SCOPED_TRACE(row.name);
        std::vector<const char *> counts = {row.wrapping, "feffffff", "00000080"};
        if (!row.switches) counts.push_back("ffffffff");
        for (const char *count : counts) {
            list_ = &untouched_;
            clearTrace();
            patch(count, 1);
            EXPECT_STATUS(row.get(&list_), 0xbad0014) << count;
            EXPECT_EQ(list_, nullptr);
            EXPECT_EQ(takeTrace(), line(row, 8));
        }
#ifndef QVS_TEST_SANITIZED
        list_ = &untouched_;
        AllocFault fault(1);
        EXPECT_STATUS(row.get(&list_), 0xbad0014);
        EXPECT_EQ(list_, nullptr);
        EXPECT_EQ(fault.seen(), 1);
        EXPECT_EQ(takeTrace(), line(row, 8));
#endif
    }
}

}  // namespace
}  // namespace qvs::test
