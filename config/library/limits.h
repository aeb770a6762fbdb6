// SPDX-License-Identifier: Apache-2.0
// What the records that hold a name have room for.
#pragma once

#include "base/text.h"

namespace qvs {

inline constexpr Limit kAliasLimit{"alias", 80};
inline constexpr Limit kSwitchIdLimit{"switch identifier", 63};
inline constexpr Limit kPortsetLimit{"portset name", 127};
inline constexpr Limit kPortIdLimit{"port identifier", 47};
// An uplink's name is also the identifier of its port, which is the shorter of the two records.
inline constexpr Limit kUplinkLimit{"uplink name", 47};
inline constexpr Limit kLinkUplinkLimit{"uplink name in a link request", 31};

}  // namespace qvs
