// SPDX-License-Identifier: Apache-2.0
// Expected bytes, written literally.
#include "support/bytes.h"

#include <cstring>
#include <ostream>
#include <stdexcept>

namespace qvs::test {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

template <typename T>
std::string littleEndian(T value) {
    std::string bytes;
    for (size_t i = 0; i < sizeof value; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xff);
    return bytes;
}

}  // namespace

std::string hex(std::string_view digits) {
    std::string bytes;
    int high = -1;
    for (const char digit : digits) {
        if (digit == ' ') continue;
        const char *found = std::strchr(kDigits, digit);
        if (digit == '\0' || found == nullptr) throw std::invalid_argument("not a hexadecimal digit");
        const int value = static_cast<int>(found - kDigits);
        if (high < 0) {
            high = value;
        } else {
            bytes += static_cast<char>(high * 16 + value);
            high = -1;
        }
    }
    if (high >= 0) throw std::invalid_argument("half a byte");
    return bytes;
}

std::string toHex(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) {
        digits += kDigits[static_cast<uint8_t>(byte) >> 4];
        digits += kDigits[static_cast<uint8_t>(byte) & 15];
    }
    return digits;
}

std::string u16(uint16_t value) {
    return littleEndian<uint32_t>(value).substr(0, 2);
}
std::string u32(uint32_t value) {
    return littleEndian(value);
}
std::string u64(uint64_t value) {
    return littleEndian(value);
}

std::string field(std::string_view text, size_t size) {
    if (text.size() > size) throw std::invalid_argument("longer than its field");
    std::string bytes(text);
    bytes.resize(size, '\0');
    return bytes;
}

void PrintTo(const StatusText &status, std::ostream *out) {
    *out << "0x" << std::hex << status.value << std::dec;
}

}  // namespace qvs::test
