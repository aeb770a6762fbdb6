// SPDX-License-Identifier: Apache-2.0
// Reading, storing and clearing properties, with those that the kernel itself answers or acts on.
#pragma once

#include <string>
#include <string_view>

#include "daemon/model/changes.h"
#include "daemon/model/inventory.h"
#include "daemon/model/status.h"
#include "daemon/model/store.h"
#include "daemon/model/uplinks.h"

namespace qvs::kernel {

class Properties {
  public:
    Properties(Store &store, Inventory &inventory, Uplinks &uplinks, Changes &changes)
        : store_(store), inventory_(inventory), uplinks_(uplinks), changes_(changes) {}

    Status get(const Place &place, std::string_view key, std::string *value) const;
    // The stored one as it is, to be shared; null for none, and for what the kernel itself answers.
    PropertyRef stored(const Place &place, std::string_view key) const;
    Status set(const Place &place, const PropertyView &property) {
        return change(place, property.key, &property);
    }
    Status clear(const Place &place, std::string_view key) { return change(place, key, nullptr); }

  private:
    // The stored properties of a place; null for a place that does not exist.
    const PropertyList *listOf(const Place &place) const;
    // `property` is null when the key is cleared.
    Status change(const Place &place, std::string_view key, const PropertyView *property);
    Status changeOfSwitch(Switch &sw, Scope scope, std::string_view key, const PropertyView *property);
    Status changeOfPort(Port &port, std::string_view key, const PropertyView *property);

    Store &store_;
    Inventory &inventory_;
    Uplinks &uplinks_;
    Changes &changes_;
};

}  // namespace qvs::kernel
