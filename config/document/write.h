// SPDX-License-Identifier: Apache-2.0
// Writes documents and values as text. readDocument reads both forms of a document back.
#pragma once

#include <string>

#include "config/document/document.h"

namespace qvs::config {

std::string writeYaml(const Document &document);
std::string writeJson(const Document &document);

// Returns the value of a setting as one line of YAML: "{id: 10}". An absent value is "-".
std::string lineOf(const Setting &setting, const Value &value);
std::string lineOf(const Member &member, const Value &value);
std::string lineOf(const std::vector<UplinkEntry> &uplinks);
// Returns the value as JSON; null for an absent value.
std::string jsonOf(const Value &value);

}  // namespace qvs::config
