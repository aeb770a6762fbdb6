// A stored record as a printer reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qvs {

// A view that cannot be read beyond its end: what is not there reads as zero.
class RecordView {
  public:
    RecordView(const void *bytes, uint32_t length)
        : bytes_(static_cast<const unsigned char *>(bytes)), length_(length) {}

    // The number of type T at an offset, little-endian and unaligned.
    template <typename T>
    T at(size_t offset) const {
        T number = 0;
        if (offset < length_) {
            const size_t rest = length_ - offset;
            std::memcpy(&number, bytes_ + offset, rest < sizeof number ? rest : sizeof number);
        }
        return number;
    }

  private:
    const unsigned char *bytes_;
    size_t length_;
};

}  // namespace qvs
