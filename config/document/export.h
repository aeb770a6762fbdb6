// SPDX-License-Identifier: Apache-2.0
// Makes the document of what a host has stored.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "config/document/document.h"

namespace qvs::config {

struct ExportOptions {
    bool withDefaults = false;  // settings that are not stored are written with what holds
};

// Makes the document of these switches, or of all of class "vswitch" when none is named, from the loaded
// snapshot. Warnings name the records that no setting expresses. Throws Failure when a switch does not exist.
Document exportDocument(std::span<const std::string> aliases, const ExportOptions &options,
                        std::vector<std::string> &warnings);

}  // namespace qvs::config
