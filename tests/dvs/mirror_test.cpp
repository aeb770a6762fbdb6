// SPDX-License-Identifier: Apache-2.0
// The algebra of mirror session lists: appending and removing, against an obvious way of computing the
// result.
#include "support/mirror.h"
#include "support/test.h"

namespace qvs::test {
namespace {

constexpr char kPortKey[] = "com.quillon.vswitch.port.mirrorSessions";
constexpr char kHostKey[] = "com.quillon.vswitch.uplinkMirrorSessions";

const Session kA = {"a", {"a1", "a2"}, {"a3"}, {}};
const Session kB = {"b", {"b1"}, {}, {"b2", "b3", "b4"}};
const Session kC = {"c", {}, {}, {}};
const Session kD = {std::string(32, 'd'), {"d1"}, {"d2"}, {"d3"}};

class Mirror : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(encode({kC}).size(), 252u);
        createSwitch(0, 0, 1);
    }

    static std::string port() { return portProp("id", "port0", kPortKey).value_or("nothing"); }
    static void put(const std::string &list) {
        ASSERT_STATUS(setPortProp("id", "port0", kPortKey, list, 8), 0);
    }
};

TEST_F(Mirror, AppendAndRemoveEqualTheListMadeAnew) {
    const std::vector<Session> all = {kA, kB, kC, kD};
    // Every way of having appended in two pieces, and every session taken out of the result.
    for (size_t first = 0; first <= all.size(); ++first) {
        ASSERT_STATUS(VSDVS_ClearDVMirrorSessions("sw1", "port0"), 0);
        const std::string front = encode({all.begin(), all.begin() + static_cast<ptrdiff_t>(first)});
        const std::string back = encode({all.begin() + static_cast<ptrdiff_t>(first), all.end()}, 0x1234, 9);
        const std::string given = back;
        ASSERT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "port0", front.data()), 0);
        ASSERT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "port0", back.data()), 0);
        EXPECT_EQ(back, given);
        EXPECT_BYTES(port(), encode(all));
    }
    for (size_t gone = 0; gone < all.size(); ++gone) {
        put(encode(all));
        std::vector<Session> rest = all;
        rest.erase(rest.begin() + static_cast<ptrdiff_t>(gone));
        EXPECT_STATUS(VSDVS_RemoveDVMirrorSession("sw1", "port0", all[gone].id.c_str()), 0);
        EXPECT_BYTES(port(), encode(rest));
    }
    // Down to the last one, whose removal takes the key along.
    put(encode({kB}));
    EXPECT_STATUS(VSDVS_RemoveDVMirrorSession("sw1", "port0", "b"), 0);
    EXPECT_EQ(port(), "nothing");
}

TEST_F(Mirror, RefusalsLeaveTheListAsItWas) {
    const std::string stored = encode({kA, kD}) + "behind the counts";
    put(stored);
    std::string outside = encode({kA});
    outside[20 + 228] = 1;  // the group begins one entity too late
    std::string nobodys = encode({kA}) + zeros(52);
    nobodys[12] = 4;  // one entity that belongs to no session
    struct {
        std::string list;
        uint32_t set, append;
    } const rows[] = {
        {outside, 0xbad0007, 0xbad0007},
        {nobodys, 0xbad0007, 0xbad0007},
        {encode({kB, kA}), 0, 0xbad0005},
        {encode({kB, {std::string(32, 'd') + "e", {}, {}, {}}}), 0, 0xbad0005},  // 32 characters count
    };
    for (const auto &row : rows) {
        EXPECT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "port0", row.list.data()), row.append);
        EXPECT_BYTES(port(), stored);
        EXPECT_STATUS(VSDVS_SetDVMirrorSessions("sw1", nullptr, row.list.data()), row.set);
    }
    // Without a port, and with an empty one, the list is that of the host.
    EXPECT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "", encode({kC}).data()), 0);
    EXPECT_BYTES(*hostProp("id", kHostKey), encode({kB, {std::string(32, 'd') + "e", {}, {}, {}}, kC}));
    // New sessions are not compared with one another, and no prefix is equal.
    EXPECT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "port0", encode({{"aa", {}, {}, {}}, kB, kB}).data()),
                  0);
    EXPECT_BYTES(port(), encode({kA, kD, {"aa", {}, {}, {}}, kB, kB}));
    EXPECT_STATUS(VSDVS_RemoveDVMirrorSession("sw1", "port0", "zz"), 0xbad0003);
    ASSERT_STATUS(VSDVS_ClearDVMirrorSessions("sw1", "port0"), 0);
    EXPECT_STATUS(VSDVS_RemoveDVMirrorSession("sw1", "port0", "a"), 0xbad0003);
}

TEST_F(Mirror, MalformedStoredListsFail) {
    void *out = nullptr;
    const std::string list = encode({kA, kB});
    for (size_t size = 0; size < list.size(); ++size) {
        put(list.substr(0, size));
        ASSERT_STATUS(VSDVS_AppendDVMirrorSessions("sw1", "port0", encode({kD}).data()), 0xbad0001) << size;
    }
    for (const auto &[sessions, entities] :
         {std::pair{0x20000000u, 0u}, {0xffffffffu, 0xffffffffu}, {0u, 1u}}) {
        put(u32(0xfacebeef) + u32(2) + u32(sessions) + u32(entities) + u32(0));
        EXPECT_STATUS(VSDVS_GetDVMirrorSessions("sw1", "port0", &out), 0xbad0001);
        EXPECT_EQ(out, nullptr);
    }
    // A group that leaves the entity array: nothing is moved, nothing stored.
    std::string hostile = list;
    hostile.replace(20 + 228, 4, u32(0xfffffffe));
    put(hostile);
    EXPECT_STATUS(VSDVS_RemoveDVMirrorSession("sw1", "port0", "a"), 0xbad0001);
    EXPECT_BYTES(port(), hostile);
    // 20 bytes of header are a list without sessions.
    put(encode({}));
    EXPECT_STATUS(VSDVS_GetDVMirrorSessions("sw1", "port0", &out), 0);
    VSDVS_FreeMemory(out);
}

}  // namespace
}  // namespace qvs::test
