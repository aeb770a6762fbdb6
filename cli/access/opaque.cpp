// SPDX-License-Identifier: Apache-2.0
#include "access/opaque.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <numeric>

#include "config/library/snapshot.h"

namespace qvs::cli {
namespace {

// The number of bytes that one line shows as hexadecimal digits: of a record, and of an entry of a list.
constexpr size_t kLineBytes = 32;
constexpr size_t kEntryLineBytes = VSHYP_MAC_ENTRY_SIZE;

// The size is not known before the kernel has answered.
FoundLayout layoutFrom(const std::string &path, const char *record, std::optional<size_t> size) {
    const RecordLayout *layout = layoutIn(openLayout(path), record);
    const std::string subject = "layout " + inQuotes(path);
    if (layout == nullptr) return {nullptr, fmt::format("{}: there is no record {}", subject, record)};
    if (!size || layout->size == size || (layout->hasTail && layout->size < size)) return {layout, {}};
    return {nullptr,
            fmt::format("{}: record {} has {} bytes, but the kernel's has {}; name the layout file of "
                        "this kernel",
                        subject, record, layout->size, *size)};
}

FoundLayout findLayout(const Arguments &arguments, const char *record, std::optional<size_t> size) {
    if (arguments.given(kLayout.name)) return layoutFrom(arguments.text(kLayout.name), record, size);
    const char *path = std::getenv("QVS_LAYOUT");
    if (path == nullptr || path[0] == '\0')
        return {nullptr, "no layout file is named; name one with --layout or in the variable QVS_LAYOUT"};
    try {
        return layoutFrom(path, record, size);
    } catch (const Failure &failure) {
        return {nullptr, "QVS_LAYOUT: " + failure.message, true};
    }
}

}  // namespace

FoundLayout findLayout(const Arguments &arguments, const RecordKind &kind, size_t size) {
    return findLayout(arguments, kind.name, std::optional(size));
}

namespace {

// The options that choose entries by their fields, besides --limit and --reverse.
constexpr const char *kByField[] = {"--vlan", "--mac", "--where", "--sort"};
constexpr const char *kChoosing[] = {"--vlan", "--mac", "--where", "--sort", "--reverse", "--limit"};

constexpr const char *kNeedsLayout = "needs a layout: ";
constexpr const char *kNoList = "needs a list, and this is a single record";

// Fails when one of these options is given.
void refuse(const Arguments &arguments, std::span<const char *const> options, const std::string &why) {
    for (const char *option : options)
        if (arguments.given(option)) fail(Exit::Usage, "{} {}", option, why);
}

// Returns the layout, or null after a remark. Fails when one of these options, which need the layout, is
// given.
const RecordLayout *layoutFor(const Arguments &arguments, const Output &out, const RecordKind &kind,
                              size_t size, std::span<const char *const> options) {
    static bool remarked = false;
    const FoundLayout found = findLayout(arguments, kind, size);
    if (found.layout != nullptr) return found.layout;
    refuse(arguments, options, kNeedsLayout + found.why);
    if (!remarked && (found.isFault || !out.json())) {
        complain("{}the kernel's records are shown as bytes: {}", found.isFault ? "warning: " : "",
                 found.why);
        remarked = true;
    }
    return nullptr;
}

// --- choosing entries ---

size_t fieldNamed(const LayoutFields &fields, std::string_view option, std::string_view name) {
    std::string all;
    for (size_t i = 0; i < fields.size(); i++) {
        if (fields[i].name == name) return i;
        all += (all.empty() ? "" : ", ") + fields[i].name;
    }
    fail(Exit::Usage, "{}: no field is called {}; the fields are {}", option, inQuotes(name), all);
}

// "vlan=10" in its two parts.
std::pair<std::string, std::string> conditionOf(const std::string &text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) return {text, {}};
    return {text.substr(0, equals), text.substr(equals + 1)};
}

bool beginsWith(const FieldValue &value, Bytes bytes) {
    const auto *address = std::get_if<RawAddress>(&value.is);
    return address != nullptr && address->bytes.size() >= bytes.size() &&
           std::equal(bytes.begin(), bytes.end(), address->bytes.begin());
}

bool holds(const FieldValue &value, std::string_view wanted) {
    if (const auto *flags = std::get_if<std::vector<std::string>>(&value.is)) {
        if (std::find(flags->begin(), flags->end(), wanted) != flags->end()) return true;
    }
    fmt::memory_buffer text;
    appendText(text, value);
    return std::string_view(text.data(), text.size()) == wanted;
}

void chooseEntries(const Arguments &arguments, const LayoutFields &fields,
                   std::vector<FieldValues> &entries) {
    if (arguments.given("--vlan")) {
        const uint32_t vlan = arguments.number("--vlan", 0);
        const size_t field = fieldNamed(fields, "--vlan", "vlan");
        std::erase_if(entries, [&](const FieldValues &entry) { return entry.values[field].number != vlan; });
    }
    if (arguments.given("--mac")) {
        const std::vector<uint8_t> bytes = *parseHex(arguments.text("--mac"));
        const size_t field = fieldNamed(fields, "--mac", "mac");
        std::erase_if(entries,
                      [&](const FieldValues &entry) { return !beginsWith(entry.values[field], bytes); });
    }
    for (const std::string &text : arguments.all("--where")) {
        const auto condition = conditionOf(text);
        const std::string &wanted = condition.second;
        const size_t field = fieldNamed(fields, "--where", condition.first);
        std::erase_if(entries, [&](const FieldValues &entry) { return !holds(entry.values[field], wanted); });
    }
    if (arguments.given("--sort")) {
        const size_t field = fieldNamed(fields, "--sort", arguments.text("--sort"));
        std::stable_sort(entries.begin(), entries.end(),
                         [&](const FieldValues &first, const FieldValues &second) {
                             return compareValues(first.values[field], second.values[field]) < 0;
                         });
    }
}

// --limit and --reverse choose from lists without a layout, too.
template <typename Entry>
void shorten(const Arguments &arguments, std::vector<Entry> &entries) {
    if (arguments.given("--reverse")) std::reverse(entries.begin(), entries.end());
    const uint32_t limit = arguments.number("--limit", UINT32_MAX);
    if (entries.size() > limit) entries.resize(limit);
}

// --- text ---

// "portId" as "port id", with the unit behind it.
std::string labelOf(const LayoutField &field) {
    std::string label;
    for (const char c : field.name) {
        const bool capital = std::isupper(static_cast<unsigned char>(c)) != 0;
        if (capital) label += ' ';
        label += capital ? static_cast<char>(std::tolower(static_cast<unsigned char>(c))) : c;
    }
    return label;
}

// Nothing when the label names the unit already: "frames sent".
std::string unitOf(const LayoutField &field) {
    const bool isNamed = (" " + labelOf(field) + " ").find(" " + field.unit + " ") != std::string::npos;
    return isNamed ? "" : shown(field.unit);
}

std::string labelWithUnit(const LayoutField &field) {
    const std::string unit = unitOf(field);
    return unit.empty() ? labelOf(field) : fmt::format("{} ({})", labelOf(field), unit);
}

// The one group whose entries are rows.
const LayoutField *groupIn(const LayoutFields &fields) {
    const auto it = std::find_if(fields.begin(), fields.end(), [](const LayoutField &field) {
        return field.type == LayoutField::Type::Group;
    });
    return it != fields.end() ? &*it : nullptr;
}

struct Heading {
    std::string text;
    std::string unit;
    bool isSpare;
};

void addHeadings(const LayoutFields &fields, const LayoutField *group, std::vector<Heading> &headings) {
    for (const LayoutField &field : fields) {
        if (&field == group) {
            addHeadings(group->fields, nullptr, headings);
            continue;
        }
        std::string text = labelOf(field);
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        headings.push_back({text, unitOf(field), field.isSpare});
    }
}

// The cells of a row. The values of an entry stand in place of the group; without an entry they are absent.
void addCells(const FieldValues &record, const LayoutField *group, const FieldValues *entry,
              std::vector<FieldValue> &cells) {
    for (size_t i = 0; i < record.values.size(); i++) {
        if (&(*record.fields)[i] != group) {
            cells.push_back(record.values[i]);
        } else if (entry != nullptr) {
            cells.insert(cells.end(), entry->values.begin(), entry->values.end());
        } else {
            cells.resize(cells.size() + group->fields.size());
        }
    }
}

void printTable(Output &out, const LayoutFields &fields, const std::vector<FieldValues> &records) {
    const LayoutField *group = groupIn(fields);
    std::vector<Heading> headings;
    addHeadings(fields, group, headings);
    std::vector<Column> columns;
    columns.reserve(headings.size());
    for (const Heading &heading : headings)
        columns.push_back({nullptr, heading.text.c_str(), heading.isSpare, heading.unit.c_str()});
    Listing listing(out, columns);
    std::vector<FieldValue> cells;
    auto addRow = [&](const FieldValues &record, const FieldValues *entry) {
        cells.clear();
        addCells(record, group, entry, cells);
        listing.rowOf(cells);
    };
    for (const FieldValues &record : records) {
        if (group == nullptr) {
            listing.rowOf(record.values);
            continue;
        }
        const auto &entries =
            std::get<std::vector<FieldValues>>(record.values[static_cast<size_t>(group - fields.data())].is);
        for (const FieldValues &entry : entries)
            addRow(record, &entry);
        if (entries.empty()) addRow(record, nullptr);
    }
    listing.finish();
}

void printBytes(const Arguments &arguments, Output &out, const KernelList &list, const RecordKind &kind) {
    std::vector<uint32_t> entries(list.count);
    std::iota(entries.begin(), entries.end(), 0u);
    shorten(arguments, entries);
    // An empty list shows its heading, whatever the size of its entries.
    if (list.entrySize <= kEntryLineBytes || entries.empty()) {
        Listing listing(out, {{"index", "INDEX"}, {kind.key, "ENTRY"}});
        for (const uint32_t i : entries)
            listing.row(i, list.entry(i));
        return listing.finish();
    }
    for (const uint32_t i : entries) {
        fmt::format_to(std::back_inserter(out.buffer()), "{} {} ({} bytes):\n", kind.label, i,
                       list.entrySize);
        appendHexDump(out.buffer(), list.entry(i));
        out.drain();
    }
}

}  // namespace

