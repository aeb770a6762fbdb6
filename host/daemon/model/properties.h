// SPDX-License-Identifier: Apache-2.0
// Reads, sets and clears properties.
#pragma once

#include <string>
#include <string_view>

#include "daemon/model/changes.h"
#include "daemon/model/inventory.h"
#include "daemon/model/status.h"
#include "daemon/model/store.h"
#include "daemon/model/uplinks.h"

namespace qvs::kernel {

// Some properties are provided by the kernel, such as the status of a port. Others change the model when they
// are set, such as the list of uplinks.
class Properties {
  public:
    Properties(Store &store, Inventory &inventory, Uplinks &uplinks, Changes &changes)
        : store_(store), inventory_(inventory), uplinks_(uplinks), changes_(changes) {}

    Status get(const Place &place, std::string_view key, std::string *value) const;
    // Returns a stored property without a copy. Returns null if there is none or if the kernel provides the
    // value.
    PropertyRef stored(const Place &place, std::string_view key) const;
    Status set(const Place &place, const PropertyView &property) {
        return change(place, property.key, &property);
    }
    Status clear(const Place &place, std::string_view key) { return change(place, key, nullptr); }

  private:
    // Returns the stored properties of a place, or null if the place does not exist.
    const PropertyList *listOf(const Place &place) const;
    // Sets a property, or clears the key if `property` is null.
    Status change(const Place &place, std::string_view key, const PropertyView *property);
    PropertyRef prepared(PropertyList &list, const PropertyView *property);
    Status changeOfSwitch(Switch &sw, Scope scope, std::string_view key, const PropertyView *property);
    Status changeOfPort(Port &port, std::string_view key, const PropertyView *property);

    Store &store_;
    Inventory &inventory_;
    Uplinks &uplinks_;
    Changes &changes_;
};

}  // namespace qvs::kernel
