// SPDX-License-Identifier: Apache-2.0
// Every list that is counted and then fetched: what is asked for, and what remains when a request or an
// allocation fails, when the list changes between the requests, and when the kernel answers nonsense.
#include <malloc.h>

#include <cerrno>
#include <cstdlib>
#include <regex>

#include "features/runtime_host.h"
#include "support/alloc_fault.h"
#include "support/test.h"

namespace qvs::test {
namespace {

// How a family tells of a failure. Where there is no status, kNull stands for a null list.
constexpr uint32_t kNull = 1;
struct Family {
    const char *path;
    uint32_t countFails;  // of a request that the kernel answers with EBUSY
    uint32_t fetchFails;
    uint32_t noMemory;
    bool keepsPointer = false;  // when the count fails; in all other cases it is null
    bool fetchesEmpty = false;
    bool presetsCount = false;  // the count stands in the buffer before it is fetched
    bool nullForEmpty = false;
};
constexpr Family kPlain = {.path = kSwitchDevice,
                           .countFails = 0xbad0004,
                           .fetchFails = 0xbad0004,
                           .noMemory = 0xbad0014,
                           .keepsPointer = true};
constexpr Family kSwitches = {
    .path = kSwitchDevice, .countFails = 0xbad0001, .fetchFails = 0xbad0004, .noMemory = 0xbad0014};
constexpr Family kPairs = {.path = kKcp,
                           .countFails = kNull,
                           .fetchFails = kNull,
                           .noMemory = kNull,
                           .presetsCount = true,
                           .nullForEmpty = true};
constexpr Family kLive = {
    .path = kLivetrace, .countFails = kNull, .fetchFails = kNull, .noMemory = kNull, .fetchesEmpty = true};
constexpr Family kErrno = {.path = kSpf,
                           .countFails = 0xbad0004,
                           .fetchFails = 0xbad0004,
                           .noMemory = ENOMEM,
                           .fetchesEmpty = true,
                           .presetsCount = true};

using Get = uint32_t (*)(void **list);
struct List {
    Family family;
    const char *count;  // the request that counts
    uint32_t entrySize;
    uint32_t entries;
    Get get;
    uint32_t headerSize = 8;
    uint32_t countAt = 0;
    const char *fetch = nullptr;  // unless it is the same, with another length that is asked for