void checkCondition(std::string_view name, const std::string &text) {
    if (text.find('=') == std::string::npos)
        fail(Exit::Usage, "{}: {} is not a field and a value, like vlan=10", name, inQuotes(text));
}

void requireFields(const Arguments &arguments, const char *record, Entries entries) {
    if (std::ranges::none_of(kByField, [&](const char *option) { return arguments.given(option); })) return;
    const FoundLayout found = findLayout(arguments, record, std::nullopt);
    if (found.layout == nullptr) return refuse(arguments, kByField, kNeedsLayout + found.why);
    const LayoutField *group = entries == Entries::OfRecord ? groupIn(found.layout->fields) : nullptr;
    if (entries == Entries::OfRecord && group == nullptr) return refuse(arguments, kByField, kNoList);
    const LayoutFields &fields = group != nullptr ? group->fields : found.layout->fields;
    for (const std::string &text : arguments.all("--where"))
        (void)fieldNamed(fields, "--where", conditionOf(text).first);
    if (arguments.given("--sort")) (void)fieldNamed(fields, "--sort", arguments.text("--sort"));
}

std::string pointerText(void *pointer) {
    if (pointer != nullptr) return "...";
    return errno == 0 ? "null" : fmt::format("null ({})", std::strerror(errno));
}

Failure requestFailure(std::string_view subject, int error) {
    Exit exit = error == ENOENT ? Exit::NotFound : Exit::Failed;
    return {exit, fmt::format("{}: {}", subject, error == 0 ? "no answer" : std::strerror(error)), true};
}

