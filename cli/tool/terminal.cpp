// SPDX-License-Identifier: Apache-2.0
#include "tool/terminal.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>

#include "tool/program.h"

namespace qvs::cli {
namespace {

constexpr size_t kUsualColumns = 80;  // if the terminal does not report its size
constexpr size_t kLeastColumns = 20;
constexpr size_t kMostColumns = 10000;
constexpr size_t kMostProse = 100;
constexpr size_t kUnlimited = SIZE_MAX / 4;  // small enough for sums

// The value of COLUMNS, if it is a number of columns.
std::optional<size_t> columnsSet() {
    const char *set = std::getenv("COLUMNS");
    if (set == nullptr) return std::nullopt;
    const char *end = set + std::strlen(set);
    size_t columns = 0;
    const auto [rest, error] = std::from_chars(set, end, columns);
    if (error != std::errc() || rest != end || columns == 0 || columns > kMostColumns) return std::nullopt;
    return std::max(columns, kLeastColumns);
}

// The columns of the terminal behind a file descriptor, if there is one.
std::optional<size_t> columnsBehind(int file) {
    if (isatty(file) != 1) return std::nullopt;
    if (const auto set = columnsSet()) return set;
    struct winsize size {};
    if (ioctl(file, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
    return std::max<size_t>(size.ws_col, kLeastColumns);
}

}  // namespace

std::optional<size_t> terminalColumns() {
    return columnsBehind(STDOUT_FILENO);
}

size_t proseColumns() {
    const std::optional<size_t> terminal = terminalColumns();
    const std::optional<size_t> columns = terminal ? terminal : columnsSet();
    return columns ? std::min(*columns, kMostProse) : kUnlimited;
}

size_t messageColumns() {
    const std::optional<size_t> columns = columnsBehind(STDERR_FILENO);
    if (!columns) return kUnlimited;
    const size_t before = std::string_view(program().name).size() + 2;  // "qvs: "
    return std::max(std::min(*columns, kMostProse) - before, kLeastColumns);
}

bool showsBold() {
    const char *refused = std::getenv("NO_COLOR");
    const char *type = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0') &&
           (type == nullptr || std::string_view(type) != "dumb");
}

void appendWrapped(std::string &out, std::string_view text, size_t at, size_t indent, size_t most) {
    bool first = true;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of(" \n"), text.size());
        const std::string_view word = text.substr(0, end);
        const size_t columns = columnsOf(word);
        if (!first && at + 1 + columns > most) {
            out += '\n' + std::string(indent, ' ');
            at = indent;
        } else if (!first) {
            out += ' ';
            at++;
        }
        out += word;
        at += columns;
        first = false;
        if (end < text.size() && text[end] == '\n') {
            out += '\n' + std::string(indent, ' ');
            at = indent;
            first = true;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace qvs::cli
