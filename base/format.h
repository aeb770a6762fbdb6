// SPDX-License-Identifier: Apache-2.0
// <fmt/format.h> for sources that call fmt::format_to: what it calls is compiled once, in fmt.cpp. Otherwise
// the compiler would spend two seconds on the formats of numbers in each of these sources.
#pragma once

#include <fmt/format.h>

FMT_BEGIN_NAMESPACE
namespace detail {

extern template void vformat_to(buffer<char> &, string_view, basic_format_args<buffer_context<char>>,
                                locale_ref);

}  // namespace detail
FMT_END_NAMESPACE
