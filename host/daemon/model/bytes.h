// SPDX-License-Identifier: Apache-2.0
// Fields of records and frames in memory, read and written at their offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "daemon/model/counters.h"

namespace qvs::kernel {

// Fields of fetched records and frames; what lies beyond the end reads as zero.
uint16_t u16At(std::string_view bytes, size_t offset);
uint32_t u32At(std::string_view bytes, size_t offset);
uint64_t u64At(std::string_view bytes, size_t offset);
// A text field: up to its NUL or its end.
std::string_view textAt(std::string_view bytes, size_t offset, size_t width);

// A record to be answered: zeros until a field is put.
class Record {
  public:
    explicit Record(size_t size) : bytes_(size, '\0') {}

    template <typename T>
    Record &put(size_t offset, T value) {
        bytes_.replace(offset, sizeof value, reinterpret_cast<const char *>(&value), sizeof value);
        return *this;
    }
    // At most width - 1 bytes, so that a NUL remains.
    Record &text(size_t offset, size_t width, std::string_view value);
    Record &bytes(size_t offset, std::string_view value);
    // u64 counters one after the other, up to an end or that of the record.
    Record &counters(size_t offset, CounterRow row, size_t end = SIZE_MAX);
    std::string take() { return std::move(bytes_); }
    const std::string &view() const { return bytes_; }

  private:
    std::string bytes_;
};

}  // namespace qvs::kernel
