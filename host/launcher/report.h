// What `qvs-host status` and `qvs-host fault list` print for people.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace qvs::launcher {

void printStatus(const nlohmann::json &status);
void printFaults(const nlohmann::json &faults);

}  // namespace qvs::launcher
