// SPDX-License-Identifier: Apache-2.0
#include "views/port_list.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "access/library.h"
#include "access/overview.h"
#include "access/setting.h"
#include "access/team_hint.h"
#include "tool/values.h"
#include "views/facts_json.h"
#include "views/port_words.h"

namespace qvs::cli {
namespace {

using Policies = const std::vector<Policy> *;

// The value of a cell, of any of the types that ports have.
struct Cell {
    std::variant<std::optional<std::string_view>, std::optional<uint32_t>, Flag, Policies> value;
};

void appendJson(fmt::memory_buffer &out, const Cell &cell) {
    std::visit(
        [&](const auto &value) {
            using cli::appendJson;
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, Policies>) {
                appendJson(out, *value);
            } else {
                appendJson(out, value);
            }
        },
        cell.value);
}

void appendText(fmt::memory_buffer &out, const Cell &cell) {
    std::visit(
        [&](const auto &value) {
            using cli::appendText;
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, Policies>) {
                appendText(out, std::string_view(policyDetails(*value)));
            } else {
                appendText(out, value);
            }
        },
        cell.value);
}

// Where a column stands without --columns.
enum class Usual { Nowhere, Everywhere, InText, InJson };

struct PortColumn {
    const char *name;     // for --columns
    const char *key;      // in JSON
    const char *heading;  // in text
    Usual usual;
    bool spare;  // left out on a narrow terminal, unless --columns names it
    Cell (*cell)(const SwitchFacts &facts, const PortFacts &port);
};

Cell ofUplink(const SwitchFacts &facts, const PortFacts &port) {
    const std::optional<size_t> place = port.uplink ? port.uplink : port.carrier;
    if (!place) return {std::optional<std::string_view>()};
    return {std::optional<std::string_view>(facts.uplinks[*place].name)};
}

Cell ofVlan(const SwitchFacts &, const PortFacts &port) {
    if (port.vlan.empty()) return {std::optional<std::string_view>()};
    return {std::optional<std::string_view>(port.vlan)};
}

constexpr PortColumn kPortColumns[] = {
    {"port", "port", "PORT", Usual::Everywhere, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{std::optional(port.id)}; }},
    {"number", "number", "NUMBER", Usual::Everywhere, true,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{port.number}; }},
    {"state", "state", "STATE", Usual::InText, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{std::optional(portState(port))}; }},
    {"in-use", "inUse", "IN USE", Usual::InJson, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{Flag{port.inUse}}; }},
    {"link", "linkUp", "LINK", Usual::InJson, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{linkState(port.linkUp)}; }},
    {"client", "client", "CLIENT", Usual::Everywhere, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{port.client}; }},
    {"connect-id", "connectId", "CONNECT ID", Usual::Everywhere, true,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{port.connectId}; }},
    {"alias", "alias", "ALIAS", Usual::Nowhere, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{port.alias}; }},
    {"external-id", "externalId", "EXTERNAL ID", Usual::Nowhere, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{port.externalId}; }},
    {"uplink", "uplink", "UPLINK", Usual::Nowhere, false, ofUplink},
    {"blocked", "blocked", "BLOCKED", Usual::InJson, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{Flag{port.blocked}}; }},
    {"vlan", "vlan", "VLAN", Usual::Everywhere, false, ofVlan},
    {"policies", "policies", "POLICIES", Usual::Everywhere, false,
     [](const SwitchFacts &, const PortFacts &port) { return Cell{&port.policies}; }},
};

std::vector<const PortColumn *> parseColumns(const std::string &text) {
    std::vector<const PortColumn *> columns;
    for (const std::string &name : splitList(text)) {
        const auto *column = std::ranges::find(kPortColumns, name, &PortColumn::name);
        std::string names;
        for (const PortColumn &each : kPortColumns)
            names += fmt::format("{}{}", names.empty() ? "" : ", ", each.name);
        if (column == std::end(kPortColumns))
            fail(Exit::Usage, "--columns: {} is none of {}", inQuotes(name), names);
        if (std::ranges::find(columns, column) != columns.end())
            fail(Exit::Usage, "--columns: {} is given twice", inQuotes(name));
        columns.push_back(column);
    }
    if (columns.empty()) fail(Exit::Usage, "--columns: is empty");
    return columns;
}