std::optional<FieldValues> decoded(const Arguments &arguments, const Output &out, const RecordKind &kind,
                                   Bytes record, std::optional<uint32_t> given) {
    const RecordLayout *layout = layoutFor(arguments, out, kind, record.size(), kChoosing);
    if (layout == nullptr) return std::nullopt;
    FieldValues fields = decodeRecord(*layout, record, given);
    if (const LayoutField *group = groupIn(layout->fields)) {
        auto &entries = fields.values[static_cast<size_t>(group - layout->fields.data())].is;
        chooseEntries(arguments, group->fields, std::get<std::vector<FieldValues>>(entries));
        shorten(arguments, std::get<std::vector<FieldValues>>(entries));
    } else {
        refuse(arguments, kChoosing, kNoList);
    }
    return fields;
}

void addRecord(Record &shown, Output &out, const RecordKind &kind, const std::optional<Bytes> &bytes,
               const std::optional<FieldValues> &fields, const char *fieldsKey) {
    if (out.json() || !fields) {
        shown.block(kind.key, kind.label, bytes);
        return shown.member(fieldsKey, fields);
    }
    Record part(out);
    addFields(part, *fields);
    shown.section(kind.label, part);
}

void addFields(Record &shown, const FieldValues &record, const LayoutField *without) {
    for (size_t i = 0; i < record.values.size(); i++) {
        const LayoutField &field = (*record.fields)[i];
        if (&field == without) continue;
        shown.field(field.name.c_str(), labelWithUnit(field).c_str(), record.values[i]);
    }
}

