// SPDX-License-Identifier: Apache-2.0
// The base of classes that cannot be copied.
#pragma once

namespace qvs::wire {

struct Noncopyable {
    Noncopyable() = default;
    Noncopyable(const Noncopyable &) = delete;
    Noncopyable &operator=(const Noncopyable &) = delete;
};

}  // namespace qvs::wire
