// SPDX-License-Identifier: Apache-2.0
// What devices keep beyond the model: tables of rows that are read once, when the host starts, into what they
// mean, and are stored as a text for the key and bytes for the value.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qvs::kernel {

// How a key or a value stands in the database. `read` gives nothing for what cannot be one.
template <typename T>
struct Form {
    std::string (*write)(const T &value);
    std::optional<T> (*read)(std::string_view stored);
};

// The rows of one table, of whatever type.
class AnyRows {
  public:
    AnyRows() = default;
    AnyRows(const AnyRows &) = delete;
    AnyRows &operator=(const AnyRows &) = delete;
    virtual ~AnyRows() = default;
    // False when that cannot be a row of this table.
    virtual bool read(std::string_view key, std::string_view value) = 0;
};

class AnyTable {
  public:
    constexpr explicit AnyTable(const char *name) : name_(name) {}
    const char *name() const { return name_; }
    virtual std::unique_ptr<AnyRows> noRows() const = 0;

  protected:
    ~AnyTable() = default;

  private:
    const char *name_;
};

template <typename Key, typename Value>
class Table final : public AnyTable {
  public:
    using Rows = std::map<Key, Value>;

    // There are never more than `room` rows, and `fits` may say which values a key can have.
    constexpr Table(const char *name, Form<Key> key, Form<Value> value, size_t room = SIZE_MAX,
                    bool (*fits)(const Key &key, const Value &value) = nullptr)
        : AnyTable(name), key_(key), value_(value), room_(room), fits_(fits) {}

    size_t room() const { return room_; }

    std::string keyText(const Key &key) const { return key_.write(key); }
    std::string valueBytes(const Value &value) const { return value_.write(value); }

    struct Stored final : AnyRows {
        explicit Stored(const Table &from) : table(from) {}
        bool read(std::string_view key, std::string_view value) override {
            const auto readKey = table.key_.read(key);
            auto readValue = table.value_.read(value);
            // A row is found again by the text of its key, so there is but one text for it.
            if (!readKey || !readValue || table.keyText(*readKey) != key) return false;
            if (table.fits_ != nullptr && !table.fits_(*readKey, *readValue)) return false;
            rows.emplace(*readKey, std::move(*readValue));
            return rows.size() <= table.room_;
        }
        const Table &table;
        Rows rows;
    };
    std::unique_ptr<AnyRows> noRows() const override { return std::make_unique<Stored>(*this); }

  private:
    Form<Key> key_;
    Form<Value> value_;
    size_t room_;
    bool (*fits_)(const Key &key, const Value &value);
};

// --- forms that several tables have ---

std::string portKeyText(const uint32_t &number);
std::optional<uint32_t> readPortKey(std::string_view text);
std::string recordKeyText(const uint32_t &number);
std::optional<uint32_t> readRecordKey(std::string_view text);
std::string decimalText(const uint64_t &number);
std::optional<uint64_t> readDecimal(std::string_view text);

// Numbers that keys are sorted by: of a port, in hexadecimal, and of a record.
inline constexpr Form<uint32_t> kPortKey = {portKeyText, readPortKey};
inline constexpr Form<uint32_t> kRecordKey = {recordKeyText, readRecordKey};
inline constexpr Form<uint64_t> kDecimal = {decimalText, readDecimal};

// Bytes as they are, when `isValid` says that they can be a value.
template <bool (*isValid)(std::string_view bytes)>
inline constexpr Form<std::string> kBytes = {
    [](const std::string &bytes) { return bytes; },
    [](std::string_view bytes) { return isValid(bytes) ? std::optional(std::string(bytes)) : std::nullopt; },
};

template <size_t size>
bool hasSize(std::string_view bytes) {
    return bytes.size() == size;
}

// One of the names in a list.
template <const auto &names>
inline constexpr Form<std::string> kNameOf = {
    [](const std::string &name) { return name; },
    [](std::string_view name) {
        const bool known = std::find(std::begin(names), std::end(names), name) != std::end(names);
        return known ? std::optional(std::string(name)) : std::nullopt;
    },
};

// The number after the last one of a table; after the highest there is, the lowest that is free.
template <typename Number, typename Value>
Number nextNumber(const std::map<Number, Value> &rows) {
    Number number = rows.empty() ? Number{1} : static_cast<Number>(rows.rbegin()->first + 1);
    while (number == 0 || rows.contains(number))
        ++number;
    return number;
}

}  // namespace qvs::kernel
