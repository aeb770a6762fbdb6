// SPDX-License-Identifier: Apache-2.0
// The layout of a mirror session list: a header, the sessions, and the entities of all sessions.
#pragma once

#include <cstring>
#include <string_view>

#include "qvs/vsdvs.h"

namespace qvs {

// A view of a list in memory that it does not own. The numbers in a stored list, or in a list of the caller,
// are not trusted: all sizes are computed in 64 bits and checked before use.
class MirrorList {
  public:
    using Header = VSDVS_MirrorHeader;
    using Session = VSDVS_MirrorSession;
    using Entity = VSDVS_MirrorEntity;

    explicit MirrorList(void *bytes) : bytes_(static_cast<uint8_t *>(bytes)) {}

    static constexpr uint64_t sizeFor(uint64_t sessions, uint64_t entities) {
        return sizeof(Header) + sizeof(Session) * sessions + sizeof(Entity) * entities;
    }

    Header &header() { return *reinterpret_cast<Header *>(bytes_); }
    Session &session(uint32_t index) { return *reinterpret_cast<Session *>(bytes_ + sizeFor(index, 0)); }
    Entity *entity(uint64_t index) {
        return reinterpret_cast<Entity *>(bytes_ + sizeFor(header().sessionCount, index));
    }

    uint64_t size() { return sizeFor(header().sessionCount, header().entityCount); }

    // The number of entities of a session, and the end of its group.
    static uint64_t groupSize(const Session &session) {
        return uint64_t{session.dstEntities} + session.srcInEntities + session.srcOutEntities;
    }
    static uint64_t groupEnd(const Session &session) { return session.firstEntity + groupSize(session); }

    // Returns whether a list of the caller may be stored: every group lies inside the entity array, and every
    // counted entity belongs to a session.
    bool consistent() {
        if (size() > UINT32_MAX) return false;
        uint64_t entities = 0;
        for (uint32_t i = 0; i < header().sessionCount; ++i) {
            if (groupEnd(session(i)) > header().entityCount) return false;
            entities += groupSize(session(i));
        }
        return entities == header().entityCount;
    }

    // Returns the first session with this identifier, or null. At most 32 bytes of the identifier are
    // compared.
    Session *find(const char *sessionId) {
        for (uint32_t i = 0; i < header().sessionCount; ++i) {
            if (std::strncmp(session(i).sessionId, sessionId, sizeof session(i).sessionId) == 0) {
                return &session(i);
            }
        }
        return nullptr;
    }

  private:
    uint8_t *bytes_;
};

}  // namespace qvs
