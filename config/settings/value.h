// SPDX-License-Identifier: Apache-2.0
// The value of a setting in documents and commands: scalars, lists, and named members.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace qvs::config {

class Value;
struct NamedValue;
using List = std::vector<Value>;
using Members = std::vector<NamedValue>;
using Blob = std::vector<uint8_t>;

// Words, addresses and ranges of VLANs are texts in the one form that their member prints. Members stand in
// the order of their setting, and absent ones are left out, so that equal values compare equal.
class Value {
  public:
    // Defined below, where the members of a record are complete.
    Value();
    Value(const Value &);
    Value(Value &&) noexcept;
    Value &operator=(const Value &);
    Value &operator=(Value &&) noexcept;
    ~Value();
    Value(bool on);
    Value(uint64_t number);
    Value(std::string text);
    Value(std::string_view text);
    Value(const char *text);
    Value(Blob bytes);
    Value(List list);
    Value(Members members);

    bool absent() const { return std::holds_alternative<std::monostate>(data_); }
    bool isBoolean() const { return std::holds_alternative<bool>(data_); }
    bool isNumber() const { return std::holds_alternative<uint64_t>(data_); }
    bool isText() const { return std::holds_alternative<std::string>(data_); }
    bool isList() const { return std::holds_alternative<List>(data_); }
    bool isRecord() const { return std::holds_alternative<Members>(data_); }

    // Return the content. The caller knows the type from the member.
    bool on() const { return std::get<bool>(data_); }
    uint64_t number() const { return std::get<uint64_t>(data_); }
    const std::string &text() const { return std::get<std::string>(data_); }
    const Blob &bytes() const { return std::get<Blob>(data_); }
    const List &list() const { return std::get<List>(data_); }
    const Members &members() const { return std::get<Members>(data_); }

    // The content for visitors; std::monostate when the value is absent.
    const auto &content() const { return data_; }

    // Returns the member of this name, or an absent value.
    const Value &operator[](std::string_view name) const;
    // Replaces or adds a member. An absent value removes it.
    void set(std::string_view name, Value value);

    friend bool operator==(const Value &left, const Value &right);

  private:
    std::variant<std::monostate, bool, uint64_t, std::string, Blob, List, Members> data_;
};

struct NamedValue {
    std::string_view name;  // that of the Member, which lives as long as the program
    Value value;

    friend bool operator==(const NamedValue &, const NamedValue &) = default;
};

inline Value::Value() = default;
inline Value::Value(const Value &) = default;
inline Value::Value(Value &&) noexcept = default;
inline Value &Value::operator=(const Value &) = default;
inline Value &Value::operator=(Value &&) noexcept = default;
inline Value::~Value() = default;
inline Value::Value(bool on) : data_(on) {}
inline Value::Value(uint64_t number) : data_(number) {}
inline Value::Value(std::string text) : data_(std::move(text)) {}
inline Value::Value(std::string_view text) : data_(std::string(text)) {}
inline Value::Value(const char *text) : data_(std::string(text)) {}
inline Value::Value(Blob bytes) : data_(std::move(bytes)) {}
inline Value::Value(List list) : data_(std::move(list)) {}
inline Value::Value(Members members) : data_(std::move(members)) {}

inline bool operator==(const Value &left, const Value &right) {
    return left.data_ == right.data_;
}

}  // namespace qvs::config
