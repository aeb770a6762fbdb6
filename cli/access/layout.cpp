// SPDX-License-Identifier: Apache-2.0
// Reads layout files. Whatever a file says, decoding a record stays within its bytes and ends: fields are in
// order and do not overlap, and each entry of a group takes at least one byte.
#include "access/layout.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

#include "tool/failure.h"
#include "tool/values.h"

namespace qvs::cli {

class LayoutFile {
  public:
    std::string path;
    nlohmann::json content;
    mutable std::map<std::string, RecordLayout> records;  // those that were asked for
};

namespace {

using nlohmann::json;

constexpr size_t kMostFileBytes = size_t{16} << 20;
constexpr size_t kMostRecordBytes = size_t{64} << 20;
constexpr int kMostLevels = 4;
constexpr uint64_t kFormat = 1;

struct TypeRow {
    std::string_view name;
    LayoutField::Type type;
    size_t length;  // 0 when the field or the record tells
};
constexpr TypeRow kTypes[] = {
    {"u8", LayoutField::Type::Number, 1},   {"u16", LayoutField::Type::Number, 2},
    {"u32", LayoutField::Type::Number, 4},  {"u64", LayoutField::Type::Number, 8},
    {"mac", LayoutField::Type::Address, 6}, {"text", LayoutField::Type::Text, 0},
    {"bytes", LayoutField::Type::Bytes, 0}, {"address", LayoutField::Type::Address, 0},
    {"group", LayoutField::Type::Group, 0},
};

// The place of a problem in the file: "layout 'x': record mac-entry: field vlan".
template <typename... Values>
[[noreturn]] void failAt(const std::string &where, fmt::format_string<Values...> format, Values &&...values) {
    fail(Exit::Usage, "{}: {}", where, fmt::format(format, std::forward<Values>(values)...));
}

// A member that must be an object when it is there.
const json &objectIn(const json &object, const char *member, const std::string &where) {
    static const json none = json::object();
    const auto it = object.find(member);
    if (it == object.end()) return none;
    if (!it->is_object()) failAt(where, "\"{}\" is not an object", member);
    return *it;
}

std::string textIn(const json &object, const char *member, const std::string &where) {
    const auto it = object.find(member);
    if (it == object.end()) return {};
    if (!it->is_string()) failAt(where, "\"{}\" is not a text", member);
    return it->get<std::string>();
}

bool flagIn(const json &object, const char *member, const std::string &where) {
    const auto it = object.find(member);
    if (it == object.end()) return false;
    if (!it->is_boolean()) failAt(where, "\"{}\" is neither true nor false", member);
    return it->get<bool>();
}

size_t sizeIn(const json &object, const char *member, const std::string &where) {
    const auto it = object.find(member);
    if (it == object.end()) return 0;
    if (!it->is_number_unsigned() || it->get<uint64_t>() > kMostRecordBytes)
        failAt(where, "\"{}\" is not a number from 0 to {}", member, kMostRecordBytes);
    return it->get<size_t>();
}

// Names become headings.
bool isName(std::string_view name) {
    return !name.empty() &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
}

// Builds the layout of one record.
class Builder {
  public:
    Builder(const LayoutFile &file, const std::string &record)
        : records_(objectIn(file.content, "records", inFile(file))),
          words_(objectIn(file.content, "words", inFile(file))),
          where_(fmt::format("{}: record {}", inFile(file), record)) {}

    static std::string inFile(const LayoutFile &file) { return "layout " + inQuotes(file.path); }

    RecordLayout build(const json &record) {
        if (!record.is_object()) failAt(where_, "it is not an object");
        RecordLayout layout;
        layout.size = sizeIn(record, "size", where_);
        if (layout.size == 0) failAt(where_, "\"size\" is missing");
        const std::string tail = textIn(record, "tail", where_);
        layout.hasTail = !tail.empty();
        for (const auto &[name, words] : objectIn(record, "given", where_).items()) {
            LayoutField &field = layout.given.emplace_back();
            field.name = name;
            if (!words.is_string()) failAt(where_, "\"given\" is not a set of names of words");
            field.values = wordSet(words.get<std::string>(), where_);
            known_.push_back(name);
        }
        const size_t limit = layout.hasTail ? kMostRecordBytes : layout.size;
        if (const std::string like = textIn(record, "like", where_); !like.empty())
            addFields(layout.fields, likeFields(like), limit, 1, where_);
        addFields(layout.fields, record, limit, 1, where_);
        const bool endsWithTail = !layout.fields.empty() && layout.fields.back().name == tail &&
                                  layout.fields.back().at == layout.size;
        if (layout.hasTail && !endsWithTail)
            failAt(where_, "the tail is not the field behind the fixed part");
        return layout;
    }

  private:
    const json &likeFields(const std::string &like) const {
        const auto it = records_.find(like);
        if (it == records_.end() || !it->is_object() || it->contains("like"))
            failAt(where_, "\"{}\" is not a record with fields of its own", like);
        return *it;
    }

    WordSet wordSet(const std::string &name, const std::string &where) const {
        if (name.empty()) return {};
        if (!words_.contains(name)) failAt(where, "there are no words {}", inQuotes(name));
        WordSet words;
        for (const auto &[number, word] : objectIn(words_, name.c_str(), where).items()) {
            const std::optional<uint64_t> value = parseWideNumber(number);
            if (!value || !word.is_string())
                failAt(where, "the words {} are not words by their numbers", inQuotes(name));
            words.emplace_back(*value, word.get<std::string>());
        }
        std::sort(words.begin(), words.end());
        return words;
    }

