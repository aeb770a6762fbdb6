// SPDX-License-Identifier: Apache-2.0
#include "views/tree.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tool/terminal.h"

namespace qvs::cli {
namespace {

struct Strokes {
    std::string_view between;
    std::string_view last;
    std::string_view past;
};
constexpr Strokes kLines{"├─ ", "└─ ", "│  "};
constexpr Strokes kPlain{"|- ", "`- ", "|  "};

// The first of these variables that is set names the characters of the terminal.
bool showsUnicode() {
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char *set = std::getenv(name);
        if (set == nullptr || *set == '\0') continue;
        const std::string_view locale = set;
        return locale.find("UTF-8") != std::string_view::npos ||
               locale.find("utf8") != std::string_view::npos;
    }
    return false;
}

// Writes a text in as many lines as the terminal needs. Lines behind the first begin with `further`.
void writeLines(Output &out, std::string_view first, const std::string &further, std::string_view text) {
    out.write(first);
    const size_t most = out.wide() ? SIZE_MAX : terminalColumns().value_or(SIZE_MAX);
    const size_t before = columnsOf(further);
    if (before + columnsOf(text) <= most || before >= most) {
        out.write(text);
        return out.write("\n");
    }
    std::string wrapped;
    appendWrapped(wrapped, text, 0, 0, most - before);
    std::string_view rest = wrapped;
    for (bool begins = true; !rest.empty(); begins = false) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        // Blanks that aligned a column would begin and end lines.
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string_view::npos) continue;
        line = line.substr(start, line.find_last_not_of(' ') + 1 - start);
        if (!begins) out.write(further);
        out.write(line);
        out.write("\n");
    }
}

void print(Output &out, const Strokes &strokes, const Branch &branch, const std::string &indent) {
    for (const Branch &each : branch.branches) {
        const bool last = &each == &branch.branches.back();
        const std::string below = indent + std::string(last ? "   " : strokes.past);
        writeLines(out, indent + std::string(last ? strokes.last : strokes.between), below + "  ", each.text);
        print(out, strokes, each, below);
    }
}

}  // namespace

std::string tinted(std::string_view text, Tint tint) {
    if (!showsBold()) return std::string(text);
    return fmt::format("\x1b[{}m{}\x1b[0m", tint == Tint::Red ? 31 : 33, text);
}

std::vector<std::string> aligned(const std::vector<std::vector<std::string>> &rows) {
    std::vector<size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    std::vector<std::string> lines;
    for (const auto &row : rows) {
        std::string &line = lines.emplace_back();
        for (size_t i = 0; i < row.size(); i++) {
            line += row[i];
            // A column that is empty in all rows takes no room.
            if (widths[i] > 0) line.append(widths[i] - columnsOf(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

void printTree(Output &out, const Branch &root) {
    writeLines(out, "", "  ", root.text);
    print(out, out.terminal() && showsUnicode() ? kLines : kPlain, root, "");
}

}  // namespace qvs::cli
