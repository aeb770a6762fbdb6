// SPDX-License-Identifier: Apache-2.0
// Messages of RFC 7011, of templates and of records.
#pragma once

#include "datapath/byte_writer.h"

namespace qvs::datapath {

class Message : public ByteWriter {
  public:
    explicit Message(uint32_t domain);

    // What follows belongs to the set with this number.
    void set(uint16_t number);
    // Ends the message. The sequence number, at 8, is left to the sender.
    std::span<uint8_t> finish(uint32_t exportTime);

  private:
    void endSet();

    uint16_t number_ = 0;
    size_t setAt_ = 0;
};

}  // namespace qvs::datapath
