// SPDX-License-Identifier: Apache-2.0
// The two uplink lists as they are stored: a count, and that many texts of one size.
#pragma once

#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace qvs {

// A view of one list. It stays within its bytes, whatever count the list contains.
template <typename Entry>
class UplinkList {
  public:
    explicit UplinkList(Bytes bytes) : bytes_(bytes) {
        if (bytes.size() < sizeof head_) return;
        std::memcpy(&head_, bytes.data(), sizeof head_);
        bytes_ = bytes.subspan(sizeof head_);
        hasHead_ = true;
    }
    // A list in memory whose count has been checked.
    static UplinkList checked(const void *list) {
        QVS_ListHead head;
        std::memcpy(&head, list, sizeof head);
        return UplinkList({static_cast<const uint8_t *>(list), sizeof head + head.count * sizeof(Entry)});
    }

    // Whether the size of the list matches its count.
    bool wellFormed() const { return hasHead_ && bytes_.size() == uint64_t{head_.count} * sizeof(Entry); }
    // The number of entries that are counted and present.
    size_t size() const {
        return hasHead_ ? std::min<size_t>(head_.count, bytes_.size() / sizeof(Entry)) : 0;
    }
    // Returns the text of an entry. A text that fills its entry has no NUL.
    std::string_view operator[](size_t index) const {
        return boundedText(&bytes_[index * sizeof(Entry)], sizeof(Entry));
    }

  private:
    QVS_ListHead head_{};
    Bytes bytes_;
    bool hasHead_ = false;
};

using UplinkNames = UplinkList<VSDVS_UplinkName>;
using UplinkPorts = UplinkList<VSDVS_UplinkPort>;

// Makes a stored list of uplinks, or of their ports: a count, and entries of one size, filled up with zeros.
inline std::vector<uint8_t> packList(const std::vector<std::string> &names, size_t entrySize) {
    auto count = static_cast<uint32_t>(names.size());
    std::vector<uint8_t> list(sizeof count + names.size() * entrySize);
    std::memcpy(list.data(), &count, sizeof count);
    for (size_t i = 0; i < names.size(); i++)
        std::memcpy(&list[sizeof count + i * entrySize], names[i].data(),
                    std::min(names[i].size(), entrySize));
    return list;
}

}  // namespace qvs
