// SPDX-License-Identifier: Apache-2.0
// DVSData_Alloc and the other functions of the container, which collects the first properties of a port.
#include <qvs/mesh_public.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "state_library/property_list.h"
#include "wire/protocol.h"

using qvs::mesh::PropertyView;

namespace {

// Key and value follow the entry in the same allocation. A zero byte follows each of them.
struct Entry {
    Entry *next;
    uint32_t keyLength;
    uint32_t length;
    uint32_t type;

    char *key() { return reinterpret_cast<char *>(this + 1); }
    char *value() { return key() + keyLength + 1; }
    PropertyView view() { return {{key(), keyLength}, {value(), length}, type}; }
};

}  // namespace

// All memory comes from the allocator of the client.
struct DVSData {
    void *(*allocator)(size_t);
    void (*releaser)(void *);
    Entry *first;
};

namespace {

Entry *makeEntry(const DVSData &container, const char *key, const void *value, uint32_t length,
                 uint32_t type) {
    const size_t keyLength = std::strlen(key);
    void *memory = container.allocator(sizeof(Entry) + keyLength + 1 + length + 1);
    if (memory == nullptr) return nullptr;
    auto *entry = new (memory) Entry{nullptr, static_cast<uint32_t>(keyLength), length, type};
    std::memcpy(entry->key(), key, keyLength + 1);
    if (length != 0) std::memcpy(entry->value(), value, length);
    entry->value()[length] = '\0';
    return entry;
}

}  // namespace

HYP_ReturnStatus DVSData_Alloc(DVSData **data, void *(*allocator)(size_t), void (*releaser)(void *)) {
    if (data == nullptr || allocator == nullptr || releaser == nullptr) return HYP_BAD_PARAM;
    void *memory = allocator(sizeof(DVSData));
    *data = memory == nullptr ? nullptr : new (memory) DVSData{allocator, releaser, nullptr};
    return memory == nullptr ? HYP_NO_MEMORY : HYP_OK;
}

// An existing key keeps its place and gets the new value.
HYP_ReturnStatus DVSData_Update(DVSData *data, const char *key, const void *value, uint32_t length,
                                uint32_t propType) {
    if (data == nullptr || key == nullptr || (value == nullptr && length != 0)) return HYP_BAD_PARAM;
    Entry *entry = makeEntry(*data, key, value, length, propType);
    if (entry == nullptr) return HYP_NO_MEMORY;

    Entry **place = &data->first;
    while (*place != nullptr && std::strcmp((*place)->key(), key) != 0)
        place = &(*place)->next;
    if (Entry *replaced = *place; replaced != nullptr) {
        entry->next = replaced->next;
        data->releaser(replaced);
    }
    *place = entry;
    return HYP_OK;
}

HYP_ReturnStatus DVSData_Serialize(DVSData *data, void **buffer, uint32_t *length, uint32_t format) try {
    if (data == nullptr || buffer == nullptr || length == nullptr || format != DVS_DATA_FORMAT) {
        return HYP_BAD_PARAM;
    }
    std::vector<PropertyView> properties;
    uint64_t size = 0;
    for (Entry *entry = data->first; entry != nullptr; entry = entry->next) {
        size += uint64_t{entry->keyLength} + entry->length;
        properties.push_back(entry->view());
    }
    // A larger container would not fit into a request.
    if (size > qvs::wire::kMaxRequest) return HYP_LIMIT_EXCEEDED;
    const flatbuffers::DetachedBuffer blob = qvs::mesh::packProperties(properties);

    void *copy = std::malloc(blob.size());
    if (copy == nullptr) return HYP_NO_MEMORY;
    std::memcpy(copy, blob.data(), blob.size());
    *buffer = copy;
    *length = static_cast<uint32_t>(blob.size());
    return HYP_OK;
} catch (const std::bad_alloc &) {
    return HYP_NO_MEMORY;
}

void DVSData_Free(DVSData *data) {
    if (data == nullptr) return;
    void (*const releaser)(void *) = data->releaser;
    for (Entry *entry = data->first; entry != nullptr;) {
        Entry *const next = entry->next;
        releaser(entry);
        entry = next;
    }
    releaser(data);
}
