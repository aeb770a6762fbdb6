// SPDX-License-Identifier: Apache-2.0
// The settings of qvs-agent and qvs-fleet, from a YAML file and from options. Options override the file.
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

// The file named by --config, else by the environment variable, else this one if it exists.
struct ConfigFile {
    const char *path;
    const char *variable;
};
inline constexpr ConfigFile kAgentFile{"/etc/qvs/agent.yaml", "QVS_AGENT"};
inline constexpr ConfigFile kFleetFile{"/etc/qvs/fleet.yaml", "QVS_FLEET"};

// One option for each setting, and --config. qvs-fleet uses only the settings of the store.
std::span<const cli::Option> agentOptions();
std::span<const cli::Option> storeOptions();

// Reads the file and the options. Throws a usage failure that lists all problems.
Settings readSettings(const cli::Arguments &arguments, const ConfigFile &file);

// The text of a configuration file with all settings, with their meaning and defaults in comments.
std::string exampleFile();

}  // namespace qvs::fleet
