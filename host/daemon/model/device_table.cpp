// SPDX-License-Identifier: Apache-2.0
// Forms of keys and values.
#include "daemon/model/device_table.h"

#include <fmt/format.h>

#include "wire/fault.h"

namespace qvs::kernel {

std::string portKeyText(const uint32_t &number) {
    return fmt::format("{:08x}", number);
}

std::optional<uint32_t> readPortKey(std::string_view text) {
    return wire::numberOf<uint32_t>(text, 16);
}

std::string recordKeyText(const uint32_t &number) {
    return fmt::format("{:010}", number);
}

std::optional<uint32_t> readRecordKey(std::string_view text) {
    return wire::numberOf<uint32_t>(text);
}

std::string decimalText(const uint64_t &number) {
    return fmt::format("{}", number);
}

std::optional<uint64_t> readDecimal(std::string_view text) {
    return wire::numberOf<uint64_t>(text);
}

}  // namespace qvs::kernel
