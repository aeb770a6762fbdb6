// SPDX-License-Identifier: Apache-2.0
// Converts the entities of mirror sessions to text and back: names, texts, addresses or VLAN ids, depending
// on the type of the session.
#pragma once

#include <qvs/vsdvs.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace qvs::config {

// The kind of value that an entity holds.
enum class Form { Name, Text, Address, Mac, Vlan, Unknown };

// Returns the form of an entity in one of the three groups of a session: 0 is the destinations, 1 and 2 are
// the sources. Sessions of the older form have no type, and only names.
Form formOf(size_t group, std::optional<uint32_t> type);

// Describes the values of a form, for messages.
const char *shapeOf(Form form);

std::string textOfEntity(Form form, const VSDVS_MirrorEntity &entity);

// Writes a text into an entity. Returns false when the form does not accept it.
bool setEntity(Form form, const std::string &text, VSDVS_MirrorEntity &entity);

}  // namespace qvs::config
