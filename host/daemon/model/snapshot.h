// SPDX-License-Identifier: Apache-2.0
// The snapshot that StateGet returns. It is built on request and kept until the next change.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "daemon/model/model.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

// A sealed file in memory with the bytes of a blob, which clients read directly. It is written in pieces,
// because other clients would wait for milliseconds while the system allocates its pages.
class BlobFile : private wire::Noncopyable {
  public:
    ~BlobFile() { close(); }

    // Writes the next piece. Returns true when nothing is left to write.
    bool writeSome(std::string_view bytes);
    // Returns the descriptor. -1: the file is not complete, or there is none.
    int descriptor() const { return state_ == State::Sealed ? file_ : -1; }

  private:
    enum class State { Empty, Open, Sealed, Failed };

    void seal();
    void fail();
    void close();

    State state_ = State::Empty;
    int file_ = -1;
    size_t written_ = 0;
};

// Bytes with a shared owner, so that they exist as long as a client receives them.
struct Blob {
    std::shared_ptr<const void> owner;
    std::string_view bytes;
    std::shared_ptr<BlobFile> file = {};  // of a large blob
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
