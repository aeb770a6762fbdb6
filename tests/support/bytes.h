// SPDX-License-Identifier: Apache-2.0
// Expected bytes, written literally.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qvs::test {

// The bytes that hexadecimal digits spell; blanks between them are for the reader.
std::string hex(std::string_view digits);
std::string toHex(std::string_view bytes);

// Little-endian numbers.
std::string u16(uint16_t value);
std::string u32(uint32_t value);
std::string u64(uint64_t value);

inline std::string zeros(size_t count) {
    return std::string(count, '\0');
}
// Text at the start of a field, zeros behind it.
std::string field(std::string_view text, size_t size);
// Text with its NUL.
inline std::string text(std::string_view value) {
    return std::string(value) + '\0';
}

// What a buffer holds, as bytes that print in hexadecimal when an expectation fails.
inline std::string bytesAt(const void *data, size_t size) {
    return {static_cast<const char *>(data), size};
}

}  // namespace qvs::test

// Compares bytes and shows both sides in hexadecimal.
#define EXPECT_BYTES(actual, expected) EXPECT_EQ(qvs::test::toHex(actual), qvs::test::toHex(expected))
// A status, shown as the headers write it.
#define EXPECT_STATUS(actual, expected) \
    EXPECT_EQ(qvs::test::StatusText(actual), qvs::test::StatusText(expected))
#define ASSERT_STATUS(actual, expected) \
    ASSERT_EQ(qvs::test::StatusText(actual), qvs::test::StatusText(expected))

namespace qvs::test {

// A status that prints as 0xbad0007 when an expectation fails.
struct StatusText {
    explicit StatusText(uint32_t status) : value(status) {}
    uint32_t value;
    bool operator==(const StatusText &) const = default;
};
void PrintTo(const StatusText &status, std::ostream *out);

}  // namespace qvs::test
