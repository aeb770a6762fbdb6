// SPDX-License-Identifier: Apache-2.0
// Tables: the widths of their columns, and how they are made to fit a terminal.
#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "tool/output.h"
#include "tool/terminal.h"

namespace qvs::cli {
namespace {

// The least width to which a column is cut, and a column of numbers, which are not cut themselves.
constexpr size_t kLeastColumn = 6;
constexpr size_t kLeastNumbers = 5;
constexpr size_t kBetweenColumns = 2;

size_t wholeOf(const std::vector<size_t> &widths) {
    return std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * kBetweenColumns);
}

// Makes a row fit. Leaves out spare columns from the last one on, by giving them no width. Then reduces the
// widest column that may be cut, until the row fits or no column can be reduced further.
void narrow(std::vector<size_t> &widths, const std::vector<bool> &spare, const std::vector<size_t> &least,
            size_t most) {
    size_t whole = wholeOf(widths);
    for (size_t i = widths.size(); i-- > 0 && whole > most;) {
        if (!spare[i]) continue;
        whole -= widths[i] + kBetweenColumns;
        widths[i] = 0;
    }
    while (whole > most) {
        size_t widest = widths.size();
        for (size_t i = 0; i < widths.size(); i++) {
            if (widths[i] <= least[i]) continue;
            if (widest == widths.size() || widths[i] > widths[widest]) widest = i;
        }
        if (widest == widths.size()) return;
        widths[widest]--;
        whole--;
    }
}

}  // namespace

Listing::Listing(Output &out, std::vector<Column> columns) : out_(out), columns_(std::move(columns)) {
    if (out_.json()) {
        put(out_.buffer(), "[");
        return;
    }
    for (const Column &column : columns_) {
        if (column.heading == nullptr) continue;
        put(cells_, column.heading);
        bare_.push_back(std::string_view(column.heading).size());
        if (*column.unit != '\0') fmt::format_to(std::back_inserter(cells_), " ({})", column.unit);
        endCell();
    }
}

void Listing::beginRow() {
    if (out_.json()) put(out_.buffer(), first_ ? "\n{" : ",\n{");
    first_ = false;
}

void Listing::endRow() {
    if (!out_.json()) return;
    put(out_.buffer(), "}");
    out_.drain();
}

void Listing::appendKey(size_t column) {
    if (column > 0) out_.buffer().push_back(',');
    appendJson(out_.buffer(), std::string_view(columns_[column].key));
    out_.buffer().push_back(':');
}

void Listing::endCell() {
    size_t begin = ends_.empty() ? 0 : ends_.back();
    if (cells_.size() == begin) cells_.push_back('-');
    ends_.push_back(cells_.size());
}

std::string_view Listing::cellAt(size_t index) const {
    const size_t begin = index == 0 ? 0 : ends_[index - 1];
    if (isBare_ && index < bare_.size()) return {cells_.data() + begin, bare_[index]};
    return {cells_.data() + begin, ends_[index] - begin};
}

// Numbers keep their width, since a cut number would be a different number. Their headings may be cut, after
// all units have been left out.
std::vector<size_t> Listing::widths(size_t columns) {
    std::vector<size_t> widths(columns, 0);
    std::vector<size_t> least(columns, kLeastNumbers);
    std::vector<bool> hasText(columns, false);
    for (size_t i = 0; i < ends_.size(); i++) {
        const std::string_view cell = cellAt(i);
        const size_t column = i % columns;
        widths[column] = std::max(widths[column], columnsOf(cell));
        if (i < columns) continue;
        if (cell.find_first_not_of("0123456789-") != std::string_view::npos) hasText[column] = true;
        least[column] = std::max(least[column], cell.size());
    }
    for (size_t i = 0; i < columns; i++)
        if (hasText[i]) least[i] = kLeastColumn;
    const std::optional<size_t> most = out_.wide() ? std::nullopt : terminalColumns();
    if (!most || wholeOf(widths) <= *most) return widths;
    if (!std::exchange(isBare_, true)) return this->widths(columns);
    std::vector<bool> spare;
    for (const Column &column : columns_)
        if (column.heading != nullptr) spare.push_back(column.spare);
    narrow(widths, spare, least, *most);
    return widths;
}

void Listing::finish() {
    if (out_.json()) {
        put(out_.buffer(), first_ ? "]\n" : "\n]\n");
        return;
    }
    auto columns = static_cast<size_t>(std::count_if(columns_.begin(), columns_.end(),
                                                     [](const Column &c) { return c.heading != nullptr; }));
    const std::vector<size_t> width = widths(columns);
    size_t last = columns - 1;
    while (last > 0 && width[last] == 0)
        last--;
    const bool bold = showsBold();
    if (bold) out_.write("\x1b[1m");
    for (size_t i = 0; i < ends_.size(); i++) {
        const std::string_view cell = cellAt(i);
        const size_t room = width[i % columns];
        if (room == 0) continue;
        size_t used = columnsOf(cell);
        if (used > room) {
            const std::string shorter = cutTo(cell, room);
            used = columnsOf(shorter);
            put(out_.buffer(), shorter);
        } else {
            put(out_.buffer(), cell);
        }
        if (i % columns != last) {
            const size_t blanks = room - used + kBetweenColumns;
            out_.buffer().resize(out_.buffer().size() + blanks);
            std::fill_n(out_.buffer().end() - static_cast<long>(blanks), blanks, ' ');
            continue;
        }
        if (bold && i == last) out_.write("\x1b[0m");
        out_.write("\n");
    }
}

}  // namespace qvs::cli
