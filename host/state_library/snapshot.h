// SPDX-License-Identifier: Apache-2.0
// The snapshot of the process: a verified copy of a State blob, which is searched in place.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "state_generated.h"

namespace qvs::mesh {

constexpr char kAliasKey[] = "com.quillon.common.alias";

// A snapshot is empty until it is loaded. The handles of the public interface are pointers into the blob. The
// `own...` functions check and convert them. They return null for pointers outside of the current blob, such
// as handles from before a reload.
class Snapshot {
  public:
    enum class Result { Loaded, Malformed, NoMemory };

    // Replaces the snapshot. After a failure it is empty. The blob need not be trusted or aligned.
    Result load(const void *blob, uint32_t length);
    void reset();
    // Returns a number that changes with every load and reset, so that a walk detects when a callback
    // replaced the blob.
    uint64_t generation() const { return generation_; }

    std::span<const Switch> switches() const { return switches_; }
    std::span<const Port> ports(const Switch &sw) const;
    std::span<const uint32_t> list(const Range &range) const;
    const Property &property(uint32_t index) const { return properties_[index]; }
    const char *text(uint32_t position) const { return reinterpret_cast<const char *>(&bytes_[position]); }

    const Switch *findSwitch(const char *id) const;
    const Switch *findAlias(std::string_view alias) const;
    const Port *findPort(const Switch &sw, const char *id) const;
    const Property *findProperty(const Range &range, std::string_view key) const;

    const Switch *ownSwitch(const void *handle) const;
    const Port *ownPort(const void *handle) const;
    const Property *ownProperty(const void *handle) const;

  private:
    template <typename Entry>
    const Entry *findById(std::span<const uint32_t> order, std::span<const Entry> entries,
                          const char *id) const;
    bool read(const uint8_t *blob, uint32_t length);
    bool consistent() const;

    void *blob_ = nullptr;
    uint64_t generation_ = 0;
    std::span<const uint8_t> bytes_;
    std::span<const Property> properties_;
    std::span<const uint32_t> lists_;
    std::span<const Port> ports_;
    std::span<const uint32_t> portsById_;
    std::span<const Switch> switches_;
    std::span<const uint32_t> switchesById_;
    std::span<const Alias> aliases_;
};

}  // namespace qvs::mesh
