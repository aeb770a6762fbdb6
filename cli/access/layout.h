// SPDX-License-Identifier: Apache-2.0
// Records of the kernel by field, as a layout file describes them (docs/layouts.md).
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/text.h"

namespace qvs::cli {

using WordSet = std::vector<std::pair<uint64_t, std::string>>;

struct LayoutField {
    enum class Type { Number, Text, Bytes, Address, Group };

    std::string name;
    std::string unit;
    Type type = Type::Number;
    bool isMac = false;  // an address without a family
    bool isArray = false;
    bool isSpare = false;  // left out of tables that are too wide for the terminal
    size_t at = 0;
    size_t length = 0;    // of one value, or of the room for it; 0 when the record tells
    size_t stride = 0;    // of a group; 0 when an entry ends with its last field
    uint64_t count = 0;   // of an array, unless countOf or until is given
    std::string countOf;  // fields before this one: the number of values,
    std::string until;    // the offset of the end,
    std::string used;     // the number of bytes,
    std::string family;   // the family of the address
    WordSet values;
    WordSet flags;
    std::vector<LayoutField> fields;  // of a group
};
using LayoutFields = std::vector<LayoutField>;

struct RecordLayout {
    size_t size = 0;
    bool hasTail = false;
    LayoutFields given;  // what the request tells
    LayoutFields fields;
};

struct FieldValue;

// The values of the fields of a record, or of an entry of a group.
struct FieldValues {
    const LayoutFields *fields = nullptr;
    std::vector<FieldValue> values;
    uint32_t index = 0;  // in its list
};

struct RawAddress {
    Bytes bytes;  // 6, 4 or 16
};

// Views into the record and into the layout. Nothing for bytes that are not there.
struct FieldValue {
    std::variant<std::monostate, uint64_t, std::string_view, Bytes, RawAddress, std::vector<std::string>,
                 std::vector<FieldValue>, std::vector<FieldValues>>
        is;
    uint64_t number = 0;  // also when a word or flags stand for it
};

FieldValues decodeRecord(const RecordLayout &layout, Bytes record, std::optional<uint32_t> given);
// Negative, 0 or positive, as the first is less than, equal to or greater than the second.
int compareValues(const FieldValue &first, const FieldValue &second);

void appendJson(fmt::memory_buffer &out, const FieldValue &value);
void appendJson(fmt::memory_buffer &out, const FieldValues &values);
void appendText(fmt::memory_buffer &out, const FieldValue &value);
void appendText(fmt::memory_buffer &out, const FieldValues &values);

// Layouts of records in a file. The file is read at the first use. Throws a usage failure when the file, or
// the layout of the record, is invalid.
class LayoutFile;
// The same for the text of a file, which messages name by its path.
std::shared_ptr<const LayoutFile> readLayout(const std::string &path, Bytes text);
const LayoutFile &openLayout(const std::string &path);
// Returns null when the file does not describe the record. The layout lives as long as the file, which is as
// long as the program for one that was opened.
const RecordLayout *layoutIn(const LayoutFile &file, const std::string &record);

}  // namespace qvs::cli
