// SPDX-License-Identifier: Apache-2.0
// Finds and removes portsets, the data paths of switches in the kernel.
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
// Returns nothing and warns when the kernel does not answer.
std::optional<KernelSwitches> askKernelSwitches();
bool hasPortset(const KernelSwitches &kernel, std::string_view name);
bool hasAlias(const KernelSwitches &kernel, std::string_view alias);

// Returns the switch whose properties name the portset, or null.
DVSSwitch *ownerOfPortset(std::string_view portset);

// Removes a portset that belongs to no switch. Returns false when the kernel's shell did not remove it.
bool destroyPortset(const std::string &portset);

}  // namespace qvs
