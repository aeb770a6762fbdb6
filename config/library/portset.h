// SPDX-License-Identifier: Apache-2.0
// Portsets, the kernel's side of switches, apart from the switches that they belong to.
#pragma once

#include <qvs/mesh_public.h>

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace qvs {

// The portsets of the kernel, and the aliases of the switches that have one.
struct KernelSwitches {
    std::set<std::string, std::less<>> portsets;
    std::set<std::string, std::less<>> aliases;
};
// Nothing, and a warning, when the kernel does not say.
std::optional<KernelSwitches> askKernelSwitches();
bool hasPortset(const KernelSwitches &kernel, std::string_view name);
bool hasAlias(const KernelSwitches &kernel, std::string_view alias);

// The switch that a portset belongs to by its properties; null for none.
DVSSwitch *ownerOfPortset(std::string_view portset);

// Removes a portset that belongs to no switch. False when the kernel's shell did not remove it.
bool destroyPortset(const std::string &portset);

}  // namespace qvs
