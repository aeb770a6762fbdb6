// SPDX-License-Identifier: Apache-2.0
// Properties of switches, hosts and ports. Equal properties share one object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "wire/noncopyable.h"

namespace qvs::kernel {

// Bits of a property's type.
constexpr uint32_t kVolatile = 4;
constexpr uint32_t kConfig = 16;
constexpr uint32_t kRuntime = 32;

struct PropertyView {
    std::string_view key;
    std::string_view value;
    uint32_t type = 0;

    bool operator==(const PropertyView &) const = default;
};

struct Property : std::enable_shared_from_this<Property> {
    Property(std::string_view pooledKey, const PropertyView &view)
        : key(pooledKey), value(view.value), type(view.type) {}
    PropertyView view() const { return {key, value, type}; }

    const std::string_view key;  // owned by the pool
    const std::string value;
    const uint32_t type;

    // The number of the property in the snapshot that has this mark. Looking it up would take most of the
    // time of building a snapshot.
    mutable uint64_t snapshotMark = 0;
    mutable uint32_t snapshotName = 0;
};
using PropertyRef = std::shared_ptr<const Property>;

// Creates one object for equal properties. The pool must outlive its properties.
class PropertyPool : private wire::Noncopyable {
  public:
    PropertyRef intern(const PropertyView &view);

  private:
    static PropertyView viewOf(const PropertyView &view) { return view; }
    static PropertyView viewOf(const Property *property) { return property->view(); }
    struct Hash {
        using is_transparent = void;
        size_t operator()(const auto &property) const { return hash(viewOf(property)); }
        static size_t hash(const PropertyView &view);
    };
    struct Equal {
        using is_transparent = void;
        bool operator()(const auto &a, const auto &b) const { return viewOf(a) == viewOf(b); }
    };

    // There are few keys and many properties, so equal keys share their memory.
    std::string_view takeKey(std::string_view key);
    void returnKey(std::string_view key);

    std::unordered_set<const Property *, Hash, Equal> known_;
    std::unordered_map<std::string_view, std::pair<std::unique_ptr<std::string>, size_t>>
        keys_;  // with the number of uses
};

// The properties of one place, sorted by key.
class PropertyList {
  public:
    const Property *find(std::string_view key) const;
    // Returns a value up to its first NUL, or an empty text if there is no such property.
    std::string_view text(std::string_view key) const;
    void set(PropertyRef property);
    // Makes room, so that the next `set` does not allocate.
    void reserveOne();
    void clear(std::string_view key);

    auto begin() const { return properties_.begin(); }
    auto end() const { return properties_.end(); }

  private:
    std::vector<PropertyRef>::iterator position(std::string_view key);

    std::vector<PropertyRef> properties_;
};

// Returns the bytes up to the first NUL.
std::string_view untilNul(std::string_view bytes);

}  // namespace qvs::kernel
