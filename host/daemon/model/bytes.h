// SPDX-License-Identifier: Apache-2.0
// Reads and writes fields of records and frames at their offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "daemon/model/counters.h"

namespace qvs::kernel {

// Returns a number of a record or frame. Bytes beyond the end read as zero.
template <typename T>
T numberAt(std::string_view bytes, size_t offset) {
    T value{};
    if (offset + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}
inline uint8_t u8At(std::string_view bytes, size_t offset) {
    return numberAt<uint8_t>(bytes, offset);
}
inline uint16_t u16At(std::string_view bytes, size_t offset) {
    return numberAt<uint16_t>(bytes, offset);
}
inline uint32_t u32At(std::string_view bytes, size_t offset) {
    return numberAt<uint32_t>(bytes, offset);
}
inline uint64_t u64At(std::string_view bytes, size_t offset) {
    return numberAt<uint64_t>(bytes, offset);
}
// Returns a text field up to its NUL, or the whole field if it has none.
std::string_view textAt(std::string_view bytes, size_t offset, size_t width);

// A record of an answer. It consists of zeros until fields are written.
class Record {
  public:
    explicit Record(size_t size) : bytes_(size, '\0') {}

    template <typename T>
    Record &put(size_t offset, T value) {
        bytes_.replace(offset, sizeof value, reinterpret_cast<const char *>(&value), sizeof value);
        return *this;
    }
    // Writes at most width - 1 bytes, so that the field ends with a NUL.
    Record &text(size_t offset, size_t width, std::string_view value);
    Record &bytes(size_t offset, std::string_view value);
    // Writes u64 counters up to `end`, or to the end of the record.
    Record &counters(size_t offset, CounterRow row, size_t end = SIZE_MAX);
    std::string take() { return std::move(bytes_); }
    const std::string &view() const { return bytes_; }

  private:
    std::string bytes_;
};

}  // namespace qvs::kernel
