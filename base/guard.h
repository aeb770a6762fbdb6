// SPDX-License-Identifier: Apache-2.0
// What an operation that writes keeps other runs from changing meanwhile.
#pragma once

namespace qvs {

// The switch that it names, or the host when it names none; every switch; nothing.
enum class Guard { Switch, Everything, None };

}  // namespace qvs
