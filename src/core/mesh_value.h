// A value that the state library handed out.
#pragma once

#include <cstring>
#include <string_view>
#include <utility>

#include "core/text.h"
#include "qvs/mesh_public.h"

namespace qvs {

// Owns one value and gives it back through DVSHYP_DataFree, unless it is released to the caller.
class MeshValue {
  public:
    MeshValue() = default;
    MeshValue(const MeshValue &) = delete;
    MeshValue &operator=(const MeshValue &) = delete;
    ~MeshValue() { reset(); }

    // Takes what a DVSHYP_...Get call hands out: fetch([](void **data, uint32_t *length) { return status; }).
    // What was held before is given back; a call that failed handed out nothing, whatever it left behind.
    template <typename Get>
    [[nodiscard]] HYP_ReturnStatus fetch(Get get) {
        reset();
        const HYP_ReturnStatus status = get(&data_, &length_);
        if (status != HYP_OK) data_ = nullptr;
        return status;
    }

    const uint8_t *data() const { return static_cast<const uint8_t *>(data_); }
    uint8_t *data() { return static_cast<uint8_t *>(data_); }
    uint32_t length() const { return data_ != nullptr ? length_ : 0; }
    std::string_view text() const { return data_ != nullptr ? textOf(data_, length_) : std::string_view(); }

    // The number or packed record of type T at an offset, little-endian and unaligned; the caller has checked
    // the length.
    template <typename T>
    T at(size_t offset = 0) const {
        T value;
        std::memcpy(&value, data() + offset, sizeof value);
        return value;
    }

    // Hands the value over to the caller, who gives it back through the family's FreeMemory.
    void *release() { return std::exchange(data_, nullptr); }

    // Gives the value back now. Whether null may be given back is the state library's business; none is.
    void reset() {
        if (data_ != nullptr) DVSHYP_DataFree(release());
        length_ = 0;
    }

  private:
    void *data_ = nullptr;
    uint32_t length_ = 0;
};

}  // namespace qvs
