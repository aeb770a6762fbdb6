// SPDX-License-Identifier: Apache-2.0
// The entities of mirror sessions as text: names, texts, addresses or VLAN ids, as the type of the session
// wants them.
#pragma once

#include <qvs/vsdvs.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace qvs::config {

// What the value of an entity is.
enum class Form { Name, Text, Address, Mac, Vlan, Unknown };

// The form of an entity in one of the three groups of a session: 0 the destinations, 1 and 2 the sources. The
// older form of sessions has no type, and names alone.
Form formOf(size_t group, std::optional<uint32_t> type);

// What a form takes, for messages.
const char *shapeOf(Form form);

std::string textOfEntity(Form form, const VSDVS_MirrorEntity &entity);

// Writes a text into an entity; returns false when the form does not take it.
bool setEntity(Form form, const std::string &text, VSDVS_MirrorEntity &entity);

}  // namespace qvs::config
