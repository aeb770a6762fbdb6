// What `qvs-host status` and `qvs-host fault list` print for people.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace qvs::launcher {

// As it is, in lines, with no character that a terminal would obey.
void printJson(const nlohmann::json &value);
void printStatus(const nlohmann::json &status);
void printFaults(const nlohmann::json &faults);

}  // namespace qvs::launcher
