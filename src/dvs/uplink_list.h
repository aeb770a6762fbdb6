// SPDX-License-Identifier: Apache-2.0
// The layout of the two uplink lists: a QVS_ListHead and that many texts of fixed size, packed.
#pragma once

#include <cstring>

#include "core/mesh_value.h"
#include "core/text.h"
#include "qvs/vsdvs.h"

namespace qvs {

// A view of one list in memory that it does not own. The size of the memory has been checked.
template <typename Entry>
class UplinkList {
  public:
    static constexpr uint64_t sizeFor(uint64_t count) { return sizeof(QVS_ListHead) + sizeof(Entry) * count; }

    explicit UplinkList(void *bytes) : bytes_(static_cast<char *>(bytes)) {}

    // Returns whether the size of a stored value matches its count.
    static bool wellFormed(const MeshValue &value) {
        return value.length() >= sizeof(QVS_ListHead) &&
               value.length() == sizeFor(value.at<QVS_ListHead>().count);
    }

    uint32_t count() const { return head().count; }
    uint32_t size() const { return static_cast<uint32_t>(sizeFor(count())); }
    const void *data() const { return bytes_; }

    Entry &entry(uint32_t index) { return *reinterpret_cast<Entry *>(bytes_ + sizeFor(index)); }

    // Returns the text of an entry. A full entry has no NUL.
    std::string_view text(uint32_t index) { return textOf(&entry(index), sizeof(Entry)); }

    void setCount(uint32_t count) { head().count = count; }

    void erase(uint32_t index) {
        const uint32_t last = count() - 1;
        std::memmove(&entry(index), bytes_ + sizeFor(uint64_t{index} + 1), sizeof(Entry) * (last - index));
        setCount(last);
    }

  private:
    QVS_ListHead &head() const { return *reinterpret_cast<QVS_ListHead *>(bytes_); }

    char *bytes_;
};

using UplinkNames = UplinkList<VSDVS_UplinkName>;
using UplinkPorts = UplinkList<VSDVS_UplinkPort>;

}  // namespace qvs
