// SPDX-License-Identifier: Apache-2.0
// Messages consist of a header of 16 bytes and of sets: u16 number, u16 length, their records.
#include "datapath/engine/message.h"

namespace qvs::datapath {
namespace {

constexpr size_t kHeader = 16;
constexpr uint16_t kVersion = 10;

}  // namespace

Message::Message(uint32_t domain) : ByteWriter(kHeader) {
    write16(bytes_.data(), kVersion);
    write32(bytes_.data() + 12, domain);
}

void Message::set(uint16_t number) {
    if (number == number_) return;
    endSet();
    number_ = number;
    setAt_ = bytes_.size();
    put(number, 2);
    put(0, 2);
}

void Message::endSet() {
    if (number_ != 0) write16(bytes_.data() + setAt_ + 2, static_cast<uint32_t>(bytes_.size() - setAt_));
}

std::span<uint8_t> Message::finish(uint32_t exportTime) {
    endSet();
    write16(bytes_.data() + 2, static_cast<uint32_t>(bytes_.size()));
    write32(bytes_.data() + 4, exportTime);
    return bytes_;
}

}  // namespace qvs::datapath
