// SPDX-License-Identifier: Apache-2.0
// The snapshot that StateGet returns. It is built on request and kept until the next change.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

// Bytes with a shared owner, so that they exist as long as a client receives them. A large blob is also a
// sealed file in memory, which clients can read directly.
struct Blob {
    std::shared_ptr<const void> owner;
    std::string_view bytes;
    int file = -1;  // owned by `owner`; -1: none
};

class Snapshot {
  public:
    explicit Snapshot(Model &model);
    ~Snapshot();

    // Returns the current snapshot. It has no owner if the state is too large.
    const Blob &get();
    // Frees the previous snapshot. Call it after the answer is sent, because it takes as long as building
    // one.
    void dropOutdated() { outdated_ = {}; }

  private:
    class Builder;

    bool update();

    Model &model_;
    std::unique_ptr<Builder> builder_;  // null if there is no blob to update
    Blob blob_;
    Blob outdated_;
    uint64_t generation_ = 0;
};

}  // namespace qvs::kernel
