// SPDX-License-Identifier: Apache-2.0
// The statuses that the kernel returns to the state library. Ignoring one is a compile error.
#pragma once

#include <cstdint>

namespace qvs::kernel {

enum class [[nodiscard]] Status : uint32_t{
    Ok = 0,
    Failure = 0xbad0001,
    NotFound = 0xbad0003,
    Busy = 0xbad0004,
    Exists = 0xbad0005,
    LimitExceeded = 0xbad0006,
    BadParameter = 0xbad0007,
    NoMemory = 0xbad0014,
    NoSpace = 0xbad00d7,
};

}  // namespace qvs::kernel