    uint32_t size(uint32_t held) const { return headerSize + held * entrySize; }
    // The first count of entries whose size no 32 bits hold.
    uint32_t firstTooMany() const {
        return static_cast<uint32_t>(((uint64_t{1} << 32) - headerSize + entrySize - 1) / entrySize);
    }
};

constexpr uint32_t kN = 0x4000001;  // of port0
constexpr char kSw1[] = "sw1", kPs1[] = "ps1", kTwo[] = "two", kPort0[] = "port0";
template <auto F, auto... given>
constexpr Get get = [](void **list) { return F(given..., list); };
// An answer by pointer, as a status.
template <auto F, auto... given>
constexpr Get byPointer = [](void **list) { return (*list = F(given...)) != nullptr ? 0 : kNull; };
template <auto F, auto... given>
constexpr Get byErrno = [](void **list) { return (*list = F(given...)) != nullptr ? 0u : unsigned(errno); };

constexpr uint8_t kGroup4[] = {224, 1, 2, 251, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
constexpr uint8_t kGroup6[] = {0xff, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xfb};

// In the order of the commands. The second request asks for as much as a header and the lab's entries take.
const List kLists[] = {
    {kPlain, "1004 GetPromiscSessionActiveDsts 268 8 0:707331", 4, 2,
     get<VSHYP_GetPromiscSessionActiveDsts, kSw1>},
    {kPlain, "1005 GetDVMirrorSessionIDs 268 8 0:707331", 32, 2, get<VSHYP_GetDVMirrorSessionIDs, kSw1>},
    {kPlain, "1008 GetMcastFilters 268 8 0:707331 176:01 179:04", 6, 3,
     get<VSHYP_GetMcastFilters, kPs1, kN, 0>},
    {kPlain, "1008 GetMcastFilters 268 8 0:707331 176:01 179:0402", 4, 3,
     get<VSHYP_GetMcastFilters, kPs1, kN, 2>},
    {kPlain, "1008 GetMcastFilters 268 8 0:707331 176:01 179:0403", 16, 3,
     get<VSHYP_GetMcastFilters, kPs1, kN, 3>},
    {kPlain, "1009 GetSwitchMcastFilters 268 8 0:707331 180:03", 20, 3,
     get<VSHYP_GetSwitchMcastFilters, kPs1, 3>},
    {kPlain, "100a GetMcastFilterStats 268 28 0:707331 176:01 179:0402 184:e00102fb", 4, 5,
     get<VSHYP_GetMcastFilterStats, kPs1, kN, 2, kGroup4>, 28, 20},
    {kPlain, "100a GetMcastFilterStats 268 28 0:707331 176:01 179:0403 184:ff02 199:fb", 16, 5,
     get<VSHYP_GetMcastFilterStats, kPs1, kN, 3, kGroup6>, 28, 20},
    {kPlain, "100b GetUplinks 268 8 0:707331", 36, 2, get<VSHYP_GetUplinks, kPs1>},
    {kPlain, "1013 GetSwitchPortInfo 268 8 0:74776f", 1458, 2, get<VSHYP_GetSwitchPortInfo, kTwo>},
    {kPlain, "1017 GetMACTable 268 8 0:707331 182:01", 86, 3, get<VSHYP_GetMACTable, kSw1, 1>},
    {kPlain, "1018 GetStaticLectx 268 8 0:707331", 529, 2, get<VSHYP_GetStaticLectx, kSw1>},
    {kPlain, "1019 GetPortMACTable 268 8 0:6964 128:706f727430 182:01", 86, 2,
     get<VSHYP_GetPortMACTable, kSw1, kPort0, 1>},
    {kPlain, "101a GetPortStaticLectx 268 8 0:6964 128:706f727430", 529, 1,
     get<VSHYP_GetPortStaticLectx, kSw1, kPort0>},
    {kPlain, "101b GetTeamMACTable 268 8 0:707331 182:02", 86, 2, get<VSHYP_GetTeamMACTable, kSw1, 2>},
    {kPlain, "101f GetMACLearningAllPorts 268 8 0:707331", 14, 3, get<VSHYP_GetMACLearningAllPorts, kSw1>},
    {kPlain, "1020 GetSwitchMACLearningStats 268 8 0:707331", 52, 3,
     get<VSHYP_GetSwitchMACLearningStats, kSw1>},
    {kPlain, "1021 GetL2Security 268 8 0:707331", 8, 3, get<VSHYP_GetL2Security, kSw1>},
    {kPlain, "1025 GetLSTeamingPolicyTable 268 4 0:707331", 2748, 2, get<VSHYP_GetLSTeamingPolicyTable, kSw1>,
     4},
    {kSwitches, "1026 GetSwitches 4 8", 81, 2, get<VSHYP_GetSwitches, 0>},
    {kSwitches, "1026 GetSwitches 4 8 0:01", 128, 2, get<VSHYP_GetSwitches, 1>},
    {kSwitches, "1026 GetSwitches 4 8 0:02", 81, 2, get<VSHYP_GetSwitches, 2>},
    {kPairs, "6 GetDVSCount 0 4", 128, 2, byPointer<KCP_GetDVSList>, 4, 0, "7 GetDVSList 0 260"},
    {kPairs, "8 GetVIFCount 0 4", 11441, 2, byPointer<KCP_GetVIFList>, 4, 0, "9 GetVIFList 0 22886"},
    {kPairs, "a GetCIFCount 0 4", 11689, 2, byPointer<KCP_GetCIFList>, 4, 0, "b GetCIFList 0 23382"},
    {kPairs, "c GetHYPVIFCount 0 4", 11441, 2, byPointer<KCP_GetHYPVIFList>, 4, 0, "d GetHYPVIFList 0 22886"},
    {kPairs, "e GetHYPNICCount 0 4", 1108, 3, byPointer<KCP_GetHYPNICList>, 4, 0, "f GetHYPNICList 0 3328"},
    {kPairs, "10 GetUplinkCount 0 4", 1237, 2, byPointer<KCP_GetUplinkList>, 4, 0, "11 GetUplinkList 0 2478"},
    {kPairs, "12 GetPSPropCount 0 4", 256, 2, byPointer<KCP_GetPSPropList>, 4, 0, "13 GetPSPropList 0 516"},
    {kPairs, "15 GetContainerCount 0 4", 10, 2, byPointer<KCP_GetContainerList>, 8, 0,
     "16 GetContainerList 0 28"},
    {kLive, "2 GetCountActionData 10 8 8:0301", 26, 2, byPointer<LIVETRACEHYP_GetCountActionData, 3>, 8, 0,
     "2 GetCountActionData 10 60 8:0302"},
    {kErrno, "1001 GetPortsList 194 8 0:74776f", 8, 2, byErrno<SPFHYP_GetPortsList, kTwo>},
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

    static std::string counting(const List &list) { return request(list.family.path, list.count); }
    // The second request when the first one has counted so many.
    static std::string fetching(const List &list, uint32_t entries) {
        static const std::regex length("^(\\S+ \\S+ \\S+ )[0-9]+");
        const std::string line = list.fetch != nullptr ? list.fetch : list.count;
        return request(list.family.path,
                       std::regex_replace(line, length, "$01" + std::to_string(list.size(entries))));
    }
    static void patchCount(const List &list, uint32_t count, int nth = 1) {
        patchAnswer(list.family.path, list.countAt, u32(count), nth);
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
            list.fetch != nullptr ? request(list.family.path, list.fetch) : fetching(list, list.entries);
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
            patchAnswer(list.family.path, 0, header, nth);
        const uint32_t status = list.get(&result_);
        EXPECT_STATUS(status, list.family.nullForEmpty ? kNull : 0);
        EXPECT_EQ(takeTrace(), counting(list) + (list.family.fetchesEmpty ? fetching(list, 0) : ""));
        if (list.family.nullForEmpty) {
            EXPECT_EQ(result_, nullptr);
        } else if (std::string_view(list.count).find("GetSwitches") == std::string_view::npos) {
            EXPECT_BYTES(bytesAt(result_, list.headerSize), header);
        } else {
            // The one list that makes its own header, with the selector in it.
            const std::string_view line = list.count;
            const char last = line.ends_with(" 8") ? '0' : line.back();
            EXPECT_BYTES(bytesAt(result_, 8), u32(0) + u32(static_cast<uint32_t>(last - '0')));
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
        patchAnswer(list.family.path, 0, std::string(size + 64, '\xff'), 2);
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
            patchAnswer(list.family.path, 0, std::string(size, '\xff'), 2);
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
    EXPECT_EQ(takeTrace(), request(kSwitchDevice, "1008 GetMcastFilters 268 8 0:707331 180:01", "EINVAL"));
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
