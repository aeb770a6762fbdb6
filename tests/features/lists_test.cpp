// Every list that is counted and then fetched: what is asked for, and what remains when a request or an
// allocation fails, when the list changes between the requests, and when the kernel answers nonsense.
#include <malloc.h>
#include <qvs/kcp.h>
#include <qvs/livetracehyp.h>
#include <qvs/spfhyp.h>
#include <qvs/vshyp.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <vector>

#include "features/runtime_host.h"
#include "support/alloc_fault.h"
#include "support/bytes.h"
#include "support/host.h"

namespace qvs::test {
namespace {

// How a family tells of a failure. Where there is no status, kNull stands for a null list.
constexpr uint32_t kNull = 1;
struct Family {
    uint32_t countFails;  // of a request that the kernel answers with EBUSY
    uint32_t fetchFails;
    uint32_t noMemory;
    bool keepsPointer = false;  // when the count fails; in all other cases it is null
    bool fetchesEmpty = false;
    bool presetsCount = false;  // the count stands in the buffer before it is fetched
    bool nullForEmpty = false;
};
constexpr Family kSwitchLists = {
    .countFails = 0xbad0004, .fetchFails = 0xbad0004, .noMemory = 0xbad0014, .keepsPointer = true};
constexpr Family kSwitches = {.countFails = 0xbad0001, .fetchFails = 0xbad0004, .noMemory = 0xbad0014};
constexpr Family kControlPlane = {
    .countFails = kNull, .fetchFails = kNull, .noMemory = kNull, .presetsCount = true, .nullForEmpty = true};
constexpr Family kLive = {.countFails = kNull, .fetchFails = kNull, .noMemory = kNull, .fetchesEmpty = true};
constexpr Family kErrno = {.countFails = 0xbad0004,
                           .fetchFails = 0xbad0004,
                           .noMemory = ENOMEM,
                           .fetchesEmpty = true,
                           .presetsCount = true};

// Counted and fetched by one request, which differs in the length that it asks for.
constexpr const char *kSame = nullptr;

struct List {
    const char *path;
    Family family;
    const char *count;  // the two requests
    const char *fetch;
    uint32_t entrySize;
    uint32_t entries;
    uint32_t (*get)(void **list);
    uint32_t headerSize = 8;
    uint32_t countAt = 0;

