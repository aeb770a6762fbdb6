// SPDX-License-Identifier: Apache-2.0
// A value that the state library returned.
#pragma once

#include <cstring>
#include <string_view>
#include <utility>

#include "core/text.h"
#include "qvs/mesh_public.h"

namespace qvs {

// Owns one value and releases it with DVSHYP_DataFree, unless it is passed to the caller.
class MeshValue {
  public:
    MeshValue() = default;
    MeshValue(const MeshValue &) = delete;
    MeshValue &operator=(const MeshValue &) = delete;
    ~MeshValue() { reset(); }

    // Stores the result of a DVSHYP_...Get call: fetch([](void **data, uint32_t *length) { return status; }).
    // Releases the previous value first. If the call fails, there is no value, whatever the outputs contain.
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

    // Passes the value to the caller, who releases it with the FreeMemory function of the family.
    void *release() { return std::exchange(data_, nullptr); }

    // Releases the value now. Null is not passed to the state library.
    void reset() {
        if (data_ != nullptr) DVSHYP_DataFree(release());
        length_ = 0;
    }

  private:
    void *data_ = nullptr;
    uint32_t length_ = 0;
};

}  // namespace qvs
