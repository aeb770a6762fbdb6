// SPDX-License-Identifier: Apache-2.0
// What the fuzz targets share: the input taken apart, and the end of a run that finds a mistake.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace qvs::fuzz {

// The input taken apart from the front; what is missing is zero.
class Bytes {
  public:
    Bytes(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    bool empty() const { return size_ == 0; }
    uint8_t u8() {
        if (size_ == 0) return 0;
        --size_;
        return *data_++;
    }
    std::string_view take(size_t length) {
        if (length > size_) length = size_;
        const std::string_view bytes(reinterpret_cast<const char *>(data_), length);
        data_ += length;
        size_ -= length;
        return bytes;
    }

  private:
    const uint8_t *data_;
    size_t size_;
};

inline void require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace qvs::fuzz
