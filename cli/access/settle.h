// SPDX-License-Identifier: Apache-2.0
// What a change begins with.
#pragma once

namespace qvs::cli {

// Undoes what an earlier run has left half done, and says so. Throws while a change waits to be confirmed.
void settle();

}  // namespace qvs::cli
