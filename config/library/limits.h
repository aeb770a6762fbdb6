// SPDX-License-Identifier: Apache-2.0
// The sizes of names, from the records that hold them.
#pragma once

#include "base/text.h"

namespace qvs {

inline constexpr Limit kAliasLimit{"alias", 80};
inline constexpr Limit kSwitchIdLimit{"switch identifier", 63};
inline constexpr Limit kPortsetLimit{"portset name", 127};
inline constexpr Limit kPortIdLimit{"port identifier", 47};
// The name of an uplink is also the identifier of its port. The limit is that of the smaller record.
inline constexpr Limit kUplinkLimit{"uplink name", 47};
inline constexpr Limit kLinkUplinkLimit{"uplink name in a link request", 31};

}  // namespace qvs