void checkColumns(std::string_view, const std::string &text) {
    (void)parseColumns(text);
}

std::vector<const PortColumn *> columnsGiven(const Arguments &arguments, bool json) {
    if (arguments.given("--columns")) return parseColumns(arguments.text("--columns"));
    std::vector<const PortColumn *> columns;
    for (const PortColumn &column : kPortColumns)
        if (column.usual == Usual::Everywhere || column.usual == (json ? Usual::InJson : Usual::InText))
            columns.push_back(&column);
    return columns;
}

constexpr auto kColumnNames = [] {
    std::array<const char *, std::size(kPortColumns)> names{};
    std::ranges::transform(kPortColumns, names.begin(), &PortColumn::name);
    return names;
}();

}  // namespace

const Option kColumnsOption{.name = "--columns",
                            .value = "NAME,...",
                            .summary =
                                "show these columns: port, number, state, in-use, link, client, connect-id, "
                                "alias, external-id, uplink, blocked, vlan, policies",
                            .excludes = kKernelOption,
                            .choices = kColumnNames,
                            .open = true,
                            .list = true,
                            .check = checkColumns};

const Option kVlanOption{
    .name = "--vlan",
    .value = "N",
    .summary = "the ports in this VLAN, and those whose trunk carries it, without uplinks",
    .excludes = kKernelOption,
    .check = checkNumber<1, QVS_VLAN_MAX>};

void listPorts(DVSSwitch *sw, const Arguments &arguments, Output &out) {
    const std::vector<const PortColumn *> columns = columnsGiven(arguments, out.json());
    SwitchFacts facts = gatherSwitch(sw, Ask::SnapshotAlone);
    if (std::ranges::any_of(columns, [](const PortColumn *column) { return column->cell == ofUplink; }))
        askCarriers(arguments, facts);
    std::vector<const PortFacts *> ports;
    const bool all = !arguments.given(kVlanOption.name);
    const uint32_t vlan = arguments.number(kVlanOption.name, 0);
    for (const PortFacts &port : facts.ports)
        if (all || (!port.uplink && carriesVlan(port.vlanPolicy, vlan))) ports.push_back(&port);
    std::ranges::sort(ports, {}, &PortFacts::index);
    if (arguments.given(kNames.name)) {
        NameList names(out);
        for (const PortFacts *port : ports)
            names.add(port->id);
        return names.finish();
    }

    std::vector<Column> headings;
    headings.reserve(columns.size());
    for (const PortColumn *column : columns)
        headings.push_back({column->key, column->heading, column->spare && !arguments.given("--columns")});
    Listing listing(out, std::move(headings));
    std::vector<Cell> cells(columns.size(), Cell{Flag{false}});
    for (const PortFacts *port : ports) {
        std::ranges::transform(columns, cells.begin(),
                               [&](const PortColumn *column) { return column->cell(facts, *port); });
        listing.rowOf(cells);
    }
    listing.finish();
}

void addSettings(Record &record, Output &out, const std::string &alias, DVSPort *port) {
    const std::string id = DVS_PortId(port);
    const config::Target target{.alias = alias, .port = id, .place = placeOf(port)};
    Record part(out);
    std::vector<Policy> values;
    std::vector<std::string_view> stored;
    for (const Setting *setting : config::settings()) {
        if (setting->scope != Scope::Port) continue;
        Policy policy{setting, {}, {}};
        try {
            policy.value = setting->read(target);
        } catch (const Failure &failure) {
            warn("{}", failure.message);
        }
        const bool kept = isStored(storedOf(*setting, placeOf(port)));
        if (kept) stored.push_back(setting->name);
        std::string words = policy.value ? allWords(*setting, *policy.value) : "";
        if (!words.empty() && !kept) words += " (default)";
        if (!out.json())
            part.field(setting->name, std::string(policy.name()).c_str(), std::string_view(words));
        values.push_back(std::move(policy));
    }
    record.member("settings", values);
    record.member("stored", Words{stored});
    if (!out.json()) record.section("settings", part);
}

}  // namespace qvs::cli