    // A reference to a field before this one.
    std::string reference(const json &field, const char *member, const std::string &where) const {
        std::string name = textIn(field, member, where);
        if (!name.empty() && std::find(known_.begin(), known_.end(), name) == known_.end())
            failAt(where, "no field before it is called {}", inQuotes(name));
        return name;
    }

    void addFields(LayoutFields &fields, const json &owner, size_t limit, int level,
                   const std::string &where) {
        const auto list = owner.find("fields");
        if (list == owner.end() || !list->is_array()) failAt(where, "\"fields\" is not a list");
        for (const json &item : *list) {
            if (!item.is_object()) failAt(where, "a field is not an object");
            const std::string name = textIn(item, "name", where);
            if (!isName(name)) failAt(where, "{} is no name of a field, like \"portId\"", inQuotes(name));
            LayoutField field = buildField(item, name, level, fmt::format("{}: field {}", where, name));
            requirePlace(fields, field, limit, where);
            known_.push_back(name);
            fields.push_back(std::move(field));
        }
    }

    LayoutField buildField(const json &item, const std::string &name, int level, const std::string &where) {
        LayoutField field;
        field.name = name;
        field.unit = textIn(item, "unit", where);
        const std::string type = textIn(item, "type", where);
        const auto *row = std::find_if(std::begin(kTypes), std::end(kTypes),
                                       [&](const TypeRow &known) { return known.name == type; });
        if (row == std::end(kTypes)) failAt(where, "there is no type {}", inQuotes(type));
        if (!item.contains("at")) failAt(where, "\"at\" is missing");
        field.type = row->type;
        field.isMac = type == "mac";
        field.at = sizeIn(item, "at", where);
        field.length = row->length != 0 ? row->length : sizeIn(item, "length", where);
        field.stride = sizeIn(item, "stride", where);
        field.used = reference(item, "used", where);
        field.family = reference(item, "family", where);
        field.until = reference(item, "until", where);
        field.isSpare = flagIn(item, "spare", where);
        field.isArray = item.contains("count") || item.contains("until");
        if (item.contains("count") && item["count"].is_string()) {
            field.countOf = reference(item, "count", where);
        } else {
            field.count = sizeIn(item, "count", where);
        }
        field.values = wordSet(textIn(item, "values", where), where);
        field.flags = wordSet(textIn(item, "flags", where), where);
        if (field.type == LayoutField::Type::Group) {
            buildGroup(field, item, level, where);
        } else if (field.length == 0 && field.used.empty() && field.family.empty()) {
            failAt(where, "\"length\" is missing");
        } else if (field.type == LayoutField::Type::Address && !field.isMac && field.family.empty()) {
            failAt(where, "\"family\" is missing");
        }
        return field;
    }

    void buildGroup(LayoutField &field, const json &item, int level, const std::string &where) {
        if (level >= kMostLevels) failAt(where, "groups are nested more than {} deep", kMostLevels);
        if (!field.isArray) failAt(where, "a group needs \"count\" or \"until\"");
        const size_t outer = known_.size();
        addFields(field.fields, item, field.stride != 0 ? field.stride : kMostRecordBytes, level + 1, where);
        known_.resize(outer);
        if (field.fields.empty()) failAt(where, "the group has no fields");
    }

    // The bytes that a field takes at least.
    static size_t extentOf(const LayoutField &field) {
        const size_t one = field.type == LayoutField::Type::Group ? field.stride : field.length;
        return one * (!field.isArray ? 1 : field.countOf.empty() && field.until.empty() ? field.count : 0);
    }

    static void requirePlace(const LayoutFields &before, const LayoutField &field, size_t limit,
                             const std::string &where) {
        const size_t end = before.empty() ? 0 : before.back().at + extentOf(before.back());
        if (field.at < end || (!before.empty() && field.at == before.back().at))
            failAt(where, "field {} begins within the field before it", field.name);
        if (field.at + extentOf(field) > limit)
            failAt(where, "field {} ends at {}, behind {} bytes", field.name, field.at + extentOf(field),
                   limit);
        for (const LayoutField &other : before)
            if (other.name == field.name) failAt(where, "field {} is there twice", field.name);
    }

    const json &records_;
    const json &words_;
    std::string where_;
    std::vector<std::string> known_;
};

}  // namespace

std::shared_ptr<const LayoutFile> readLayout(const std::string &path, Bytes text) {
    auto file = std::make_shared<LayoutFile>();
    file->path = path;
    const std::string where = Builder::inFile(*file);
    try {
        file->content = json::parse(text.begin(), text.end());
    } catch (const json::parse_error &error) {
        failAt(where, "it is not JSON from byte {} on", error.byte);
    }
    if (!file->content.is_object()) failAt(where, "it is not an object");
    const auto format = file->content.find("format");
    if (format == file->content.end() || *format != kFormat)
        failAt(where, "\"format\" is not {}, the only format that this version reads", kFormat);
    return file;
}

const LayoutFile &openLayout(const std::string &path) {
    static std::map<std::string, std::shared_ptr<const LayoutFile>> files;
    auto &file = files[path];
    // "-" is a file like any other here: a command may read something else from standard input.
    if (file == nullptr) file = readLayout(path, readFile(path == "-" ? "./-" : path, kMostFileBytes));
    return *file;
}

const RecordLayout *layoutIn(const LayoutFile &file, const std::string &record) {
    if (const auto it = file.records.find(record); it != file.records.end()) return &it->second;
    const json &records = objectIn(file.content, "records", Builder::inFile(file));
    const auto it = records.find(record);
    if (it == records.end()) return nullptr;
    return &file.records.emplace(record, Builder(file, record).build(*it)).first->second;
}

}  // namespace qvs::cli
