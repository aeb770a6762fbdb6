// SPDX-License-Identifier: Apache-2.0
#include "tool/values.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tool/failure.h"

namespace qvs::cli {

uint32_t chosen(const Arguments &arguments, std::string_view name, Names names) {
    const std::string &text = arguments.text(name);
    auto it = std::find(names.begin(), names.end(), text);
    if (it == names.end())
        fail(Exit::Usage, "{}: {} is none of {}", name, inQuotes(text), fmt::join(names, ", "));
    return static_cast<uint32_t>(it - names.begin());
}

std::string nameOf(Names names, uint32_t number) {
    return number < names.size() ? names[number] : fmt::to_string(number);
}

uint32_t numberIn(std::string_view name, const std::string &text, uint32_t least, uint32_t most) {
    const std::optional<uint32_t> value = parseNumber(text);
    if (!value || *value < least || *value > most)
        fail(Exit::Usage, "{}: {} is not a number from {} to {}", name, inQuotes(text), least, most);
    return *value;
}

void checkHex(std::string_view name, const std::string &text) {
    if (!parseHex(text)) fail(Exit::Usage, "{}: {} is not a row of pairs of digits", name, inQuotes(text));
}

uint64_t wideNumber(const Arguments &arguments, std::string_view name) {
    if (!arguments.given(name)) return 0;
    const std::string &text = arguments.text(name);
    std::optional<uint64_t> number = parseWideNumber(text);
    if (!number) fail(Exit::Usage, "{}: {} is not a number of 64 bits", name, inQuotes(text));
    return *number;
}

std::vector<std::string> splitList(std::string_view text) {
    std::vector<std::string> items;
    if (text.empty()) return items;
    for (;;) {
        size_t comma = text.find(',');
        items.emplace_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return items;
        text.remove_prefix(comma + 1);
    }
}

std::string_view oneGiven(const Arguments &arguments, const std::vector<const char *> &names) {
    std::string_view found;
    for (const char *name : names) {
        if (!arguments.given(name)) continue;
        if (!found.empty()) fail(Exit::Usage, "{} and {} exclude each other", found, name);
        found = name;
    }
    if (found.empty()) fail(Exit::Usage, "one of {} is needed", fmt::join(names, ", "));
    return found;
}

std::vector<uint8_t> readFile(const std::string &path, size_t most, bool (*enough)(Bytes)) {
    constexpr size_t kPiece = 65536;
    std::string what = "file " + inQuotes(path);
    int fd = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::vector<uint8_t> bytes;
    ssize_t got = fd < 0 ? -1 : 1;
    // One byte more than allowed is read, to detect a file that is too large.
    while (got > 0 && bytes.size() <= most) {
        size_t size = bytes.size();
        size_t piece = std::min(kPiece, most + 1 - size);
        bytes.resize(size + piece);
        got = read(fd, &bytes[size], piece);
        bytes.resize(size + static_cast<size_t>(std::max<ssize_t>(got, 0)));
        if (enough != nullptr && enough(Bytes(bytes).subspan(size))) break;
    }
    int error = errno;
    if (fd >= 0) close(fd);
    if (got < 0) fail(Exit::Failed, "{}: {}", what, std::strerror(error));
    if (bytes.size() > most) fail(Exit::Usage, "{}: more than {} bytes, which is all that fits", what, most);
    return bytes;
}

std::vector<uint8_t> bytesGiven(const Arguments &arguments, const char *argument) {
    if (oneGiven(arguments, {argument, "--file"}) == "--file") return readFile(arguments.text("--file"));
    checkHex(argument, arguments.text(argument));
    return *parseHex(arguments.text(argument));
}

}  // namespace qvs::cli