void addRecord(const Arguments &arguments, Record &shown, Output &out, const RecordKind &kind,
               const std::optional<Bytes> &bytes, const char *fieldsKey) {
    const auto fields = bytes ? decoded(arguments, out, kind, *bytes) : std::nullopt;
    addRecord(shown, out, kind, bytes, fields, fieldsKey);
}

void printRecord(const Arguments &arguments, Output &out, const RecordKind &kind, Bytes record) {
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), record);
    const std::optional<FieldValues> fields = decoded(arguments, out, kind, record);
    Record shown(out);
    if (out.json() || !fields) {
        if (record.size() <= kLineBytes) {
            shown.field(kind.key, kind.label, record);
        } else {
            shown.block(kind.key, kind.label, record);
        }
        shown.member("fields", fields);
        return shown.finish();
    }
    const LayoutField *group = groupIn(*fields->fields);
    addFields(shown, *fields, group);
    shown.finish();
    if (group == nullptr) return;
    out.write("\n");
    const auto &entries = fields->values[static_cast<size_t>(group - fields->fields->data())].is;
    printTable(out, group->fields, std::get<std::vector<FieldValues>>(entries));
}

void printList(const Arguments &arguments, Output &out, const KernelList &list, const RecordKind &kind,
               std::optional<uint32_t> given) {
    if (arguments.given("--raw")) return writeRaw(out, arguments.text("--raw"), list.bytes());
    const RecordLayout *layout = layoutFor(arguments, out, kind, list.entrySize, kByField);
    if (layout == nullptr && !out.json()) return printBytes(arguments, out, list, kind);
    std::vector<FieldValues> entries(list.count);
    for (uint32_t i = 0; i < list.count; i++) {
        if (layout != nullptr) entries[i] = decodeRecord(*layout, list.entry(i), given);
        entries[i].index = i;
    }
    if (layout != nullptr) chooseEntries(arguments, layout->fields, entries);
    shorten(arguments, entries);
    if (!out.json()) return printTable(out, layout->fields, entries);
    Listing listing(out, {{"index", nullptr}, {kind.key, nullptr}, {"fields", nullptr}});
    for (FieldValues &entry : entries) {
        const uint32_t index = entry.index;
        if (layout == nullptr) {
            listing.row(index, list.entry(index), std::optional<FieldValues>());
        } else {
            listing.row(index, list.entry(index), entry);
        }
    }
    listing.finish();
}

NumberedPort numberedPort(const Arguments &arguments) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    findPort(findVswitch(alias), alias, port);
    return {named(alias, port), portNumber(alias, port)};
}

}  // namespace qvs::cli
