// The text of every status.
#include <gtest/gtest.h>
#include <qvs/hyp.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

namespace qvs::test {
namespace {

// The golden list: one `0xbad0003 "Not found"` per line.
std::map<uint32_t, std::string> goldenTexts() {
    std::map<uint32_t, std::string> texts;
    std::ifstream file(QVS_TEST_DATA "/core/status_texts.txt");
    for (std::string line; std::getline(file, line);) {
        const auto value = static_cast<uint32_t>(std::strtoul(line.c_str(), nullptr, 16));
        texts[value] = line.substr(11, line.size() - 12);
    }
    return texts;
}

TEST(StatusText, AgreesWithTheGoldenListAndIsGeneralElsewhere) {
    const std::map<uint32_t, std::string> texts = goldenTexts();
    ASSERT_EQ(texts.size(), 363u);
    EXPECT_STREQ(ReturnStatusToString(0), texts.at(0).c_str());
    for (uint32_t status = 0xbad0000 - 16; status < 0xbad0180; ++status) {
        const auto found = texts.find(status);
        EXPECT_STREQ(ReturnStatusToString(status),
                     found != texts.end() ? found->second.c_str() : "General error")
            << std::hex << status;
    }
}

// What a list misses when it was made from the same mistaken source.
TEST(StatusText, BoundariesGapsAndOddities) {
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
    for (const auto &[status, text] : kRows) {
        EXPECT_STREQ(ReturnStatusToString(status), text) << std::hex << status;
    }
}

}  // namespace
}  // namespace qvs::test
