// SPDX-License-Identifier: Apache-2.0
// Builds messages and frames, field by field.
#pragma once

#include <string_view>
#include <vector>

#include "datapath/packet.h"

namespace qvs::datapath {

class ByteWriter {
  public:
    explicit ByteWriter(size_t zeros = 0) : bytes_(zeros) {}

    // Appends the lower bytes of a number, the most significant one first.
    ByteWriter &put(uint64_t value, size_t width) {
        while (width-- != 0)
            bytes_.push_back(static_cast<uint8_t>(value >> 8 * width));
        return *this;
    }
    ByteWriter &put(Bytes bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    ByteWriter &put(std::string_view text) {
        return put(Bytes(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
    }
    // Appends zeros until there are so many bytes.
    ByteWriter &pad(size_t size) {
        if (bytes_.size() < size) bytes_.resize(size);
        return *this;
    }
    size_t size() const { return bytes_.size(); }
    const std::vector<uint8_t> &bytes() const { return bytes_; }

  protected:
    std::vector<uint8_t> bytes_;
};

}  // namespace qvs::datapath
