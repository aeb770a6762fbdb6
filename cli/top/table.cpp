// SPDX-License-Identifier: Apache-2.0
#include "top/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "base/columns.h"
#include "base/natural.h"
#include "base/quantity.h"

namespace qvs::top {
namespace {

struct SortName {
    Sort sort;
    std::string_view name;
};
constexpr std::array<SortName, 7> kSorts = {{{Sort::Total, "total"},
                                             {Sort::BitsIn, "bits in"},
                                             {Sort::BitsOut, "bits out"},
                                             {Sort::PacketsIn, "packets in"},
                                             {Sort::PacketsOut, "packets out"},
                                             {Sort::Dropped, "dropped"},
                                             {Sort::Name, "name"}}};

double keyOf(const Port &port, Sort sort) {
    if (sort == Sort::Total || !port.rates) return port.total();
    constexpr std::array<RateKind, 5> kKinds = {BitsIn, BitsOut, PacketsIn, PacketsOut, Dropped};
    return (*port.rates)[kKinds[static_cast<size_t>(sort) - static_cast<size_t>(Sort::BitsIn)]];
}

bool before(const Port &left, const Port &right) {
    if (left.owner != right.owner) return namedBefore(left.owner, right.owner);
    return namedBefore(left.id, right.id);
}

bool contains(const Port &port, std::string_view text) {
    for (const std::string *name : {&port.owner, &port.id, &port.client, &port.vlan, &port.state})
        if (name->find(text) != std::string::npos) return true;
    return false;
}

struct Column {
    std::string_view heading;
    size_t least;  // columns of the terminal
    size_t most;
    int worth;  // what is worth less is left out first, and what is worth the same together
    bool right;
    std::string (*text)(const Port &port);
    Sort sort;
};

template <RateKind kind>
std::string rateText(const Port &port) {
    return port.rates ? quantityText((*port.rates)[kind]) : "-";
}

std::string orDash(const std::string &text) {
    return text.empty() ? "-" : text;
}

constexpr size_t kRate = 8;
const Column kColumns[] = {
    {"PORT", 12, 47, 9, false, [](const Port &port) { return port.id; }, Sort::Name},
    {"SWITCH", 8, 30, 4, false, [](const Port &port) { return port.owner; }, Sort::Name},
    {"CLIENT", 8, 40, 5, false, [](const Port &port) { return orDash(port.client); }, Sort::Name},
    {"VLAN", 4, 20, 2, false, [](const Port &port) { return orDash(port.vlan); }, Sort::Name},
    {"STATE", 7, 7, 3, false, [](const Port &port) { return port.state; }, Sort::Name},
    {"IN b/s", kRate, kRate, 8, true, rateText<BitsIn>, Sort::BitsIn},
    {"OUT b/s", kRate, kRate, 8, true, rateText<BitsOut>, Sort::BitsOut},
    {"IN p/s", kRate, kRate, 1, true, rateText<PacketsIn>, Sort::PacketsIn},
    {"OUT p/s", kRate, kRate, 1, true, rateText<PacketsOut>, Sort::PacketsOut},
    {"DROP/s", kRate, kRate, 7, true, rateText<Dropped>, Sort::Dropped},
};
constexpr size_t kGap = 1;

struct Placed {
    const Column *column;
    size_t width;
};

size_t widthOf(const std::vector<Placed> &placed) {
    size_t width = 0;
    for (const Placed &each : placed)
        width += each.width + (width == 0 ? 0 : kGap);
    return width;
}

// As wide as what is in them, then narrower, then fewer. The column of the order stays.
std::vector<Placed> place(const std::vector<const Port *> &ports, size_t columns, Sort sort) {
    const auto worthOf = [sort](const Placed &placed) {
        return placed.column->worth + (placed.column->sort == sort && sort != Sort::Name ? 10 : 0);
    };
    std::vector<Placed> placed;
    for (const Column &column : kColumns) {
        size_t width = std::max(column.least, column.heading.size());
        for (const Port *port : ports)
            if (column.least < column.most && width < column.most)
                width = std::max(width, columnsOf(column.text(*port)));
        placed.push_back({&column, std::min(width, column.most)});
    }
    for (;;) {
        const size_t width = widthOf(placed);
        if (width <= columns || placed.size() == 1) break;
        size_t over = width - columns;
        size_t spare = 0;
        for (const Placed &each : placed)
            spare += each.width - std::min(each.width, each.column->least);
        if (spare < over) {
            const int least = worthOf(*std::ranges::min_element(placed, {}, worthOf));
            std::erase_if(placed, [&](const Placed &each) { return worthOf(each) == least; });
            continue;
        }
        // The widest gives way.
        for (; over > 0; over--)
            std::ranges::max_element(placed, {}, [](const Placed &each) {
                return each.width - std::min(each.width, each.column->least);
            })->width--;
    }
    return placed;
}

// "12.5 k", in front of a unit.
std::string withUnit(double rate) {
    std::string text = quantityText(rate);
    const bool step = text.back() < '0' || text.back() > '9';
    text.insert(step ? text.size() - 1 : text.size(), " ");
    return text;
}

}  // namespace

std::string_view nameOf(Sort sort) {
    return kSorts[static_cast<size_t>(sort)].name;
}

std::vector<const Port *> chosenPorts(const Sample &sample, const Choice &choice) {
    std::vector<const Port *> ports;
    for (const Port &port : sample.ports) {
        if (!choice.idle && port.idle()) continue;
        if (choice.filter.empty() || contains(port, choice.filter)) ports.push_back(&port);
    }
    std::ranges::stable_sort(ports, [&](const Port *left, const Port *right) {
        if (choice.sort != Sort::Name) {
            const double keyLeft = keyOf(*left, choice.sort);
            const double keyRight = keyOf(*right, choice.sort);
            if (keyLeft != keyRight) return choice.reverse ? keyLeft < keyRight : keyLeft > keyRight;
            return before(*left, *right);
        }
        return choice.reverse ? before(*right, *left) : before(*left, *right);
    });
    return ports;
}

std::string fitted(std::string_view text, size_t columns, bool right) {
    // Without room there is no room for the mark of a cut either.
    const std::string cut = columns == 0 ? "" : cutTo(text, columns, MB_CUR_MAX > 1 ? "…" : "~");
    const std::string blanks(columns - std::min(columnsOf(cut), columns), ' ');
    return right ? blanks + cut : cut + blanks;
}

Lines tableOf(const std::vector<const Port *> &ports, size_t first, size_t count, size_t columns, Sort sort) {
    first = std::min(first, ports.size());
    const auto begin = ports.begin() + static_cast<long>(first);
    const std::vector<const Port *> shown(begin,
                                          begin + static_cast<long>(std::min(count, ports.size() - first)));
    // Of all ports, so that rows that come into view move no column.
    const std::vector<Placed> placed = place(ports, columns, sort);
    auto line = [&](auto text) {
        std::string made;
        for (const Placed &each : placed) {
            if (!made.empty()) made.append(kGap, ' ');
            made += fitted(text(*each.column), each.width, each.column->right);
        }
        return fitted(made, columns);
    };
    Lines lines;
    lines.heading = line([&](const Column &column) {
        // The columns that the order is by; of names, the first alone.
        const bool total =
            sort == Sort::Total && (column.sort == Sort::BitsIn || column.sort == Sort::BitsOut);
        const bool marked = total || (column.sort == sort && (sort != Sort::Name || &column == kColumns));
        return std::string(marked ? "*" : "") + std::string(column.heading);
    });
    for (const Port *port : shown)
        lines.rows.push_back(line([&](const Column &column) { return column.text(*port); }));
    return lines;
}

std::string sumsOf(const std::vector<const Port *> &ports) {
    const std::string count = fmt::format("{} port{}", ports.size(), ports.size() == 1 ? "" : "s");
    const auto known = [](const Port *port) { return port->rates.has_value(); };
    if (!ports.empty() && std::ranges::none_of(ports, known))
        return count + ": the next look gives the rates";
    std::array<double, kRateKinds> sums{};
    for (const Port *port : ports)
        for (size_t i = 0; port->rates && i < sums.size(); i++)
            sums[i] += (*port->rates)[i];
    return fmt::format("{}: in {}bit/s, {}p/s; out {}bit/s, {}p/s; dropped {}p/s", count,
                       withUnit(sums[BitsIn]), withUnit(sums[PacketsIn]), withUnit(sums[BitsOut]),
                       withUnit(sums[PacketsOut]), withUnit(sums[Dropped]));
}

}  // namespace qvs::top
