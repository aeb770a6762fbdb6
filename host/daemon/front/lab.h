// SPDX-License-Identifier: Apache-2.0
// Labs: NICs, switches, ports and clients that are described in JSON (docs/lab.md).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "daemon/devices/attachments.h"
#include "daemon/devices/device.h"
#include "daemon/model/model.h"

namespace qvs::kernel {

// Describes what is wrong with a lab, and where.
class LabError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Lab {
    struct NicPart {
        std::string name;
        std::optional<bool> link;
        std::optional<uint32_t> speedMbps;
        std::optional<uint32_t> mtu;
        std::optional<std::array<uint8_t, 6>> mac;
        std::optional<Attachment> attachment;
    };
    struct Client {
        std::string sw;
        std::string port;
        std::string name;
        bool link = true;
        std::optional<std::array<uint8_t, 6>> mac;
        std::optional<Attachment> attachment;
    };
    struct PropertyPart {
        Scope scope = Scope::Global;
        std::string port;
        std::string key;
        std::string value;
        uint32_t type = kConfig;
    };
    struct SwitchPart {
        std::string alias;
        std::string id;
        std::optional<std::string> className;
        std::optional<std::string> portset;
        std::optional<uint32_t> version;
        std::optional<uint32_t> maxPorts;
        std::vector<std::string> uplinks;
        std::vector<std::string> ports;
        std::vector<PropertyPart> properties;
    };

    std::optional<std::vector<NicPart>> nics;
    std::vector<SwitchPart> switches;
    std::vector<Client> clients;
    std::optional<bool> network;
    std::optional<uint32_t> seed;                       // of the counters
    nlohmann::json devices = nlohmann::json::object();  // the members that devices read
};

// Reads a lab and checks it. Throws LabError.
Lab parseLab(const nlohmann::json &json);

// Applies a lab. After an exception (LabError, StoreError), nothing is changed.
void applyLab(const Lab &lab, Model &model, Store &store);

}  // namespace qvs::kernel
