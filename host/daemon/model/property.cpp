// SPDX-License-Identifier: Apache-2.0
// The pool of shared properties, and the sorted list of one place.
#include "daemon/model/property.h"

#include <algorithm>
#include <functional>

namespace qvs::kernel {

size_t PropertyPool::Hash::hash(const PropertyView &view) {
    const std::hash<std::string_view> bytes;
    constexpr size_t kOdd = 0x9e3779b97f4a7c15u;
    return (bytes(view.key) * kOdd ^ bytes(view.value)) * kOdd ^ view.type;
}

PropertyRef PropertyPool::intern(const PropertyView &view) {
    if (const auto found = known_.find(view); found != known_.end()) return (*found)->shared_from_this();
    auto fresh = std::make_unique<const Property>(takeKey(view.key), view);
    known_.insert(fresh.get());
    return PropertyRef(fresh.release(), [this](const Property *property) {
        known_.erase(property);
        returnKey(property->key);
        delete property;
    });
}

std::string_view PropertyPool::takeKey(std::string_view key) {
    auto found = keys_.find(key);
    if (found == keys_.end()) {
        auto text = std::make_unique<std::string>(key);
        const std::string_view pooled = *text;
        found = keys_.emplace(pooled, std::pair(std::move(text), 0)).first;
    }
    ++found->second.second;
    return found->first;
}

void PropertyPool::returnKey(std::string_view key) {
    const auto found = keys_.find(key);
    if (--found->second.second == 0) keys_.erase(found);
}

std::vector<PropertyRef>::iterator PropertyList::position(std::string_view key) {
    return std::lower_bound(
        properties_.begin(), properties_.end(), key,
        [](const PropertyRef &property, std::string_view k) { return property->key < k; });
}

const Property *PropertyList::find(std::string_view key) const {
    const auto at = const_cast<PropertyList *>(this)->position(key);
    return at != properties_.end() && (*at)->key == key ? at->get() : nullptr;
}

std::string_view PropertyList::text(std::string_view key) const {
    const Property *property = find(key);
    return property == nullptr ? std::string_view{} : untilNul(property->value);
}

void PropertyList::set(PropertyRef property) {
    const auto at = position(property->key);
    if (at != properties_.end() && (*at)->key == property->key) {
        *at = std::move(property);
    } else {
        properties_.insert(at, std::move(property));
    }
}

void PropertyList::reserveOne() {
    // The list of a port is small, and there are many: the room grows as that of a vector does.
    if (properties_.size() == properties_.capacity())
        properties_.reserve(std::max(properties_.size() + 1, 2 * properties_.size()));
}

void PropertyList::clear(std::string_view key) {
    const auto at = position(key);
    if (at != properties_.end() && (*at)->key == key) properties_.erase(at);
}

std::string_view untilNul(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace qvs::kernel
