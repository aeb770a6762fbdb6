// SPDX-License-Identifier: Apache-2.0
#include "config/document/quoting.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace qvs::config {
namespace {

// Characters of UTF-8 that some readers take for the end of a line, or leave out.
struct Special {
    std::string_view bytes;
    std::string_view escape;
};
constexpr Special kSpecial[] = {
    {"\xe2\x80\xa8", "\\u2028"}, {"\xe2\x80\xa9", "\\u2029"}, {"\xef\xbb\xbf", "\\ufeff"}};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Words that YAML 1.1 or 1.2 reads as a boolean or null, in any case.
bool isYamlWord(std::string_view text) {
    constexpr std::array<std::string_view, 9> kWords = {"y",   "n",    "yes",   "no",  "on",
                                                        "off", "true", "false", "null"};
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return std::ranges::find(kWords, lower) != kWords.end();
}

// Whether YAML reads the text without quotes as this text, also within brackets. Texts that begin like a
// number are left to the quotes unless blanks make them a text.
bool isPlain(std::string_view text) {
    if (text.empty() || isYamlWord(text) || text.back() == ' ') return false;
    const char first = text.front();
    if (!isLetter(first) && !isDigit(first) && first != '_' && first != '/') return false;
    if (isDigit(first) && text.find(' ') == std::string_view::npos) return false;
    return std::ranges::all_of(text, [](char c) {
        return isLetter(c) || isDigit(c) || std::string_view("_/.-+= ").find(c) != std::string_view::npos;
    });
}

// Text in double quotes with the escapes that YAML and JSON share.
std::string inDoubleQuotes(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const auto special =
            std::ranges::find_if(kSpecial, [&](const Special &each) { return text.starts_with(each.bytes); });
        if (special != std::end(kSpecial)) {
            quoted += special->escape;
            text.remove_prefix(special->bytes.size());
            continue;
        }
        if (text.front() == '"' || text.front() == '\\') quoted += '\\';
        quoted += text.front();
        text.remove_prefix(1);
    }
    return quoted + '"';
}

}  // namespace

std::string documentText(std::string_view bytes) {
    constexpr std::string_view kReplacement = "\xef\xbf\xbd";
    std::string text = shown(bytes);
    for (size_t at = text.find(kReplacement); at != std::string::npos; at = text.find(kReplacement, at))
        text.replace(at, kReplacement.size(), "\\xef\\xbf\\xbd");
    return text;
}

std::string quotedForYaml(std::string_view text) {
    if (isPlain(text)) return std::string(text);
    for (const Special &special : kSpecial)
        if (text.find(special.bytes) != std::string_view::npos) return inDoubleQuotes(text);
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'') quoted += c;
        quoted += c;
    }
    return quoted + '\'';
}

std::string quotedForJson(std::string_view text) {
    return inDoubleQuotes(text);
}

}  // namespace qvs::config
