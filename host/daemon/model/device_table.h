// SPDX-License-Identifier: Apache-2.0
// The tables in which devices keep their state. The rows are read from the store once, when the host starts.
// In the store, a key is text and a value is bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "wire/fault.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

// Converts a key or a value to its bytes in the store and back. `read` returns nothing for invalid bytes.
template <typename T>
struct Form {
    std::string (*write)(const T &value);
    std::optional<T> (*read)(std::string_view stored);
};

// The rows of one table, without their type.
class AnyRows : private wire::Noncopyable {
  public:
    virtual ~AnyRows() = default;
    // Adds a row from the store. Returns false if the row is invalid for this table.
    virtual bool read(std::string_view key, std::string_view value) = 0;
};

// A table, without the type of its rows. Tables are constants; the rows are in DeviceTables.
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

    // A table has at most `room` rows. `fits`, if it is given, tells whether a key can have a value.
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
            // Rows are found by the text of their key, so only one text is valid for each key.
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

// A table with a single row: one value under a fixed key.
template <typename Value>
class Setting final : public AnyTable {
  public:
    constexpr Setting(const char *name, const char *key, Form<Value> form)
        : AnyTable(name), key_(key), form_(form) {}

    const char *key() const { return key_; }
    std::string valueBytes(const Value &value) const { return form_.write(value); }

    struct Stored final : AnyRows {
        explicit Stored(const Setting &from) : setting(from) {}
        bool read(std::string_view key, std::string_view bytes) override {
            value = setting.form_.read(bytes);
            return value && key == setting.key_;
        }
        const Setting &setting;
        std::optional<Value> value;
    };
    std::unique_ptr<AnyRows> noRows() const override { return std::make_unique<Stored>(*this); }

  private:
    const char *key_;
    Form<Value> form_;
};

// Stores a number as text in this base, padded with zeros to this width so that texts sort like numbers.
template <typename Number, int base = 10, int width = 0>
inline constexpr Form<Number> kNumber = {
    [](const Number &number) {
        return base == 16 ? fmt::format("{:0{}x}", number, width) : fmt::format("{:0{}}", number, width);
    },
    [](std::string_view text) { return wire::numberOf<Number>(text, base); },
};
inline constexpr Form<uint32_t> kPortKey = kNumber<uint32_t, 16, 8>;
inline constexpr Form<uint32_t> kRecordKey = kNumber<uint32_t, 10, 10>;

// Stores bytes unchanged if `isValid` accepts them.
template <bool (*isValid)(std::string_view bytes)>
inline constexpr Form<std::string> kBytes = {
    [](const std::string &bytes) { return bytes; },
    [](std::string_view bytes) { return isValid(bytes) ? std::optional(std::string(bytes)) : std::nullopt; },
};

inline bool isAnything(std::string_view) {
    return true;
}
template <size_t size>
bool hasSize(std::string_view bytes) {
    return bytes.size() == size;
}

// Returns the number after the last row of a table, or the lowest free one if there is none.
template <typename Number, typename Value>
Number nextNumber(const std::map<Number, Value> &rows) {
    Number number = rows.empty() ? Number{1} : static_cast<Number>(rows.rbegin()->first + 1);
    while (number == 0 || rows.contains(number))
        ++number;
    return number;
}

}  // namespace qvs::kernel
