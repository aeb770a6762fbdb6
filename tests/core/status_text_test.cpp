// SPDX-License-Identifier: Apache-2.0
// The text of every status.
#include <gtest/gtest.h>
#include <qvs/hyp.h>

#include <cstdio>
#include <string_view>

namespace qvs::test {
namespace {

constexpr struct {
    uint32_t status;
    const char *text;
} kRows[] = {
    {0, "Success"},
    {1, "General error"},
    {0xbacffff, "General error"},
    {0xbad0000, "General error"},
    {0xbad0001, "Failure"},
    {0xbad002d, "Already connected"},
    {0xbad0068, "Already connected"},
    {0xbad00c5, "Invalid chunk size for contiguous mmap "},
    {0xbad00c6, "Invalid MPN max for contiguous mmap "},
    {0xbad00c7, "Invalid mmap flag on contiguous mmap "},
    {0xbad00e9, "General error"},
    {0xbad0127, "General error"},
    {0xbad0130, "General error"},
    {0xbad0131, "General error"},
    {0xbad016d, "Memory error (Bad page)"},
    {0xbad016e, "Invalid error code"},
    {0xbad016f, "General error"},
    {0x2bacffff, "General error"},
    {0x2bad0000, "Generic service console error"},
    {0x80000000, "Generic service console error"},
    {0xffffffff, "Generic service console error"},
};

// The texts that were read one by one, as the 64-bit FNV-1a hash of "0x0bad0001 Failure\n" and all lines like
// it.
constexpr uint64_t kAllTexts = 0x1b7adefdc2bdd06a;

TEST(StatusText, BoundariesGapsAndOddities) {
    for (const auto &[status, text] : kRows)
        EXPECT_STREQ(ReturnStatusToString(status), text) << std::hex << status;
}

TEST(StatusText, EveryTextIsAsItWas) {
    uint64_t hash = 0xcbf29ce484222325;
    for (uint32_t status = 0xbad0000 - 16; status < 0xbad0180; ++status) {
        char line[128];
        std::snprintf(line, sizeof line, "0x%08x %s\n", status, ReturnStatusToString(status));
        for (const char c : std::string_view(line))
            hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3;
    }
    EXPECT_EQ(hash, kAllTexts);
}

}  // namespace
}  // namespace qvs::test
