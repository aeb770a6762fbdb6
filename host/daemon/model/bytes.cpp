// SPDX-License-Identifier: Apache-2.0
// Reads and writes fields.
#include "daemon/model/bytes.h"

#include <algorithm>

#include "daemon/model/property.h"

namespace qvs::kernel {

std::string_view textAt(std::string_view bytes, size_t offset, size_t width) {
    return offset >= bytes.size() ? std::string_view{} : untilNul(bytes.substr(offset, width));
}

Record &Record::text(size_t offset, size_t width, std::string_view value) {
    return bytes(offset, value.substr(0, width - 1));
}

Record &Record::bytes(size_t offset, std::string_view value) {
    bytes_.replace(offset, value.size(), value);
    return *this;
}

Record &Record::counters(size_t offset, CounterRow row, size_t end) {
    for (end = std::min(end, bytes_.size()); offset < end; offset += sizeof(uint64_t))
        put(offset, row.next());
    return *this;
}

}  // namespace qvs::kernel
