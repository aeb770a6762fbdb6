// A stored record as a printer reads it.
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

    // The text in a field: up to a NUL, the end of the field or the end of the record.
    std::string_view text(uint64_t offset, size_t fieldSize = SIZE_MAX) const {
        if (offset >= length_) return "";
        const char *start = reinterpret_cast<const char *>(bytes_ + offset);
        return {start, strnlen(start, std::min(fieldSize, static_cast<size_t>(length_ - offset)))};
    }

    // How many of `count` entries the record holds to their ends, the first of them at an offset. A number
    // cut short would be another number.
    uint64_t wholeEntries(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        if (offset >= length_) return 0;
        return std::min(count, (length_ - offset) / entrySize);
    }

    // How many of `count` entries begin inside the record: texts, of which a part says something.
    uint64_t entries(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        if (offset >= length_) return 0;
        return std::min(count, (length_ - offset + entrySize - 1) / entrySize);
    }

    // The same for entries that share a row, which stays empty when the record holds none of them whole.
    uint64_t entriesOfRow(uint64_t count, uint64_t offset, uint64_t entrySize) const {
        return wholeEntries(count, offset, entrySize) != 0 ? entries(count, offset, entrySize) : 0;
    }

  private:
    const unsigned char *bytes_;
    uint32_t length_;
};

}  // namespace qvs