    uint32_t size(uint32_t held) const { return headerSize + held * entrySize; }
    // The first count of entries whose size no 32 bits hold.
    uint32_t firstTooMany() const {
        return static_cast<uint32_t>(((uint64_t{1} << 32) - headerSize + entrySize - 1) / entrySize);
    }
};

// An answer by pointer, as a status.
uint32_t orNull(void *answer, void **list) {
    *list = answer;
    return answer != nullptr ? 0 : kNull;
}
uint32_t orErrno(void *answer, void **list) {
    *list = answer;
    return answer != nullptr ? 0 : static_cast<uint32_t>(errno);
}

constexpr uint8_t kGroup4[] = {224, 1, 2, 251, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
constexpr uint8_t kGroup6[] = {0xff, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xfb};

// In the order of the commands. The second request asks for as much as a header and the lab's entries take.
const List kLists[] = {
    {kSwitchDevice, kSwitchLists, "0x1004 GetPromiscSessionActiveDsts in=268 out=8 input=[0:707331]", kSame,
     4, 2, [](void **p) { return VSHYP_GetPromiscSessionActiveDsts("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1005 GetDVMirrorSessionIDs in=268 out=8 input=[0:707331]", kSame, 32, 2,
     [](void **p) { return VSHYP_GetDVMirrorSessionIDs("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1008 GetMcastFilters in=268 out=8 input=[0:707331 176:01 179:04]", kSame,
     6, 3, [](void **p) { return VSHYP_GetMcastFilters("ps1", 0x4000001, 0, p); }},
    {kSwitchDevice, kSwitchLists, "0x1008 GetMcastFilters in=268 out=8 input=[0:707331 176:01 179:0402]",
     kSame, 4, 3, [](void **p) { return VSHYP_GetMcastFilters("ps1", 0x4000001, 2, p); }},
    {kSwitchDevice, kSwitchLists, "0x1008 GetMcastFilters in=268 out=8 input=[0:707331 176:01 179:0403]",
     kSame, 16, 3, [](void **p) { return VSHYP_GetMcastFilters("ps1", 0x4000001, 3, p); }},
    {kSwitchDevice, kSwitchLists, "0x1009 GetSwitchMcastFilters in=268 out=8 input=[0:707331 180:03]", kSame,
     20, 3, [](void **p) { return VSHYP_GetSwitchMcastFilters("ps1", 3, p); }},
    {kSwitchDevice, kSwitchLists,
     "0x100a GetMcastFilterStats in=268 out=28 input=[0:707331 176:01 179:0402 184:e00102fb]", kSame, 4, 5,
     [](void **p) { return VSHYP_GetMcastFilterStats("ps1", 0x4000001, 2, kGroup4, p); }, 28, 20},
    {kSwitchDevice, kSwitchLists,
     "0x100a GetMcastFilterStats in=268 out=28 input=[0:707331 176:01 179:0403 184:ff02 199:fb]", kSame, 16,
     5, [](void **p) { return VSHYP_GetMcastFilterStats("ps1", 0x4000001, 3, kGroup6, p); }, 28, 20},
    {kSwitchDevice, kSwitchLists, "0x100b GetUplinks in=268 out=8 input=[0:707331]", kSame, 36, 2,
     [](void **p) { return VSHYP_GetUplinks("ps1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1013 GetSwitchPortInfo in=268 out=8 input=[0:74776f]", kSame, 1458, 2,
     [](void **p) { return VSHYP_GetSwitchPortInfo("two", p); }},
    {kSwitchDevice, kSwitchLists, "0x1017 GetMACTable in=268 out=8 input=[0:707331 182:01]", kSame, 86, 3,
     [](void **p) { return VSHYP_GetMACTable("sw1", 1, p); }},
    {kSwitchDevice, kSwitchLists, "0x1018 GetStaticLectx in=268 out=8 input=[0:707331]", kSame, 529, 2,
     [](void **p) { return VSHYP_GetStaticLectx("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1019 GetPortMACTable in=268 out=8 input=[0:6964 128:706f727430 182:01]",
     kSame, 86, 2, [](void **p) { return VSHYP_GetPortMACTable("sw1", "port0", 1, p); }},
    {kSwitchDevice, kSwitchLists, "0x101a GetPortStaticLectx in=268 out=8 input=[0:6964 128:706f727430]",
     kSame, 529, 1, [](void **p) { return VSHYP_GetPortStaticLectx("sw1", "port0", p); }},
    {kSwitchDevice, kSwitchLists, "0x101b GetTeamMACTable in=268 out=8 input=[0:707331 182:02]", kSame, 86, 2,
     [](void **p) { return VSHYP_GetTeamMACTable("sw1", 2, p); }},
    {kSwitchDevice, kSwitchLists, "0x101f GetMACLearningAllPorts in=268 out=8 input=[0:707331]", kSame, 14, 3,
     [](void **p) { return VSHYP_GetMACLearningAllPorts("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1020 GetSwitchMACLearningStats in=268 out=8 input=[0:707331]", kSame, 52,
     3, [](void **p) { return VSHYP_GetSwitchMACLearningStats("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1021 GetL2Security in=268 out=8 input=[0:707331]", kSame, 8, 3,
     [](void **p) { return VSHYP_GetL2Security("sw1", p); }},
    {kSwitchDevice, kSwitchLists, "0x1025 GetLSTeamingPolicyTable in=268 out=4 input=[0:707331]", kSame, 2748,
     2, [](void **p) { return VSHYP_GetLSTeamingPolicyTable("sw1", p); }, 4},
    {kSwitchDevice, kSwitches, "0x1026 GetSwitches in=4 out=8 input=[]", kSame, 81, 2,
     [](void **p) { return VSHYP_GetSwitches(0, p); }},
    {kSwitchDevice, kSwitches, "0x1026 GetSwitches in=4 out=8 input=[0:01]", kSame, 128, 2,
     [](void **p) { return VSHYP_GetSwitches(1, p); }},
    {kSwitchDevice, kSwitches, "0x1026 GetSwitches in=4 out=8 input=[0:02]", kSame, 81, 2,
     [](void **p) { return VSHYP_GetSwitches(2, p); }},
    {kKcp, kControlPlane, "0x6 GetDVSCount in=0 out=4 input=[]", "0x7 GetDVSList in=0 out=260 input=[]", 128,
     2, [](void **p) { return orNull(KCP_GetDVSList(), p); }, 4},
    {kKcp, kControlPlane, "0x8 GetVIFCount in=0 out=4 input=[]", "0x9 GetVIFList in=0 out=22886 input=[]",
     11441, 2, [](void **p) { return orNull(KCP_GetVIFList(), p); }, 4},
    {kKcp, kControlPlane, "0xa GetCIFCount in=0 out=4 input=[]", "0xb GetCIFList in=0 out=23382 input=[]",
     11689, 2, [](void **p) { return orNull(KCP_GetCIFList(), p); }, 4},
    {kKcp, kControlPlane, "0xc GetHYPVIFCount in=0 out=4 input=[]",
     "0xd GetHYPVIFList in=0 out=22886 input=[]", 11441, 2,
     [](void **p) { return orNull(KCP_GetHYPVIFList(), p); }, 4},
    {kKcp, kControlPlane, "0xe GetHYPNICCount in=0 out=4 input=[]",
     "0xf GetHYPNICList in=0 out=3328 input=[]", 1108, 3,
     [](void **p) { return orNull(KCP_GetHYPNICList(), p); }, 4},
    {kKcp, kControlPlane, "0x10 GetUplinkCount in=0 out=4 input=[]",
     "0x11 GetUplinkList in=0 out=2478 input=[]", 1237, 2,
     [](void **p) { return orNull(KCP_GetUplinkList(), p); }, 4},
    {kKcp, kControlPlane, "0x12 GetPSPropCount in=0 out=4 input=[]",
     "0x13 GetPSPropList in=0 out=516 input=[]", 256, 2,
     [](void **p) { return orNull(KCP_GetPSPropList(), p); }, 4},
    {kKcp, kControlPlane, "0x15 GetContainerCount in=0 out=4 input=[]",
     "0x16 GetContainerList in=0 out=28 input=[]", 10, 2,
     [](void **p) { return orNull(KCP_GetContainerList(), p); }},
    {kLivetrace, kLive, "0x2 GetCountActionData in=10 out=8 input=[8:0301]",
     "0x2 GetCountActionData in=10 out=60 input=[8:0302]", 26, 2,
     [](void **p) { return orNull(LIVETRACEHYP_GetCountActionData(3), p); }},
    {kSpf, kErrno, "0x1001 GetPortsList in=194 out=8 input=[0:74776f]", kSame, 8, 2,
     [](void **p) { return orErrno(SPFHYP_GetPortsList("two"), p); }},
};

class Lists : public RuntimeHost {
  protected:
    // Calls `test` for each list, with fresh faults, trace and pointer.
    template <typename Test>
    void each(const Test &test) {
        for (const List &list : kLists) {
            SCOPED_TRACE(list.count);
            start();
            test(list);
        }
    }
    void start() {
        clearFaults();
        clearTrace();
        result_ = &untouched_;
    }
    void release() {
        if (result_ != &untouched_) free(result_);
        result_ = &untouched_;
    }

    static std::string counting(const List &list) { return request(list.path, list.count); }
    // The second request when the first one has counted so many.
    static std::string fetching(const List &list, uint32_t entries) {
        static const std::regex length("out=[0-9]+");
        const std::string line = list.fetch != kSame ? list.fetch : list.count;
        return request(list.path,
                       std::regex_replace(line, length, "out=" + std::to_string(list.size(entries))));
    }
    static void patchCount(const List &list, uint32_t count, int nth = 1) {
        patchAnswer(list.path, list.countAt, u32(count), nth);
    }
    uint32_t countIn(const List &list) const {
        uint32_t count = 0;
        std::memcpy(&count, static_cast<char *>(result_) + list.countAt, sizeof count);
        return count;
    }

    char untouched_;
    void *result_ = &untouched_;
};

TEST_F(Lists, AreCountedAndFetched) {
    each([&](const List &list) {
        ASSERT_STATUS(list.get(&result_), 0);
        const std::string fetched =
            list.fetch != kSame ? request(list.path, list.fetch) : fetching(list, list.entries);
        EXPECT_EQ(takeTrace(), counting(list) + fetched);
        EXPECT_EQ(countIn(list), list.entries);
        release();
    });
}

TEST_F(Lists, WithoutEntriesAreAHeaderOrNull) {
    each([&](const List &list) {
        // The whole header is the kernel's, but its count says zero.
        std::string header = std::string(list.headerSize, '\x5a');
        header.replace(list.countAt, 4, zeros(4));
        for (const int nth : {1, 2})
            patchAnswer(list.path, 0, header, nth);
        const uint32_t status = list.get(&result_);
        EXPECT_STATUS(status, list.family.nullForEmpty ? kNull : 0);
        EXPECT_EQ(takeTrace(), counting(list) + (list.family.fetchesEmpty ? fetching(list, 0) : ""));
        if (list.family.nullForEmpty) {
            EXPECT_EQ(result_, nullptr);
        } else if (std::string_view(list.count).find("GetSwitches") == std::string_view::npos) {
            EXPECT_BYTES(bytesAt(result_, list.headerSize), header);
        } else {
            // The one list that makes its own header, with the selector in it.
            const char last = list.count[std::strlen(list.count) - 2];
            EXPECT_BYTES(bytesAt(result_, 8),
                         u32(0) + u32(last == '[' ? 0 : static_cast<uint32_t>(last - '0')));
        }
        release();
    });
}

// The buffer has the size of the first count, whatever the second one is, and that one is handed on.
TEST_F(Lists, ThatChangeBetweenTheRequests) {
    each([&](const List &list) {
        for (const uint32_t counted : {list.entries + 3, uint32_t{1}}) {
            SCOPED_TRACE(counted);
            start();
            patchCount(list, counted);
            ASSERT_STATUS(list.get(&result_), 0);
            EXPECT_EQ(takeTrace(), counting(list) + fetching(list, counted));
            EXPECT_GE(malloc_usable_size(result_), list.size(counted));
            EXPECT_EQ(countIn(list), std::min(counted, list.entries));
            if (counted > list.entries) {
                const uint32_t rest = counted - list.entries;
                EXPECT_BYTES(
                    bytesAt(static_cast<char *>(result_) + list.size(list.entries), rest * list.entrySize),
                    zeros(rest * list.entrySize));
            }
            release();
        }
    });
}

TEST_F(Lists, FailingRequests) {
    each([&](const List &list) {
        for (const std::string step : {"device open", "device ioctl"}) {
            SCOPED_TRACE(step);
            start();
            addFault(step, R"("errno":"EBUSY")", 1);
            EXPECT_STATUS(list.get(&result_), list.family.countFails);
            EXPECT_EQ(result_, list.family.keepsPointer ? &untouched_ : nullptr);

            start();
            addFault(step, R"("errno":"EBUSY")", 2);
            EXPECT_STATUS(list.get(&result_), list.family.fetchFails);
            EXPECT_EQ(result_, nullptr);
        }
    });
}

TEST_F(Lists, FailingAllocation) {
    SKIP_WITHOUT_ALLOC_FAULT();
    each([&](const List &list) {
        AllocFault fault(1);
        EXPECT_STATUS(list.get(&result_), list.family.noMemory);
        EXPECT_EQ(fault.seen(), 1);
        EXPECT_EQ(result_, nullptr);
        EXPECT_EQ(takeTrace(), counting(list));
    });
}

// Sizes that 32 bits do not hold are asked of nobody.
TEST_F(Lists, CountsThatWrap) {
    each([&](const List &list) {
        for (const uint32_t count : {UINT32_MAX, list.firstTooMany(), 0x80000001u}) {
            if (count == UINT32_MAX && list.family.countFails == kSwitches.countFails) continue;
            SCOPED_TRACE(count);
            start();
            patchCount(list, count);
#ifndef QVS_TEST_SANITIZED
            AllocFault fault(0);
#endif
            EXPECT_STATUS(list.get(&result_), list.family.noMemory);
            EXPECT_EQ(result_, nullptr);
            EXPECT_EQ(takeTrace(), counting(list));
#ifndef QVS_TEST_SANITIZED
            EXPECT_EQ(fault.seen(), 0);
#endif
        }
    });
}

// The largest size of all is still asked for.
TEST_F(Lists, TheLastCountThatFits) {
    SKIP_WITHOUT_ALLOC_FAULT();
    each([&](const List &list) {
        patchCount(list, list.firstTooMany() - 1);
        AllocFault fault(1);
        EXPECT_STATUS(list.get(&result_), list.family.noMemory);
        EXPECT_EQ(fault.seen(), 1);
    });
    for (const uint32_t containers : {429'496'728u, 429'496'729u}) {
        start();
        patchAnswer(kKcp, 0, u32(containers));
        AllocFault fault(1);
        EXPECT_EQ(KCP_GetContainerList(), nullptr);
        EXPECT_EQ(fault.seen(), containers == 429'496'728u ? 1 : 0);
    }
}

// The kernel writes all of the area, with a count that is a lie and no zero anywhere.
TEST_F(Lists, AnswersThatAreALie) {
    each([&](const List &list) {
        const uint32_t size = list.size(list.entries);
        patchAnswer(list.path, 0, std::string(size + 64, '\xff'), 2);
        ASSERT_STATUS(list.get(&result_), 0);
        ASSERT_GE(malloc_usable_size(result_), size);
        EXPECT_BYTES(bytesAt(result_, size), std::string(size, '\xff'));
        release();
    });
}

TEST_F(Lists, AnswersThatAreTooShort) {
    each([&](const List &list) {
        const uint32_t size = list.size(list.entries);
        const std::string preset = list.family.presetsCount ? u32(list.entries) : zeros(4);
        for (const uint32_t length : {0u, 3u, size - 1}) {
            SCOPED_TRACE(length);
            start();
            patchAnswer(list.path, 0, std::string(size, '\xff'), 2);
            addFault("device ioctl", R"("truncate":)" + std::to_string(length), 2);
            ASSERT_STATUS(list.get(&result_), 0);
            std::string expected = zeros(size);
            expected.replace(list.countAt, 4, preset);
            expected.replace(0, length, std::string(length, '\xff'));
            EXPECT_BYTES(bytesAt(result_, size), expected);
            release();
        }

        // No count at all is no entries, or no answer.
        start();
        addFault("device ioctl", R"("truncate":0)", 1, 2);
        const bool noAnswer = list.family.countFails == kSwitches.countFails || list.family.nullForEmpty;
        EXPECT_STATUS(list.get(&result_), noAnswer ? list.family.countFails : 0);
        if (noAnswer) {
            EXPECT_EQ(result_, nullptr);
        } else {
            EXPECT_BYTES(bytesAt(result_, list.headerSize), zeros(list.headerSize));
        }
        release();
    });
}

// The switches' first status is ignored as long as there is a count.
TEST_F(Lists, SwitchesHaveTheirOwnWay) {
    calls().ioctlResults = {-1};
    ASSERT_STATUS(VSHYP_GetSwitches(1, &result_), 0);
    EXPECT_BYTES(bytesAt(result_, 4), u32(2));
    release();
    patchAnswer(kSwitchDevice, 0, u32(0xffffffff));
    EXPECT_STATUS(VSHYP_GetSwitches(1, &result_), 0xbad0001);
    EXPECT_EQ(result_, nullptr);
}

// The kind of multicast filters is judged behind the first request, that of their statistics before it.
TEST_F(Lists, KindsOfMulticastFilters) {
    calls().ioctlResults = {0};
    EXPECT_STATUS(VSHYP_GetMcastFilters("ps1", 0, 1, &result_), 0xbad0007);
    EXPECT_EQ(takeTrace(), request(kSwitchDevice,
                                   "0x1008 GetMcastFilters in=268 out=8 input=[0:707331 180:01]", "EINVAL"));
    addFault("GetMcastFilters", R"("errno":"EBUSY")");
    EXPECT_STATUS(VSHYP_GetMcastFilters("ps1", 0, -1, &result_), 0xbad0004);
    clearTrace();
    for (const int32_t type : {0, 1, 4, -1})
        EXPECT_STATUS(VSHYP_GetMcastFilterStats("ps1", 0, type, kGroup6, &result_), 0xbad0007);
    EXPECT_EQ(takeTrace(), "");
    EXPECT_EQ(result_, &untouched_);
}

}  // namespace
}  // namespace qvs::test
