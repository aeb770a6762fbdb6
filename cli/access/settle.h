// SPDX-License-Identifier: Apache-2.0
// The first step of every change.
#pragma once

namespace qvs::cli {

// Undoes an incomplete change of an earlier run and reports it. Throws while a change waits to be confirmed.
void settle();

}  // namespace qvs::cli
