// Stored records of variable length that are not what they say: every length, and every number in their
// beginning. What is handed out is checked against a second reading of the layout.
#include <gtest/gtest.h>
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/host.h"
#include "support/places.h"

namespace qvs::test {
namespace {

uint64_t number(const std::string &record, size_t at, size_t width) {
    uint64_t value = 0;
    if (at + width <= record.size()) std::memcpy(&value, record.data() + at, width);
    return value;
}

struct Row {
    Where where;
    const char *key;
    std::string record;
    std::function<uint32_t(void **)> get;
    std::function<bool(const std::string &)> whole;
};

uint32_t count;

const Row kRows[] = {
    {Global, "com.quillon.vswitch.pvlanMap", zeros(16),
     [](void **out) { return VSDVS_GetPrivateVLANMap("sw1", out, &count); },
     [](const std::string &r) { return r.size() % 8 == 0; }},
    {Port, "com.quillon.vswitch.port.vlan", hex("0100 0000 0000 0300") + zeros(12),
     [](void **out) { return VSDVS_GetPortVLANPolicy("sw1", "port0", out, &count); },
     [](const std::string &r) { return r.size() >= 8 && r.size() == 8 + 4 * number(r, 6, 2); }},
    {Global, "com.quillon.vswitch.logicalswitch.teaming", u32(1) + zeros(8),
     [](void **out) { return VSDVS_GetLSTeamingPolicyTable("sw1", out); },
     [](const std::string &r) { return r.size() >= 4; }},
    {Host, "com.quillon.vswitch.mcast.user.addresses", hex("03") + zeros(18),
     [](void **out) { return VSDVS_GetMcastUserLegacyEntries("sw1", out); },
     [](const std::string &r) { return !r.empty() && r.size() == 1 + 6 * number(r, 0, 1); }},
    {Port, "com.quillon.vswitch.port.mcast.user.addresses.override", hex("02") + zeros(12),
     [](void **out) { return VSDVS_GetPortMcastUserLegacyEntries("sw1", "port0", out); },
     [](const std::string &r) { return !r.empty() && r.size() == 1 + 6 * number(r, 0, 1); }},
    {Port, "com.quillon.common.port.volatile.vlanchkresult", u16(2) + u16(1) + zeros(12),
     [](void **out) { return HealthCheck_GetVLANCheckResult("sw1", "port0", out); },
     [](const std::string &r) {
         return r.size() >= 4 && r.size() == 4 * (number(r, 0, 2) + number(r, 2, 2) + 1);
     }},
    {Port, "com.quillon.common.port.volatile.mtuchkresult", u16(0) + u16(2) + zeros(8),
     [](void **out) { return HealthCheck_GetMTUCheckResult("sw1", "port0", out); },
     [](const std::string &r) {
         return r.size() >= 4 && r.size() == 4 * (number(r, 0, 2) + number(r, 2, 2) + 1);
     }},
    {Port, "com.quillon.net.ipfix.port", zeros(14) + u16(5) + zeros(168) + "obsID",
     [](void **out) { return IPFIXDVS_GetIpfixGranular("sw1", "port0", out); },
     [](const std::string &r) { return r.size() >= 184 && r.size() == 184 + number(r, 14, 2); }},
    {Port, "com.quillon.vswitch.port.mirrorSessions",
     u32(0xfacebeef) + u32(2) + u32(1) + u32(1) + u32(0) + zeros(232 + 52),
     [](void **out) { return VSDVS_GetDVMirrorSessions("sw1", "port0", out); },
     [](const std::string &r) {
         return r.size() >= 20 && 20 + 232 * number(r, 8, 4) + 52 * number(r, 12, 4) <= r.size();
     }},
};

// All prefixes, one byte more, and extreme numbers at every place of the first 20 bytes.
std::vector<std::string> variants(const std::string &record) {
    std::vector<std::string> all = {record + "x"};
    for (size_t size = 0; size <= record.size(); ++size)
        all.push_back(record.substr(0, size));
    for (size_t at = 0; at < std::min<size_t>(record.size(), 20); ++at) {
        for (const std::string &extreme :
             {u32(0xffffffff), u32(0x80000000), u32(0x7fffffff), u16(1), u16(0)}) {
            std::string changed = record;
            changed.replace(at, extreme.size(), extreme);
            changed.resize(record.size());
            all.push_back(changed);
        }
    }
    return all;
}

TEST(Hostile, RecordsAreHandedOutWholeOrNotAtAll) {
    ASSERT_STATUS(VSDVS_CreateVSwitch("sw1", "id", nullptr, 105, 0, 0, 0, 1), 0);
    ASSERT_STATUS(DVSLoadConfig(), 0);
    for (const Row &row : kRows) {
        ASSERT_TRUE(row.whole(row.record)) << row.key;
        for (const std::string &record : variants(row.record)) {
            SCOPED_TRACE(row.key + (": " + toHex(record)));
            ASSERT_STATUS(store(row.where, row.key, record), 0);
            void *out = nullptr;
            EXPECT_STATUS(row.get(&out), row.whole(record) ? 0 : 0xbad0001);
            if (!row.whole(record)) {
                EXPECT_EQ(out, nullptr);
            } else if (!record.empty()) {
                EXPECT_BYTES(bytesAt(out, record.size()), record);
            }
            VSDVS_FreeMemory(out);
        }
    }
}

}  // namespace
}  // namespace qvs::test
