// The property access frame: a property described once, the place where it is stored, and the few things one
// does with it. Every typed operation is written in these words and reads as its own description.
#pragma once

#include <string_view>

#include "core/identity.h"
#include "core/mesh_value.h"
#include "qvs/keys.h"

namespace qvs {

enum class Scope : uint8_t { Global = QVS_SCOPE_GLOBAL, Host = QVS_SCOPE_HOST, Port = QVS_SCOPE_PORT };

// One key: where its values live and the class bits they are stored with.
struct Property {
    const char *key;
    Scope scope;
    uint32_t propType;
};

// Never defined: a call of it in a constant is the compiler's error.
Property keyIsNotInTheTable();

// The row of <qvs/keys.h> with this key. A key that is not there does not compile.
consteval Property propertyOf(std::string_view key) {
#define QVS_PROPERTY(key, scope, propType) {key, static_cast<Scope>(scope), propType},
    constexpr Property kTable[] = {QVS_KEYS(QVS_PROPERTY)};
#undef QVS_PROPERTY
    for (const Property &property : kTable)
        if (key == property.key) return property;
    return keyIsNotInTheTable();
}

// A switch, or a port of it. A place that could not be resolved carries the status why, and whatever is done
// with it answers that status; so an operation resolves, acts and returns.
class Place {
  public:
    // The switch that has this alias.
    static Place ofAlias(const char *alias, const char *portId = nullptr) {
        Place place;
        place.portId_ = portId;
        place.status_ = place.id_.resolve(alias);
        return place;
    }

    // The same for a port that must be in the snapshot: HYP_NOT_FOUND when it is not.
    static Place ofExistingPort(const char *alias, const char *portId);

    // A switch identifier exactly as given, borrowed; it is not looked up.
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
