// SPDX-License-Identifier: Apache-2.0
// Reads the lists of the kernel within the bytes that it returned.
#pragma once

#include <qvs/vshyp.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"

namespace qvs {

// A list of the kernel: a header that contains the count, and entries of one size.
struct KernelList {
    std::shared_ptr<void> buffer;
    size_t entrySize = 0;
    size_t headerSize = 0;
    uint32_t count = 0;  // of the entries that were really handed over

    Bytes entry(uint32_t index) const;
    // The header and the entries that the kernel returned.
    Bytes bytes() const;
};

// Requests a list. Returns null when there is none.
using AskList = std::function<std::shared_ptr<void>()>;

// Requests a list and limits the count in its header, at countAt, to the entries that the buffer holds. Warns
// when the count is larger. Repeats the request when the last entries are zeros, because the buffer alone
// does not show whether the kernel wrote them.
KernelList boundedList(const AskList &ask, size_t entrySize, std::string_view what,
                       size_t headerSize = sizeof(VSHYP_ListHeader), size_t countAt = 0);

// Returns the portset name of a switch, which the kernel uses as its name.
std::string portsetOf(const std::string &alias);

}  // namespace qvs
