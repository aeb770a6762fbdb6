// SPDX-License-Identifier: Apache-2.0
// A list of mirror sessions as it is stored: a header, the sessions, and the entities of all sessions.
#pragma once

#include <qvs/vsdvs.h>

#include <cstdint>
#include <cstring>
#include <optional>

#include "base/text.h"

namespace qvs::config {

// A view of a list. It stays within its bytes, whatever counts the list contains.
class MirrorList {
  public:
    static constexpr uint64_t sizeFor(uint64_t sessions, uint64_t entities) {
        return sizeof(VSDVS_MirrorHeader) + sessions * sizeof(VSDVS_MirrorSession) +
               entities * sizeof(VSDVS_MirrorEntity);
    }

    // Returns nothing when the list counts more than the bytes hold.
    static std::optional<MirrorList> of(Bytes bytes) {
        MirrorList list(bytes);
        if (bytes.size() < sizeof list.header_) return std::nullopt;
        std::memcpy(&list.header_, bytes.data(), sizeof list.header_);
        if (bytes.size() < sizeFor(list.header_.sessionCount, list.header_.entityCount)) return std::nullopt;
        return list;
    }
    // A list in memory whose counts libqvs has compared with its size.
    static MirrorList checked(const void *bytes) {
        VSDVS_MirrorHeader header;
        std::memcpy(&header, bytes, sizeof header);
        const uint64_t size = sizeFor(header.sessionCount, header.entityCount);
        return *of({static_cast<const uint8_t *>(bytes), static_cast<size_t>(size)});
    }

    const VSDVS_MirrorHeader &header() const { return header_; }
    uint32_t size() const { return header_.sessionCount; }
    VSDVS_MirrorSession session(uint32_t index) const { return at<VSDVS_MirrorSession>(sizeFor(index, 0)); }
    VSDVS_MirrorEntity entity(uint64_t index) const {
        return at<VSDVS_MirrorEntity>(sizeFor(header_.sessionCount, index));
    }

    // Returns the end of a group of a session, as the session claims it.
    static uint64_t groupEnd(const VSDVS_MirrorSession &session) {
        return uint64_t{session.firstEntity} + session.dstEntities + session.srcInEntities +
               session.srcOutEntities;
    }
    // Whether the list has all entities that a session claims.
    bool hasGroup(const VSDVS_MirrorSession &session) const {
        return groupEnd(session) <= header_.entityCount;
    }

  private:
    explicit MirrorList(Bytes bytes) : bytes_(bytes) {}

    template <typename Packed>
    Packed at(uint64_t offset) const {
        Packed record;
        std::memcpy(&record, &bytes_[static_cast<size_t>(offset)], sizeof record);
        return record;
    }

    Bytes bytes_;
    VSDVS_MirrorHeader header_{};
};

}  // namespace qvs::config
