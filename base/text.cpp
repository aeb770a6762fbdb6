// SPDX-License-Identifier: Apache-2.0
#include "base/text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <utility>

#include "base/failure.h"

namespace qvs {
namespace {

bool plain(unsigned char c) {
    return c >= 0x20 && c < 0x7f && c != '\\';
}

bool continuation(unsigned char c) {
    return (c & 0xc0) == 0x80;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

template <typename Number>
std::optional<Number> parseUnsigned(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    Number value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// The number of the character that a well-formed sequence stands for.
uint32_t characterOf(std::string_view sequence) {
    uint32_t number = static_cast<unsigned char>(sequence[0]) & (0x7fu >> sequence.size());
    for (const char c : sequence.substr(1))
        number = number << 6 | (static_cast<unsigned char>(c) & 0x3fu);
    return number;
}

// Characters that a terminal does not show, or that change the direction or the lines of what follows. A name
// with them would look like another name.
bool isHidden(uint32_t character) {
    constexpr std::pair<uint32_t, uint32_t> kHidden[] = {
        {0xad, 0xad},     {0x34f, 0x34f},   {0x61c, 0x61c},   {0x115f, 0x1160}, {0x17b4, 0x17b5},
        {0x180b, 0x180f}, {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x206f}, {0x3164, 0x3164},
        {0xfe00, 0xfe0f}, {0xfeff, 0xfeff}, {0xffa0, 0xffa0}, {0xfff0, 0xfffb}, {0xe0000, 0xe0fff}};
    return std::ranges::any_of(
        kHidden, [&](const auto &range) { return range.first <= character && character <= range.second; });
}

}  // namespace

size_t sequenceLength(std::string_view text) {
    auto at = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    auto first = static_cast<unsigned char>(at(0));
    if (first >= 0xc2 && first < 0xe0) {
        bool control = first == 0xc2 && at(1) < 0xa0;
        return continuation(static_cast<unsigned char>(at(1))) && !control ? 2 : 0;
    }
    if (first >= 0xe0 && first < 0xf0) {
        bool overlong = first == 0xe0 && at(1) < 0xa0;
        bool surrogate = first == 0xed && at(1) >= 0xa0;
        bool valid = continuation(static_cast<unsigned char>(at(1))) &&
                     continuation(static_cast<unsigned char>(at(2)));
        return valid && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xf0 && first < 0xf5) {
        bool overlong = first == 0xf0 && at(1) < 0x90;
        bool beyond = first == 0xf4 && at(1) >= 0x90;
        bool valid = continuation(static_cast<unsigned char>(at(1))) &&
                     continuation(static_cast<unsigned char>(at(2))) &&
                     continuation(static_cast<unsigned char>(at(3)));
        return valid && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

void appendShown(fmt::memory_buffer &out, std::string_view name) {
    while (!name.empty()) {
        auto end = std::find_if_not(name.begin(), name.end(),
                                    [](char c) { return plain(static_cast<unsigned char>(c)); });
        auto run = static_cast<size_t>(end - name.begin());
        out.append(name.substr(0, run));
        name.remove_prefix(run);
        if (name.empty()) return;

        size_t length = sequenceLength(name);
        // The rest of a hidden character is no sequence, so that each of its bytes is escaped.
        if (length > 0 && !isHidden(characterOf(name.substr(0, length)))) {
            out.append(name.substr(0, length));
        } else {
            length = 1;
            switch (name.front()) {
                case '\n':
                    out.append(std::string_view("\\n"));
                    break;
                case '\t':
                    out.append(std::string_view("\\t"));
                    break;
                case '\\':
                    out.append(std::string_view("\\\\"));
                    break;
                default:
                    fmt::format_to(std::back_inserter(out), "\\x{:02x}",
                                   static_cast<unsigned char>(name.front()));
            }
        }
        name.remove_prefix(length);
    }
}

std::string shown(std::string_view name) {
    fmt::memory_buffer out;
    appendShown(out, name);
    return fmt::to_string(out);
}

std::string inQuotes(std::string_view name) {
    constexpr size_t kReadable = 128;
    if (name.size() <= kReadable) return "'" + shown(name) + "'";
    return "'" + shown(name.substr(0, kReadable)) + "...'";
}

std::string_view boundedText(const void *field, size_t size) {
    const char *text = static_cast<const char *>(field);
    return {text, strnlen(text, size)};
}

std::optional<std::string_view> printableText(Bytes value) {
    if (value.empty() || value.back() != 0) return std::nullopt;
    Bytes text = value.first(value.size() - 1);
    bool printable = std::all_of(text.begin(), text.end(), [](uint8_t c) { return c >= 0x20 && c < 0x7f; });
    if (!printable) return std::nullopt;
    return std::string_view(reinterpret_cast<const char *>(text.data()), text.size());
}

std::string hex(Bytes bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string out;
    out.reserve(bytes.size() * 2);
    for (uint8_t byte : bytes) {
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
    }
    return out;
}

namespace {
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
}

std::string base64(Bytes bytes) {
    std::string out((bytes.size() + 2) / 3 * 4, '=');
    char *to = out.data();
    for (size_t i = 0; i < bytes.size(); i += 3) {
        size_t here = std::min<size_t>(3, bytes.size() - i);
        uint32_t group = uint32_t{bytes[i]} << 16;
        if (here > 1) group |= uint32_t{bytes[i + 1]} << 8;
        if (here > 2) group |= bytes[i + 2];
        for (size_t j = 0; j <= here; j++)
            to[j] = kBase64[group >> (18 - 6 * j) & 63];
        to += 4;
    }
    return out;
}

std::optional<std::vector<uint8_t>> parseBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    for (size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        const size_t digits = last ? 4 - padding : 4;
        uint32_t group = 0;
        for (size_t j = 0; j < 4; j++) {
            const size_t digit = j < digits ? kBase64.find(text[i + j]) : 0;
            if (digit == std::string_view::npos) return std::nullopt;
            group = group << 6 | static_cast<uint32_t>(digit);
        }
        for (size_t j = 0; j + 1 < digits; j++)
            bytes.push_back(static_cast<uint8_t>(group >> (16 - 8 * j)));
        // Bits behind the last byte must be zero, so that equal bytes have one text.
        if (digits < 4 && (group & (digits == 3 ? 0xffu : 0xffffu)) != 0) return std::nullopt;
    }
    return bytes;
}

std::optional<std::string> parseShown(std::string_view text) {
    std::string name;
    while (!text.empty()) {
        const size_t plainLength = std::min(text.find('\\'), text.size());
        name += text.substr(0, plainLength);
        text.remove_prefix(plainLength);
        if (text.empty()) break;
        if (text.size() < 2) return std::nullopt;
        const char kind = text[1];
        std::optional<std::vector<uint8_t>> byte;
        if (kind == 'x' && text.size() >= 4) byte = parseHex(text.substr(2, 2));
        if (kind == 'x' && (!byte || byte->size() != 1)) return std::nullopt;
        if (kind != 'x' && kind != 'n' && kind != 't' && kind != '\\') return std::nullopt;
        name += kind == 'n'   ? '\n'
                : kind == 't' ? '\t'
                : kind == 'x' ? static_cast<char>(byte->front())
                              : '\\';
        text.remove_prefix(kind == 'x' ? 4 : 2);
    }
    return name;
}

void appendHexDump(fmt::memory_buffer &out, Bytes bytes) {
    constexpr size_t kLine = 16;
    bool skipping = false;
    for (size_t offset = 0; offset < bytes.size(); offset += kLine) {
        Bytes line = bytes.subspan(offset, std::min(kLine, bytes.size() - offset));
        bool last = offset + kLine >= bytes.size();
        if (offset > 0 && !last &&
            std::equal(line.begin(), line.end(), bytes.begin() + static_cast<long>(offset - kLine))) {
            if (!skipping) out.append(std::string_view("  *\n"));
            skipping = true;
            continue;
        }
        skipping = false;
        fmt::format_to(std::back_inserter(out), "  {:04x} {:02x}\n", offset,
                       fmt::join(line.begin(), line.end(), " "));
    }
}

std::optional<uint32_t> parseNumber(std::string_view text) {
    return parseUnsigned<uint32_t>(text);
}

std::optional<uint64_t> parseWideNumber(std::string_view text) {
    return parseUnsigned<uint64_t>(text);
}

std::optional<std::vector<uint8_t>> parseHex(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == ':') {
            i++;
            continue;
        }
        int high = hexDigit(text[i]);
        int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        bytes.push_back(static_cast<uint8_t>(high << 4 | low));
        i += 2;
    }
    return bytes;
}

std::optional<MacAddress> parseMac(std::string_view text) {
    constexpr size_t kLength = 17;
    MacAddress address{};
    if (text.size() != kLength) return std::nullopt;
    for (size_t i = 0; i < address.size(); i++) {
        std::optional<std::vector<uint8_t>> byte = parseHex(text.substr(3 * i, 2));
        if (!byte || byte->size() != 1) return std::nullopt;
        if (i > 0 && text[3 * i - 1] != ':') return std::nullopt;
        address[i] = byte->front();
    }
    return address;
}

std::string macText(Bytes address) {
    return fmt::format("{:02x}", fmt::join(address.begin(), address.end(), ":"));
}

size_t distanceBetween(std::string_view one, std::string_view other) {
    // Rows of the table of the distances between the beginnings: that of two letters before, of one, and now.
    std::vector<size_t> earlier;
    std::vector<size_t> before(other.size() + 1);
    std::vector<size_t> row(other.size() + 1);
    for (size_t j = 0; j < row.size(); j++)
        row[j] = j;
    for (size_t i = 1; i <= one.size(); i++) {
        earlier = std::exchange(before, row);
        row[0] = i;
        for (size_t j = 1; j < row.size(); j++) {
            const size_t replaced = before[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, before[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                row[j] = std::min(row[j], earlier[j - 2] + 1);
        }
    }
    return row.back();
}

void requireFits(const Limit &limit, std::string_view name) {
    if (name.empty()) fail(Exit::Usage, "{}: may not be empty", limit.what);
    if (name.size() > limit.bytes) {
        fail(Exit::Usage, "{} {}: {} bytes, at most {} fit", limit.what, inQuotes(name), name.size(),
             limit.bytes);
    }
}

}  // namespace qvs
