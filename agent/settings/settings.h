// SPDX-License-Identifier: Apache-2.0
// The settings of qvs-agent and qvs-fleet: from a file in YAML, and from options, which win.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "agent/rollout/records.h"
#include "agent/store/http.h"
#include "tool/command.h"

namespace qvs::fleet {

struct Settings {
    std::string host;
    Labels labels;
    Access access;
    KeyNames keys;
    std::string directory;
    uint32_t leaseSeconds = 0;
    uint32_t windowSeconds = 0;
    uint32_t confirmSeconds = 0;
    std::vector<std::string> check;
    uint32_t checkSeconds = 0;
    uint32_t driftSeconds = 0;
    bool enforce = false;
    bool coordinate = false;
    std::string listen;
    bool jsonLog = false;
};

// The file that --config names, or the variable, or this one if it is there.
struct ConfigFile {
    const char *path;
    const char *variable;
};
inline constexpr ConfigFile kAgentFile{"/etc/qvs/agent.yaml", "QVS_AGENT"};
inline constexpr ConfigFile kFleetFile{"/etc/qvs/fleet.yaml", "QVS_FLEET"};

// One option for each setting, and --config; only those of the store have a meaning for both programs.
std::span<const cli::Option> agentOptions();
std::span<const cli::Option> storeOptions();

// Reads the file and the options. Throws a usage failure that lists all problems.
Settings readSettings(const cli::Arguments &arguments, const ConfigFile &file);

// The file with all settings, their meaning and their defaults as comments.
std::string exampleFile();

}  // namespace qvs::fleet
