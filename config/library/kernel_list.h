// SPDX-License-Identifier: Apache-2.0
// Counted lists of the kernel, kept within what was handed over; and the name by which the kernel knows a
// switch.
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

// A counted list of the kernel: a header with the count in front, and entries of one size.
struct KernelList {
    std::shared_ptr<void> buffer;
    size_t entrySize = 0;
    size_t headerSize = 0;
    uint32_t count = 0;  // of the entries that were really handed over

    Bytes entry(uint32_t index) const;
    // The header and the entries that were handed over.
    Bytes bytes() const;
};

// Asks the kernel for a list; null for none.
using AskList = std::function<std::shared_ptr<void>()>;

// Asks, and bounds the count that the kernel wrote, into the header at countAt, by what the buffer holds;
// warns when it claims more. Asks again where the buffer alone does not tell whether its last entries, of
// zeros, were handed over.
KernelList boundedList(const AskList &ask, size_t entrySize, std::string_view what,
                       size_t headerSize = sizeof(VSHYP_ListHeader), size_t countAt = 0);

// The portset name, by which the kernel knows the switch.
std::string portsetOf(const std::string &alias);

}  // namespace qvs
