// SPDX-License-Identifier: Apache-2.0
// The blob that StateGet answers: built when it is asked for, kept until the next change.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "daemon/model/model.h"

namespace qvs::kernel {

// Bytes and whoever owns them; they stay while a slow client still receives an older state. Large ones are
// also a sealed file in memory, which clients read on their own.
struct Blob {
    std::shared_ptr<const void> owner;
    std::string_view bytes;
    int file = -1;  // the owner's
};

class Snapshot {
  public:
    explicit Snapshot(Model &model);
    ~Snapshot();

    // Without an owner when the state is too large for a blob.
    const Blob &get();
    // To be called when the answer is on its way: giving back a large blob takes as long as making one.
    void dropOutdated() { outdated_ = {}; }

  private:
    class Builder;

    bool update();

    Model &model_;
    std::unique_ptr<Builder> builder_;  // knows the last blob; null when there is none
    Blob blob_;
    Blob outdated_;
    uint64_t generation_ = 0;
};

}  // namespace qvs::kernel
