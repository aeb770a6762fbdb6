// SPDX-License-Identifier: Apache-2.0
// Keeps errno over calls that change it.
#pragma once

#include <cerrno>

#include "wire/noncopyable.h"

namespace qvs::wire {

// Restores the value of errno when it is destroyed.
class KeptErrno : private Noncopyable {
  public:
    ~KeptErrno() { errno = value_; }

  private:
    int value_ = errno;
};

}  // namespace qvs::wire
