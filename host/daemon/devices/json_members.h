// SPDX-License-Identifier: Apache-2.0
// Reads the members of a JSON object. Errors name the member that is missing, unknown or of a wrong type.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
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
    // `where` names the object in errors.
    Members(const nlohmann::json &object, std::string where);

    const nlohmann::json &object() const { return *object_; }
    bool has(const char *name) const { return object_->contains(name); }
    std::string text(const char *name);
    std::optional<std::string> maybeText(const char *name);
    // Returns a number within these limits.
    std::optional<uint32_t> maybeNumber(const char *name, uint32_t least = 0, uint32_t most = UINT32_MAX);
    // Returns the place of a text among these words.
    std::optional<size_t> maybeChoice(const char *name, std::span<const char *const> words);
    // Returns true or false.
    std::optional<bool> maybeFlag(const char *name);
    // Returns the bytes that a text of hexadecimal digits stands for.
    std::optional<std::string> maybeBytes(const char *name);
    // Returns an address like "02:00:00:00:00:01".
    std::optional<std::array<uint8_t, 6>> maybeMac(const char *name);
    std::vector<std::string> texts(const char *name);
    // Returns a member of any type, or null if there is none.
    const nlohmann::json *any(const char *name);
    // Calls `visit` for the object that is this member, if there is one, and then checks with `finish` that
    // every member of the object was read.
    void object(const char *name, const std::function<void(Members &)> &visit);
    // Does the same for each object in a list.
    void each(const char *name, const std::function<void(Members &)> &visit);

    // Throws if the object has a member that was not read.
    void finish() const;
    [[noreturn]] void fail(const char *name, std::string_view problem) const;

  private:
    const nlohmann::json *object_;
    std::string where_;
    std::set<std::string, std::less<>> taken_;
};

}  // namespace qvs::kernel
