// SPDX-License-Identifier: Apache-2.0
// The view through which printers read a stored record.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qvs {

// A view that cannot be read beyond its end: bytes that are not there are zero, texts end, and no more
// entries are counted than there are bytes for. Offsets are those of the records of the public headers.
class RecordView {
  public:
    RecordView(const void *bytes, uint32_t length)
        : bytes_(static_cast<const unsigned char *>(bytes)), length_(length) {}

    uint32_t length() const { return length_; }
    const unsigned char *bytes() const { return bytes_; }

    // The number or packed record of type T at an offset, little-endian and unaligned.
    template <typename T>
    T at(uint64_t offset = 0) const {
        T value{};
        if (offset < length_ && length_ - offset >= sizeof value) {
            std::memcpy(&value, bytes_ + offset, sizeof value);
        } else if (offset < length_) {
            std::memcpy(&value, bytes_ + offset, static_cast<size_t>(length_ - offset));
        }
        return value;
    }

    // Returns the text in a field: up to a NUL, the end of the field, or the end of the record.
    std::string_view text(uint64_t offset, size_t fieldSize = SIZE_MAX) const {
        if (offset >= length_) return "";
        const char *start = reinterpret_cast<const char *>(bytes_ + offset);
        return {start, strnlen(start, std::min(fieldSize, static_cast<size_t>(length_ - offset)))};
    }

    // Returns how many of `count` entries are complete in the record; the first one is at an offset. Use it
    // for numbers, because a truncated number would be a different number.
    uint64_t wholeEntries(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        if (offset >= length_) return 0;
        return std::min(count, (length_ - offset) / entrySize);
    }

    // Returns how many of `count` entries start inside the record. Use it for texts, because a part of a text
    // is still useful.
    uint64_t entries(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        if (offset >= length_) return 0;
        return std::min(count, (length_ - offset + entrySize - 1) / entrySize);
    }

    // Like entries, for entries that share a row. The row is empty if the record contains no complete entry.
    uint64_t entriesOfRow(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        return wholeEntries(count, offset, entrySize) != 0 ? entries(count, offset, entrySize) : 0;
    }

  private:
    const unsigned char *bytes_;
    uint32_t length_;
};

}  // namespace qvs
