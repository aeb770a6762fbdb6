// SPDX-License-Identifier: Apache-2.0
// The mirror sessions of a port, or of the uplinks of the host.
#include <cstring>

#include "core/heap.h"
#include "dvs/mirror_list.h"
#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kPortSessions = propertyOf(QVS_KEY_PORT_MIRROR_SESSIONS);
constexpr Property kUplinkSessions = propertyOf(QVS_KEY_UPLINK_MIRROR_SESSIONS);

// A null or empty port selects the uplinks of the host.
const Property &sessionsOf(const char *port) {
    return port == nullptr || port[0] == '\0' ? kUplinkSessions : kPortSessions;
}

HYP_ReturnStatus readList(const Place &place, MeshValue &value) {
    const HYP_ReturnStatus status = getProperty(place, sessionsOf(place.portId()), value);
    if (status != HYP_OK) return status;
    if (value.length() < sizeof(VSDVS_MirrorHeader) || MirrorList(value.data()).size() > value.length()) {
        value.reset();
        return HYP_FAILURE;
    }
    return HYP_OK;
}

HYP_ReturnStatus storeList(const Place &place, MirrorList list) {
    return setProperty(place, sessionsOf(place.portId()), &list.header(), static_cast<uint32_t>(list.size()));
}

bool anyStored(MirrorList stored, MirrorList added) {
    for (uint32_t i = 0; i < added.header().sessionCount; ++i) {
        // An identifier of 32 bytes has no NUL, so the comparison is limited to 32 bytes.
        if (stored.find(added.session(i).sessionId) != nullptr) return true;
    }
    return false;
}

// Joins two lists: stored sessions, added sessions, stored entities, added entities. The indexes of the added
// groups are increased by the number of stored entities.
HeapBytes join(MirrorList stored, MirrorList added) {
    const VSDVS_MirrorHeader &old = stored.header();
    const VSDVS_MirrorHeader &more = added.header();
    const uint64_t sessions = uint64_t{old.sessionCount} + more.sessionCount;
    const uint64_t entities = uint64_t{old.entityCount} + more.entityCount;
    HeapBytes buffer = allocateZeroed(MirrorList::sizeFor(sessions, entities));
    if (buffer == nullptr) return buffer;

    MirrorList joined(buffer.get());
    joined.header() = old;
    joined.header().sessionCount = static_cast<uint32_t>(sessions);
    joined.header().entityCount = static_cast<uint32_t>(entities);
    std::memcpy(&joined.session(0), &stored.session(0), sizeof(VSDVS_MirrorSession) * old.sessionCount);
    for (uint32_t i = 0; i < more.sessionCount; ++i) {
        VSDVS_MirrorSession &session = joined.session(old.sessionCount + i);
        session = added.session(i);
        session.firstEntity += old.entityCount;
    }
    std::memcpy(joined.entity(0), stored.entity(0), sizeof(VSDVS_MirrorEntity) * old.entityCount);
    std::memcpy(joined.entity(old.entityCount), added.entity(0),
                sizeof(VSDVS_MirrorEntity) * more.entityCount);
    return buffer;
}

// Removes one session and its group of entities from a list, in place. Returns false if the list does not
// contain the whole group.
bool erase(MirrorList list, VSDVS_MirrorSession &session) {
    VSDVS_MirrorHeader &header = list.header();
    if (MirrorList::groupEnd(session) > header.entityCount) return false;
    const uint32_t first = session.firstEntity;
    const auto removed = static_cast<uint32_t>(MirrorList::groupSize(session));
    const uint32_t behind = header.entityCount - first - removed;

    VSDVS_MirrorSession *end = &list.session(header.sessionCount);
    for (VSDVS_MirrorSession *later = &session + 1; later != end; ++later)
        later->firstEntity -= removed;

    // The later sessions and the entities before the group move down as one block, then the entities after
    // the group.
    const VSDVS_MirrorEntity *group = list.entity(first);
    const VSDVS_MirrorEntity *follow = list.entity(uint64_t{first} + removed);
    const auto *from = reinterpret_cast<const uint8_t *>(&session + 1);
    const auto block = static_cast<size_t>(reinterpret_cast<const uint8_t *>(group) - from);
    auto *to = reinterpret_cast<uint8_t *>(&session);
    std::memmove(to, from, block);
    std::memmove(to + block, follow, sizeof(VSDVS_MirrorEntity) * behind);
    header.sessionCount -= 1;
    header.entityCount -= removed;
    return true;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetDVMirrorSessions(const char *alias, const char *port, void **list) {
    if (list != nullptr) *list = nullptr;
    if (alias == nullptr) return HYP_BAD_PARAM;
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return HYP_FAILURE;  // on purpose not the resolver's status
    MeshValue value;
    const HYP_ReturnStatus status = readList(place, value);
    if (status != HYP_OK) return status;
    if (list == nullptr) return HYP_BAD_PARAM;
    *list = value.release();
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetDVMirrorSessions(const char *alias, const char *port, const void *list) {
    if (list == nullptr) return HYP_BAD_PARAM;
    MirrorList sessions(const_cast<void *>(list));  // only read here
    if (!sessions.consistent()) return HYP_BAD_PARAM;
    return storeList(Place::ofAlias(alias, port), sessions);
}

extern "C" HYP_ReturnStatus VSDVS_ClearDVMirrorSessions(const char *alias, const char *port) {
    return clearIfPresent(Place::ofAlias(alias, port), sessionsOf(port));
}

extern "C" HYP_ReturnStatus VSDVS_AppendDVMirrorSessions(const char *alias, const char *port,
                                                         const void *list) {
    if (list == nullptr) return HYP_BAD_PARAM;
    MirrorList added(const_cast<void *>(list));  // only read here
    if (!added.consistent()) return HYP_BAD_PARAM;
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return place.status();

    VSDVS_MirrorHeader empty = {VSDVS_MIRROR_MAGIC, VSDVS_MIRROR_VERSION, 0, 0, 0};
    MeshValue value;
    const HYP_ReturnStatus status = readList(place, value);
    if (status != HYP_OK && status != HYP_NOT_FOUND) return status;
    MirrorList stored(status == HYP_OK ? static_cast<void *>(value.data()) : &empty);

    if (anyStored(stored, added)) return HYP_EXISTS;
    const HeapBytes joined = join(stored, added);
    if (joined == nullptr) return HYP_NO_MEMORY;
    return storeList(place, MirrorList(joined.get()));
}

extern "C" HYP_ReturnStatus VSDVS_RemoveDVMirrorSession(const char *alias, const char *port,
                                                        const char *sessionId) {
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return place.status();
    MeshValue value;
    if (const HYP_ReturnStatus status = readList(place, value); status != HYP_OK) return status;
    if (sessionId == nullptr) return HYP_BAD_PARAM;

    MirrorList list(value.data());
    VSDVS_MirrorSession *session = list.find(sessionId);
    if (session == nullptr) return HYP_NOT_FOUND;
    if (list.header().sessionCount == 1) return clearProperty(place, sessionsOf(port));
    if (!erase(list, *session)) return HYP_FAILURE;
    return storeList(place, list);
}
