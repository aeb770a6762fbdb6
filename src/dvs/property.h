// SPDX-License-Identifier: Apache-2.0
// Access to properties: the description of a property, the place where it is stored, and the functions that
// read, store and clear it. Every typed function is written in these terms.
#pragma once

#include <string_view>

#include "core/identity.h"
#include "core/mesh_value.h"
#include "qvs/keys.h"

namespace qvs {

enum class Scope : uint8_t { Global = QVS_SCOPE_GLOBAL, Host = QVS_SCOPE_HOST, Port = QVS_SCOPE_PORT };

// A key with its scope and the class bits of its values.
struct Property {
    const char *key;
    Scope scope;
    uint32_t propType;
};

// Not defined. A call in a constant expression is a compile-time error.
Property keyIsNotInTheTable();

// Returns the row of <qvs/keys.h> with this key. An unknown key is a compile-time error.
consteval Property propertyOf(std::string_view key) {
#define QVS_PROPERTY(key, scope, propType) {key, static_cast<Scope>(scope), propType},
    constexpr Property kTable[] = {QVS_KEYS(QVS_PROPERTY)};
#undef QVS_PROPERTY
    for (const Property &property : kTable)
        if (key == property.key) return property;
    return keyIsNotInTheTable();
}

// A switch, or a port of a switch. If a place cannot be resolved, it contains the status of the failure, and
// every access to it returns that status. A function therefore resolves a place, acts on it, and returns.
class Place {
  public:
    // Resolves the switch with this alias.
    static Place ofAlias(const char *alias, const char *portId = nullptr) {
        Place place;
        place.portId_ = portId;
        place.status_ = place.id_.resolve(alias);
        return place;
    }

    // Resolves a port that the snapshot must contain; the status is HYP_NOT_FOUND otherwise.
    static Place ofExistingPort(const char *alias, const char *portId);

    // Uses a switch identifier as given. It is borrowed and not looked up.
    static Place ofSwitchId(const char *switchId, const char *portId = nullptr);

    [[nodiscard]] HYP_ReturnStatus status() const { return status_; }
    const char *switchId() const { return given_ != nullptr ? given_ : id_.text; }
    const char *portId() const { return portId_; }

  private:
    SwitchId id_;
    const char *given_ = nullptr;   // the identifier when it was given, borrowed
    const char *portId_ = nullptr;  // borrowed
    HYP_ReturnStatus status_ = HYP_OK;
};

// Each answers the place's status or the state library's; HYP_BAD_PARAM when the key, the port of a port
// property or a value of some length is null.
[[nodiscard]] HYP_ReturnStatus getProperty(const Place &place, const Property &property, MeshValue &value);
[[nodiscard]] HYP_ReturnStatus setProperty(const Place &place, const Property &property, const void *value,
                                           uint32_t length);
[[nodiscard]] HYP_ReturnStatus clearProperty(const Place &place, const Property &property);

// A key that is not there is cleared already.
[[nodiscard]] HYP_ReturnStatus clearIfPresent(const Place &place, const Property &property);

// A value of exactly this size; any other is HYP_FAILURE and leaves value empty.
[[nodiscard]] HYP_ReturnStatus getSized(const Place &place, const Property &property, uint32_t size,
                                        MeshValue &value);

// A value of exactly this size copied into memory of the caller, which is untouched after a failure.
[[nodiscard]] HYP_ReturnStatus readRecord(const Place &place, const Property &property, void *record,
                                          uint32_t size);

// The same for a key that has a default: absent, the record keeps what the caller put there.
[[nodiscard]] HYP_ReturnStatus readOrDefault(const Place &place, const Property &property, void *record,
                                             uint32_t size);

// Stores a text with its NUL; HYP_BAD_PARAM when it is null.
[[nodiscard]] HYP_ReturnStatus setText(const Place &place, const Property &property, const char *text);

}  // namespace qvs
