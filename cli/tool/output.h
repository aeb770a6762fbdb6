// SPDX-License-Identifier: Apache-2.0
// What commands print: listings, records and reports of changes, as text or JSON, in one buffered stream.
#pragma once

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"

namespace qvs::cli {

// Standard output. A failure to write is a failure of the command.
class Output {
  public:
    // wide: tables are not cut to the width of the terminal.
    explicit Output(bool json, bool wide = false) : json_(json), wide_(wide) {}

    bool json() const { return json_; }
    bool wide() const { return wide_; }
    // Whether standard output is a terminal.
    bool terminal() const;

    fmt::memory_buffer &buffer() { return buffer_; }
    void write(std::string_view text);
    void write(Bytes bytes);
    // Writes the buffer out when it is large, unless all of it is to be kept.
    void drain();
    void keep() { keeps_ = true; }
    void flush();

    // The exit status when the command does not fail.
    int exitCode() const { return exitCode_; }
    void exitWith(int code) { exitCode_ = code; }

  private:
    bool json_;
    bool wide_;
    bool keeps_ = false;
    int exitCode_ = 0;
    fmt::memory_buffer buffer_;
};

// A boolean with its words in text. In JSON it is true or false.
struct Flag {
    bool value;
    const char *yes = "yes";
    const char *no = "no";
};
inline Flag linkState(bool up) {
    return {up, "up", "down"};
}

// One value: absent values are "-" in text and null in JSON. Words are an array in JSON.
struct Words {
    std::vector<std::string_view> words;
};

inline void put(fmt::memory_buffer &out, std::string_view text) {
    out.append(text);
}

void appendJson(fmt::memory_buffer &out, std::string_view text);
void appendJson(fmt::memory_buffer &out, uint32_t number);
void appendJson(fmt::memory_buffer &out, uint64_t number);
void appendJson(fmt::memory_buffer &out, Flag flag);
void appendJson(fmt::memory_buffer &out, const Words &words);
void appendJson(fmt::memory_buffer &out, Bytes bytes);  // base64

void appendText(fmt::memory_buffer &out, std::string_view text);
void appendText(fmt::memory_buffer &out, uint32_t number);
void appendText(fmt::memory_buffer &out, uint64_t number);
void appendText(fmt::memory_buffer &out, Flag flag);
void appendText(fmt::memory_buffer &out, const Words &words);
void appendText(fmt::memory_buffer &out, Bytes bytes);  // hexadecimal

template <typename Value>
void appendJson(fmt::memory_buffer &out, const std::optional<Value> &value) {
    if (value) {
        appendJson(out, *value);
    } else {
        out.append(std::string_view("null"));
    }
}
template <typename Value>
void appendText(fmt::memory_buffer &out, const std::optional<Value> &value) {
    if (value) appendText(out, *value);
}

struct Column {
    const char *key;        // in JSON; null for a column of text only, which cannot be the first
    const char *heading;    // in text; null for a column of JSON only
    bool spare = false;     // left out on a terminal that is too narrow for all columns
    const char *unit = "";  // behind the heading, unless the terminal is too narrow
};

// A table with headings, or an array of objects in JSON. JSON is written row by row. Text is written at the
// end, when the widths of the columns are known.
class Listing {
  public:
    Listing(Output &out, std::vector<Column> columns);

    template <typename... Values>
    void row(const Values &...values) {
        size_t column = 0;
        beginRow();
        (cell(column++, values), ...);
        endRow();
    }
    // Adds a row, with a value for each column.
    template <typename Value>
    void rowOf(const std::vector<Value> &values) {
        beginRow();
        for (size_t column = 0; column < values.size(); column++)
            cell(column, values[column]);
        endRow();
    }
    void finish();

  private:
    template <typename Value>
    void cell(size_t column, const Value &value) {
        if (out_.json() && columns_[column].key != nullptr) {
            appendKey(column);
            appendJson(out_.buffer(), value);
        } else if (!out_.json() && columns_[column].heading != nullptr) {
            appendText(cells_, value);
            endCell();
        }
    }
    void beginRow();
    void endRow();
    void appendKey(size_t column);
    void endCell();
    std::string_view cellAt(size_t index) const;
    std::vector<size_t> widths(size_t columns);

    Output &out_;
    std::vector<Column> columns_;
    bool first_ = true;
    fmt::memory_buffer cells_;  // the text of all cells
    std::vector<size_t> ends_;  // the end of each cell in it
    std::vector<size_t> bare_;  // the length of each heading without its unit
    bool isBare_ = false;       // whether units are left out
};

// A list of names: one a line, or an array in JSON.
class NameList {
  public:
    explicit NameList(Output &out) : out_(out) {}
    void add(std::string_view name);
    void finish();

  private:
    Output &out_;
    bool first_ = true;
};

// Labelled values of one object.
class Record {
  public:
    explicit Record(Output &out) : out_(out) {}

    template <typename Value>
    void field(const char *key, const char *label, const Value &value) {
        if (out_.json()) {
            appendKey(key);
            appendJson(out_.buffer(), value);
        } else {
            beginField(label);
            appendText(text_, value);
            endField();
        }
    }
    // Bytes of the kernel: base64 in JSON, a hex dump behind the fields in text.
    void block(const char *key, const char *label, const std::optional<Bytes> &bytes);
    // A value that is printed in JSON only.
    template <typename Value>
    void member(const char *key, const Value &value) {
        if (!out_.json()) return;
        appendKey(key);
        appendJson(out_.buffer(), value);
    }
    // The values of a part of the object, indented behind the fields. Printed in text only.
    void section(const char *label, const Record &part);
    void finish();

  private:
    void appendKey(const char *key);
    void beginField(const char *label);
    void endField();
    void appendLines(fmt::memory_buffer &out, std::string_view indent) const;

    Output &out_;
    bool first_ = true;
    std::vector<std::string> labels_;
    std::vector<size_t> ends_;
    fmt::memory_buffer text_;
    fmt::memory_buffer blocks_;
};

// "sw1: changed", or {"switch":"sw1","changed":true} with the given members before it.
void reportChange(Output &out, std::string_view label,
                  std::initializer_list<std::pair<const char *, std::optional<std::string_view>>> members,
                  bool changed);

void reportSwitch(Output &out, std::string_view alias, bool changed);
void reportPort(Output &out, std::string_view alias, std::string_view port, bool changed);

// Changes of several ports or uplinks of a switch: a line for each, or one object with an array. Reports the
// changes that were made even when a later one fails.
class ChangeList {
  public:
    ChangeList(Output &out, std::string_view alias, const char *arrayKey, const char *itemKey)
        : out_(out), alias_(alias), arrayKey_(arrayKey), itemKey_(itemKey) {}
    ~ChangeList();
    ChangeList(const ChangeList &) = delete;
    ChangeList &operator=(const ChangeList &) = delete;

    void add(std::string_view item, bool changed) { items_.emplace_back(item, changed); }

  private:
    Output &out_;
    std::string_view alias_;
    const char *arrayKey_;
    const char *itemKey_;
    std::vector<std::pair<std::string, bool>> items_;
};

// Writes bytes to a file, or to standard output for "-".
void writeRaw(Output &out, const std::string &path, Bytes bytes);

}  // namespace qvs::cli
