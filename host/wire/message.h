// SPDX-License-Identifier: Apache-2.0
// Builds and reads the messages of protocol.h.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "wire/protocol.h"

namespace qvs::wire {

// Builds a message. Fields are appended, and `bytes()` returns the message to send.
class Writer {
  public:
    // `memory` is used again for the message.
    explicit Writer(Kind kind, std::string memory = {}) : buffer_(std::move(memory)) {
        buffer_.assign(sizeof(Head), '\0');
        const auto value = static_cast<uint32_t>(kind);
        std::memcpy(buffer_.data() + offsetof(Head, kind), &value, sizeof value);
    }

    Writer &u8(uint8_t value) { return raw(&value, sizeof value); }
    Writer &u32(uint32_t value) { return raw(&value, sizeof value); }
    Writer &i32(int32_t value) { return raw(&value, sizeof value); }
    Writer &u64(uint64_t value) { return raw(&value, sizeof value); }
    Writer &text(std::string_view value) {
        u32(static_cast<uint32_t>(value.size()));
        return raw(value.data(), value.size());
    }

    std::string_view bytes() {
        const auto length = static_cast<uint32_t>(buffer_.size() - sizeof(Head));
        std::memcpy(buffer_.data() + offsetof(Head, length), &length, sizeof length);
        return buffer_;
    }
    // Returns the message without copying it. The writer is then of no further use.
    std::string take() {
        bytes();
        return std::move(buffer_);
    }

  private:
    Writer &raw(const void *data, size_t size) {
        if (size != 0) buffer_.append(static_cast<const char *>(data), size);
        return *this;
    }

    std::string buffer_;
};

// Reads a payload. A missing field reads as zero or empty text and makes `complete` return false, so that
// callers check once at the end.
class Reader {
  public:
    explicit Reader(std::string_view payload) : rest_(payload) {}

    uint8_t u8() { return number<uint8_t>(); }
    uint32_t u32() { return number<uint32_t>(); }
    int32_t i32() { return number<int32_t>(); }
    uint64_t u64() { return number<uint64_t>(); }
    std::string_view text() { return take(u32()); }

    // Returns true if a field was missing.
    bool failed() const { return !good_; }
    // Returns true if no field was missing and nothing follows the last one.
    bool complete() const { return good_ && rest_.empty(); }

  private:
    template <typename T>
    T number() {
        T value{};
        const std::string_view bytes = take(sizeof value);
        if (good_) std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }

    std::string_view take(size_t size) {
        if (size > rest_.size()) good_ = false;
        if (!good_) return {};
        const std::string_view field = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return field;
    }

    std::string_view rest_;
    bool good_ = true;
};

}  // namespace qvs::wire
