// SPDX-License-Identifier: Apache-2.0
// Formats that are parsed when the library is compiled, so that printing only copies texts and writes
// numbers.
#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace qvs {

// A format as a template argument. It supports the printf conversions that the dump needs: %s; %d and %u for
// numbers of any width; %x without a width, or with a width of 2 padded with blanks ("%2x") or zeros
// ("%02x").
template <size_t Size>
struct Format {
    char text[Size]{};
    constexpr Format(
        const char (&literal)[Size]) {  // NOLINT(google-explicit-constructor): a literal is a format
        for (size_t i = 0; i < Size; ++i)
            text[i] = literal[i];
    }
};

enum class Conversion : uint8_t { Text, Decimal, Hex, HexBlank2, HexZero2 };

// A parsed format: literal pieces around the conversions.
template <size_t Conversions>
struct ParsedFormat {
    std::array<size_t, Conversions + 1>
        begin{};  // of the literal before each conversion, and after the last one
    std::array<size_t, Conversions + 1> size{};
    std::array<Conversion, Conversions> kind{};
};

// Not defined. A call during the parsing of a format makes a wrong format a compile-time error.
void unknownConversion();

template <Format F>
consteval size_t countConversions() {
    size_t count = 0;
    for (const char c : F.text)
        count += c == '%' ? 1 : 0;
    return count;
}

template <Format F>
consteval auto parseFormat() {
    ParsedFormat<countConversions<F>()> parsed;
    const std::string_view text(F.text, sizeof F.text - 1);
    size_t at = 0;
    for (size_t i = 0; i < parsed.kind.size(); ++i) {
        size_t percent = at;
        while (F.text[percent] != '%')
            ++percent;
        parsed.begin[i] = at;
        parsed.size[i] = percent - at;
        const std::string_view rest = text.substr(percent + 1);
        if (rest.starts_with("02x")) {
            parsed.kind[i] = Conversion::HexZero2;
            at = percent + 4;
        } else if (rest.starts_with("2x")) {
            parsed.kind[i] = Conversion::HexBlank2;
            at = percent + 3;
        } else {
            const char letter = rest.at(0);
            if (letter != 's' && letter != 'd' && letter != 'u' && letter != 'x') unknownConversion();
            parsed.kind[i] = letter == 's'   ? Conversion::Text
                             : letter == 'x' ? Conversion::Hex
                                             : Conversion::Decimal;
            at = percent + 2;
        }
    }
    parsed.begin.back() = at;
    parsed.size.back() = text.size() - at;
    return parsed;
}

template <Format F>
inline constexpr auto kParsedFormat = parseFormat<F>();

// Returns the literal text before conversion I, or the text after the last conversion.
template <Format F, size_t I>
constexpr std::string_view literalOf() {
    return {F.text + kParsedFormat<F>.begin[I], kParsedFormat<F>.size[I]};
}

// The type in which an argument is passed to the writer: texts as views, numbers as 64 bits with their sign.
inline std::string_view formatArgument(const char *text) {
    return text;
}
inline std::string_view formatArgument(std::string_view text) {
    return text;
}
template <std::signed_integral T>
int64_t formatArgument(T number) {
    return number;
}
template <std::unsigned_integral T>
uint64_t formatArgument(T number) {
    return number;
}

// The maximum length of a converted argument.
inline size_t longest(std::string_view text) {
    return text.size();
}
inline size_t longest(int64_t) {
    return 20;
}
inline size_t longest(uint64_t) {
    return 20;
}

// Returns the eight decimal digits of a number below 10^8 as the bytes of a word, the first digit lowest.
// Each step halves all groups of digits in the word at once. It divides by a multiplication that is exact in
// its range.
inline uint64_t eightDigits(uint64_t number) {
    const uint64_t fours = number / 10000 | number % 10000 << 32;
    const uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007f0000007f;
    const uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
    const uint64_t tens = (twos * 103 >> 10) & 0x000f000f000f000f;
    return tens | (twos - 10 * tens) << 8;
}

inline char *writeEightDigits(char *out, uint64_t number) {
    const uint64_t digits = eightDigits(number) | 0x3030303030303030;
    std::memcpy(out, &digits, 8);
    return out + 8;
}

// Writes a number without branches on its length, which a processor cannot predict. It can write up to 8
// characters beyond the end that it returns, but never more than 20 in all.
inline char *writeDecimal(char *out, uint64_t number) {
    constexpr uint64_t kEight = 100000000;
    if (number >= kEight * kEight) {
        out = writeDecimal(out, number / (kEight * kEight));
        out = writeEightDigits(out, number / kEight % kEight);
        return writeEightDigits(out, number % kEight);
    }
    if (number >= kEight) return writeEightDigits(writeDecimal(out, number / kEight), number % kEight);
    const uint64_t digits = eightDigits(number);
    // The last digit is always written.
    const int leadingZeros = std::countr_zero(digits | uint64_t{1} << 56) / 8;
    const uint64_t shown = (digits | 0x3030303030303030) >> (8 * leadingZeros);
    std::memcpy(out, &shown, 8);
    return out + (8 - leadingZeros);
}

// The address of an empty text can be null. string_view::copy allows this, memcpy does not.
inline char *writeText(char *out, std::string_view text) {
    return out + text.copy(out, text.size());
}

template <Conversion C>
char *writeArgument(char *out, std::string_view text) {
    static_assert(C == Conversion::Text, "a text needs %s");
    return writeText(out, text);
}

template <Conversion C, typename Number>
requires std::integral<Number>
char *writeArgument(char *out, Number number) {
    static_assert(C != Conversion::Text, "%s needs a text");
    const auto bits = static_cast<uint64_t>(number);
    if constexpr (C == Conversion::Decimal) {
        if constexpr (std::signed_integral<Number>) {
            if (number < 0) {
                *out++ = '-';
                return writeDecimal(out, 0 - bits);
            }
        }
        return writeDecimal(out, bits);
    } else {
        if constexpr (C != Conversion::Hex) {
            if (bits < 0x10) *out++ = C == Conversion::HexZero2 ? '0' : ' ';
        }
        return std::to_chars(out, out + 2 * sizeof bits, bits, 16).ptr;
    }
}

}  // namespace qvs
