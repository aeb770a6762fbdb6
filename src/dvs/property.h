// The property access frame: a property described once, the place where it is stored, and the three things
// one does with it. Every typed operation is written in these words.
#pragma once

#include "core/identity.h"
#include "core/mesh_value.h"

namespace qvs {

enum class Scope : uint8_t { Global, Host, Port };

// One key: where its values live and the class bits they are stored with.
struct Property {
    const char *key;
    Scope scope;
    uint32_t propType;
};

// A switch, or a port of it, by their identifiers; both borrowed.
struct Place {
    const char *switchId;
    const char *portId = nullptr;
};

// Each answers the state library's status, or HYP_BAD_PARAM when the key, or the port of a port property, is
// null.
HYP_ReturnStatus getProperty(const Place &place, const Property &property, MeshValue &value);
HYP_ReturnStatus setProperty(const Place &place, const Property &property, const void *value,
                             uint32_t length);
HYP_ReturnStatus clearProperty(const Place &place, const Property &property);

}  // namespace qvs
