// SPDX-License-Identifier: Apache-2.0
// The commands get, set and clear of settings, made from the table of settings.
#pragma once

#include <deque>
#include <initializer_list>
#include <span>
#include <string>

#include "config/settings/setting.h"
#include "tool/command.h"

namespace qvs::cli {

// The rows of these settings. They live as long as the program.
std::span<const Command> settingRows(std::initializer_list<const config::Setting *> settings);

// The option of a member. `texts` keeps what it refers to.
Option optionFor(const config::Member &member, std::deque<std::string> &texts);

// What the rows do with their subject, a setting.
void getSetting(const Arguments &arguments, Output &out);
// Throws a usage failure when set is given nothing to store.
void requireValue(const Arguments &arguments);
void setSetting(const Arguments &arguments, Output &out);
void clearSettings(const Arguments &arguments, Output &out);

}  // namespace qvs::cli
