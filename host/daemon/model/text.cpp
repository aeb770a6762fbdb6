// SPDX-License-Identifier: Apache-2.0
// Text forms of bytes, words, addresses and errors.
#include "daemon/model/text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <fmt/format.h>

#include "wire/fault.h"

namespace qvs::kernel {

namespace {

bool printable(char c) {
    return c >= 0x20 && c <= 0x7e;
}

bool plain(char c) {
    constexpr std::string_view kPlain = "_@%+=:,./-";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPlain.find(c) != std::string_view::npos;
}

void appendHex(char c, std::string *result) {
    constexpr char kDigits[] = "0123456789abcdef";
    *result += kDigits[static_cast<uint8_t>(c) >> 4];
    *result += kDigits[static_cast<uint8_t>(c) & 15];
}

std::string leftOut(size_t bytes) {
    return fmt::format("+{} bytes", bytes);
}

}  // namespace

std::string quote(std::string_view text) {
    std::string result = "\"";
    for (const char c : text.substr(0, kShownText)) {
        if (c == '\n') {
            result += "\\n";
        } else if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (printable(c)) {
            result += c;
        } else {
            result += "\\x";
            appendHex(c, &result);
        }
    }
    result += '"';
    if (text.size() > kShownText) result += leftOut(text.size() - kShownText);
    return result;
}

std::string shellWord(std::string_view text) {
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), plain);
    return isPlain ? std::string(text) : quote(text);
}

std::string hexDigits(std::string_view bytes, std::string_view between) {
    std::string result;
    for (const char c : bytes) {
        if (!result.empty()) result += between;
        appendHex(c, &result);
    }
    return result;
}

std::string hexRuns(std::string_view bytes) {
    std::string result;
    const std::string_view shown = bytes.substr(0, kShownArea);
    for (size_t at = 0; at < shown.size(); ++at) {
        if (shown[at] == 0) continue;
        if (at == 0 || shown[at - 1] == 0) {
            if (!result.empty()) result += ' ';
            (result += std::to_string(at)) += ':';
        }
        appendHex(shown[at], &result);
    }
    if (bytes.size() == shown.size()) return result;
    return result + (result.empty() ? "" : " ") + leftOut(bytes.size() - shown.size());
}

std::optional<std::string> parseHex(std::string_view digits) {
    std::string bytes;
    if (digits.size() % 2 != 0) return std::nullopt;
    for (size_t at = 0; at < digits.size(); at += 2) {
        const auto byte = wire::numberOf<uint8_t>(digits.substr(at, 2), 16);
        if (!byte) return std::nullopt;
        bytes += static_cast<char>(*byte);
    }
    return bytes;
}

std::optional<std::string> parseMac(std::string_view text) {
    constexpr size_t kLength = 17;
    if (text.size() != kLength) return std::nullopt;
    std::string digits(text.substr(0, 2));
    for (size_t at = 2; at < kLength; at += 3) {
        if (text[at] != ':') return std::nullopt;
        digits += text.substr(at + 1, 2);
    }
    return parseHex(digits);
}

std::optional<std::string> parseIp(const std::string &text) {
    char bytes[sizeof(in6_addr)];
    if (inet_pton(AF_INET, text.c_str(), bytes) == 1) return std::string(bytes, sizeof(in_addr));
    if (inet_pton(AF_INET6, text.c_str(), bytes) == 1) return std::string(bytes, sizeof bytes);
    return std::nullopt;
}

std::string errnoName(int error) {
    if (error == 0) return "0";
    const char *name = strerrorname_np(error);
    return name != nullptr ? name : std::to_string(error);
}

}  // namespace qvs::kernel
