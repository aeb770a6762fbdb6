// SPDX-License-Identifier: Apache-2.0
// An open file that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

#include "wire/noncopyable.h"

namespace qvs::wire {

class File : private Noncopyable {
  public:
    File() = default;
    explicit File(int descriptor) : descriptor_(descriptor) {}
    File(File &&other) noexcept : descriptor_(other.release()) {}
    File &operator=(File &&other) noexcept {
        reset(other.release());
        return *this;
    }
    ~File() { reset(-1); }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    int release() { return std::exchange(descriptor_, -1); }
    void reset(int descriptor) {
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = descriptor;
    }

  private:
    int descriptor_ = -1;
};

}  // namespace qvs::wire
