// `qvs-host fault add`: a fault as it is typed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <CLI/App.hpp>
#include <nlohmann/json.hpp>

namespace qvs::launcher {

struct FaultOptions {
    std::string match;
    uint32_t nth = 1;
    uint32_t count = 1;
    bool forEver = false;
    std::string error;
    std::string status;
    std::optional<uint32_t> exit;
    uint32_t delay = 0;
    std::string kill;
    std::vector<std::string> output;
    std::optional<uint32_t> truncate;
    std::string lab;
};

void addFaultOptions(CLI::App *command, FaultOptions *options);
// The control request that adds the fault.
nlohmann::json requestOf(const FaultOptions &options);

}  // namespace qvs::launcher
