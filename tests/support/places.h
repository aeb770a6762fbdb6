// Where policies are stored: on the switch "id", on this host, or on its port "port0".
#pragma once

#include <qvs/mesh_public.h>

#include <cstdint>
#include <optional>
#include <string>

#include "support/host.h"

namespace qvs::test {

enum Where { Global, Host, Port };

inline std::optional<std::string> stored(Where where, const std::string &key) {
    switch (where) {
        case Global:
            return globalProp("id", key.c_str());
        case Host:
            return hostProp("id", key.c_str());
        default:
            return portProp("id", "port0", key.c_str());
    }
}

inline HYP_ReturnStatus clear(Where where, const std::string &key) {
    switch (where) {
        case Global:
            return DVSHYP_GlobalPropClear("id", key.c_str());
        case Host:
            return DVSHYP_HostPropClear("id", key.c_str());
        default:
            return DVSHYP_PortDataClear("id", "port0", key.c_str());
    }
}

inline HYP_ReturnStatus store(Where where, const std::string &key, const std::string &value) {
    const auto size = static_cast<uint32_t>(value.size());
    switch (where) {
        case Global:
            return DVSHYP_GlobalPropSet("id", key.c_str(), value.data(), size, 16);
        case Host:
            return DVSHYP_HostPropSet("id", key.c_str(), value.data(), size, 16);
        default:
            return DVSHYP_PortDataSet("id", "port0", key.c_str(), value.data(), size, 16);
    }
}

}  // namespace qvs::test
