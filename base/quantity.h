// SPDX-License-Identifier: Apache-2.0
// Quantities with three digits or so, for people.
#pragma once

#include <string>

namespace qvs {

// "950", "12.5k", "1.2M": steps of 1000, of at most 5 characters up to 999 E.
std::string quantityText(double quantity);

}  // namespace qvs
