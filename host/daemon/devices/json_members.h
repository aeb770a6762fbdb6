// SPDX-License-Identifier: Apache-2.0
// Reading a JSON object member by member, so that a wrong type, a missing and an unknown member are all
// named.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace qvs::kernel {

class JsonError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Members {
  public:
    // `where` names the object in messages.
    Members(const nlohmann::json &object, std::string where);

    const nlohmann::json &object() const { return *object_; }
    bool has(const char *name) const { return object_->contains(name); }
    std::string text(const char *name);
    std::optional<std::string> maybeText(const char *name);
    // An unsigned 32-bit number.
    std::optional<uint32_t> maybeNumber(const char *name);
    // An address like "02:00:00:00:00:01".
    std::optional<std::array<uint8_t, 6>> maybeMac(const char *name);
    std::vector<std::string> texts(const char *name);
    // The member itself, or null.
    const nlohmann::json *any(const char *name);
    void each(const char *name, const std::function<void(Members)> &visit);
    // Bytes from their hex digits.
    std::string bytes(const char *name, std::string_view hex) const;

    // Throws when a member is left that nobody asked for.
    void finish() const;
    [[noreturn]] void fail(const char *name, std::string_view problem) const;

  private:
    const nlohmann::json *object_;
    std::string where_;
    std::set<std::string, std::less<>> taken_;
};

}  // namespace qvs::kernel
